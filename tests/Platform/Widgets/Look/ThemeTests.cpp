// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Theme.h"
#include "tests/support/TestMain.h"

#include <vector>

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::TextStyle;

namespace {

/// A text role and the backgrounds, bottom up, on which the interface puts it.
struct Standing {
    const char* name;
    ColorRole text;
    std::vector<std::vector<ColorRole>> backgrounds;
};

std::vector<Standing> standings() {
    using enum ColorRole;
    return {
        {"label", Label, {{Window}, {Header}, {Popover}, {Sheet}, {Card}}},
        {"label on a touched row", Label, {{Card, Hover}, {Card, Pressed}}},
        {"label in a bubble", Label, {{Window, AssistantBubble}, {Window, GreetingBubble}}},
        {"label in the field", Label, {{Window, Field}}},
        {"selected", Label, {{Window, AssistantBubble, Selection}, {Window, Field, Selection}}},
        {"white", OnAccent, {{UserBubble}, {UserBubble, SelectionOnAccent}, {AccentFill}}},
        {"secondary", SecondaryLabel, {{Window}, {Header}, {Popover}, {Sheet}, {Card}}},
        {"secondary on a hovered row", SecondaryLabel, {{Card, Hover}}},
        {"placeholder in a field", TertiaryLabel, {{Window, Field}, {Header, Field}}},
        {"secondary in the mode bar", SecondaryLabel, {{Window, ModeBar}}},
        {"tertiary", TertiaryLabel, {{Window}}},
        {"accent", Accent, {{Window}, {Popover}, {Sheet}, {Card}}},
        {"accent on a chip and in the mode bar", Accent, {{Window, Chip}, {Window, ModeBar}}},
        {"link", Link, {{Window, AssistantBubble}, {Sheet}}},
        {"orange", Orange, {{Card}, {Popover}, {Sheet}}},
        {"red", Red, {{Window}}},
    };
}

QColor background(const platform::Theme& theme, const std::vector<ColorRole>& layers) {
    auto color = theme.color(layers.front());
    for (const auto layer : layers)
        color = platform::composed(theme.color(layer), color);
    return color;
}

} // namespace

class ThemeTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyTextIsReadableOnItsBackground_data() {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<QColor>("accent");
        QTest::addColumn<bool>("hasMoreContrast");
        const std::vector<std::pair<const char*, QColor>> accents{
            {"own", QColor()},           {"yellow", QColor(0xffe066)}, {"red", QColor(0xe01b24)},
            {"green", QColor(0x33d17a)}, {"navy", QColor(0x000080)},   {"white", Qt::white},
            {"black", Qt::black},        {"pink", QColor(0xd56199)}};
        for (const bool dark : {false, true})
            for (const auto& [name, accent] : accents)
                for (const bool more : {false, true})
                    QTest::addRow("%s, %s accent%s", dark ? "dark" : "light", name,
                                  more ? ", more contrast" : "")
                        << dark << accent << more;
    }
    void everyTextIsReadableOnItsBackground() {
        QFETCH(bool, dark);
        QFETCH(QColor, accent);
        QFETCH(bool, hasMoreContrast);
        platform::Theme theme;
        theme.setDark(dark);
        theme.setAccent(accent);
        theme.setIncreasedContrast(hasMoreContrast);
        for (const auto& standing : standings()) {
            for (const auto& layers : standing.backgrounds) {
                const auto color = theme.color(standing.text);
                const auto under = background(theme, layers);
                const auto ratio = platform::contrastRatio(color, under);
                QVERIFY2(ratio >= (hasMoreContrast ? 7 : 4.5),
                         qPrintable(u"%1: %2 on %3 has %4"_s.arg(QLatin1StringView(standing.name),
                                                                 color.name(), under.name(),
                                                                 QString::number(ratio))));
            }
        }
    }

    void symbolsMarksAndLinesAreSeen_data() {
        QTest::addColumn<bool>("dark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }
    void symbolsMarksAndLinesAreSeen() {
        QFETCH(bool, dark);
        using enum ColorRole;
        platform::Theme theme;
        theme.setDark(dark);
        const auto ratio = [&](ColorRole role, const std::vector<ColorRole>& layers) {
            const auto under = background(theme, layers);
            return platform::contrastRatio(platform::composed(theme.color(role), under), under);
        };
        for (const auto on : {Card, Popover, Sheet})
            QVERIFY(ratio(OrangeSymbol, {on}) >= 3);
        // As orange as it can be: text has to be darker on white.
        QVERIFY(dark || ratio(OrangeSymbol, {Card}) < 4);
        for (const auto mark : {Found, FoundCurrent})
            QVERIFY(ratio(Label, {Window, AssistantBubble, mark}) >= 4.5);
        for (const auto mark : {FoundOnAccent, FoundCurrentOnAccent})
            QVERIFY(ratio(OnAccent, {UserBubble, mark}) >= 4.5);
        QCOMPARE(theme.color(FieldBorder).alpha(), 0);
        theme.setIncreasedContrast(true);
        for (const auto line : {Divider, Outline, FieldBorder})
            for (const auto on : {Window, Popover, Sheet, Card})
                QVERIFY(ratio(line, {on}) >= 3);
        QVERIFY(ratio(FieldBorder, {Window, Field}) >= 3);
        theme.setIncreasedContrast(false);
        QCOMPARE(theme.color(FieldBorder).alpha(), 0);
    }

    void thereIsOneAccentFill() {
        platform::Theme theme;
        for (const auto& accent : {QColor(), QColor(0xffe066), QColor(0x000080)}) {
            theme.setAccent(accent);
            QCOMPARE(theme.color(ColorRole::UserBubble), theme.color(ColorRole::AccentFill));
        }
    }

    void aYellowAccentDarkensToAmber() {
        platform::Theme theme;
        theme.setAccent(QColor(0xffe066));
        for (const auto role : {ColorRole::AccentFill, ColorRole::Accent, ColorRole::Link})
            QVERIFY2(qAbs(theme.color(role).hsvHue() - 38) <= 3,
                     qPrintable(theme.color(role).name()));
    }

    void contrastIsThatOfTheGuidelines() {
        QCOMPARE(platform::contrastRatio(Qt::black, Qt::white), 21.0);
        QCOMPARE(platform::contrastRatio(Qt::red, Qt::red), 1.0);
        QVERIFY(qAbs(platform::contrastRatio(QColor(0x777777), Qt::white) - 4.48) < 0.01);
    }

    void fillsHaveTheirOpacities() {
        const platform::Theme theme;
        const auto hasOpacity = [&](ColorRole role, float opacity) {
            return qAbs(theme.color(role).alphaF() - opacity) < 0.001F;
        };
        QVERIFY(hasOpacity(ColorRole::AssistantBubble, 0.15F));
        QVERIFY(hasOpacity(ColorRole::GreetingBubble, 0.12F));
        QVERIFY(hasOpacity(ColorRole::Field, 0.1F));
        QVERIFY(hasOpacity(ColorRole::Chip, 0.1F));
        QVERIFY(hasOpacity(ColorRole::ModeBar, 0.08F));
        QCOMPARE(theme.color(ColorRole::UserBubble).alpha(), 255);
    }

    void aDesktopAccentThatIsDarkEnoughIsTakenAsItIs() {
        platform::Theme theme;
        theme.setAccent(QColor(0x6a1b9a));
        QCOMPARE(theme.color(ColorRole::UserBubble), QColor(0x6a1b9a));
        theme.setAccent({});
        QVERIFY(theme.color(ColorRole::UserBubble) != QColor(0x6a1b9a));
    }

    void everySizeFollowsTheDesktopsFont_data() {
        QTest::addColumn<TextStyle>("style");
        QTest::addColumn<int>("points");
        QTest::newRow("large title") << TextStyle::LargeTitle << 26;
        QTest::newRow("title 2") << TextStyle::Title2 << 17;
        QTest::newRow("body") << TextStyle::Body << 13;
        QTest::newRow("subheadline") << TextStyle::Subheadline << 11;
        QTest::newRow("footnote") << TextStyle::Footnote << 10;
        QTest::newRow("caption") << TextStyle::Caption << 10;
    }
    void everySizeFollowsTheDesktopsFont() {
        QFETCH(TextStyle, style);
        QFETCH(int, points);
        platform::Theme theme;
        QFont desktop;
        desktop.setPointSizeF(26); // twice the usual
        theme.setBodyFont(desktop);
        QVERIFY(qAbs(theme.font(style).pointSizeF() - 2 * points) < 0.02);
        QVERIFY(qAbs(theme.codeFont().pointSizeF() - 26 * 0.92) < 0.02); // looks larger than it is
        desktop.setPixelSize(13);
        theme.setBodyFont(desktop);
        QCOMPARE(theme.font(style).pixelSize(), points);
        QCOMPARE(theme.codeFont().pixelSize(), 12);
        QCOMPARE(theme.scaled(52), 52.0);
        desktop.setPixelSize(26);
        theme.setBodyFont(desktop);
        QCOMPARE(theme.scaled(52), 104.0);
    }

    void aChangeOfTheDesktopReachesObservers() {
        platform::Theme theme;
        QObject owner;
        int runs = 0;
        QColor seen;
        platform::observe(&owner, [&] {
            ++runs;
            seen = theme.color(ColorRole::Window);
        });
        QCOMPARE(runs, 1);
        theme.setDark(true);
        QTRY_COMPARE(runs, 2);
        QCOMPARE(seen, theme.color(ColorRole::Window));
        theme.setDark(true); // equal: nobody is told
        theme.setAccent({});
        platform::flushObservers(&owner);
        QCOMPARE(runs, 2);
        theme.setAccent(QColor(Qt::magenta));
        QTRY_COMPARE(runs, 3);
    }

    void motionIsOffUntilItIsTurnedOn() {
        using namespace std::chrono_literals;
        platform::Theme theme;
        QCOMPARE(theme.motion().duration(200ms), 0ms);
        theme.motion().setEnabled(true);
        QCOMPARE(theme.motion().duration(200ms), 200ms);
    }
};

TELLWICK_TEST(ThemeTests, Widgets)
#include "ThemeTests.moc"
