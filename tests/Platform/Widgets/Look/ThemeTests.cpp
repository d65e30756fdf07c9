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
    std::vector<ColorRole> backgrounds;
};

const std::vector<Standing>& standings() {
    using enum ColorRole;
    static const std::vector<Standing> all{
        {"label on window", Label, {Window}},
        {"label on header", Label, {Header}},
        {"label on popover", Label, {Popover}},
        {"label on sheet", Label, {Sheet}},
        {"label on card", Label, {Card}},
        {"label on hovered card", Label, {Card, Hover}},
        {"label on pressed card", Label, {Card, Pressed}},
        {"label in assistant bubble", Label, {Window, AssistantBubble}},
        {"label in greeting", Label, {Window, GreetingBubble}},
        {"label in field", Label, {Window, Field}},
        {"selected label in assistant bubble", Label, {Window, AssistantBubble, Selection}},
        {"selected label in field", Label, {Window, Field, Selection}},
        {"white in user bubble", OnAccent, {UserBubble}},
        {"selected white in user bubble", OnAccent, {UserBubble, SelectionOnAccent}},
        {"white on active chip", OnAccent, {AccentFill}},
        {"secondary on window", SecondaryLabel, {Window}},
        {"secondary on header", SecondaryLabel, {Header}},
        {"secondary on popover", SecondaryLabel, {Popover}},
        {"secondary on sheet", SecondaryLabel, {Sheet}},
        {"secondary on card", SecondaryLabel, {Card}},
        {"secondary on hovered card", SecondaryLabel, {Card, Hover}},
        {"placeholder in field", SecondaryLabel, {Window, Field}},
        {"secondary in mode bar", SecondaryLabel, {Window, ModeBar}},
        {"tertiary on window", TertiaryLabel, {Window}},
        {"accent on window", Accent, {Window}},
        {"accent on popover", Accent, {Popover}},
        {"accent on sheet", Accent, {Sheet}},
        {"accent on card", Accent, {Card}},
        {"accent on chip", Accent, {Window, Chip}},
        {"accent in mode bar", Accent, {Window, ModeBar}},
        {"link in assistant bubble", Link, {Window, AssistantBubble}},
        {"link on sheet", Link, {Sheet}},
        {"orange on card", Orange, {Card}},
        {"orange on popover", Orange, {Popover}},
        {"orange on sheet", Orange, {Sheet}},
        {"red on window", Red, {Window}},
    };
    return all;
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
        QTest::addColumn<int>("standing");
        const std::vector<std::pair<const char*, QColor>> accents{
            {"own", QColor()},           {"yellow", QColor(0xffe066)}, {"red", QColor(0xe01b24)},
            {"green", QColor(0x33d17a)}, {"navy", QColor(0x000080)},   {"white", Qt::white},
            {"black", Qt::black},        {"pink", QColor(0xd56199)}};
        for (const auto dark : {false, true}) {
            for (const auto& [accentName, accent] : accents) {
                for (size_t i = 0; i < standings().size(); ++i) {
                    QTest::addRow("%s, %s accent, %s", dark ? "dark" : "light", accentName,
                                  standings().at(i).name)
                        << dark << accent << static_cast<int>(i);
                }
            }
        }
    }
    void everyTextIsReadableOnItsBackground() {
        QFETCH(bool, dark);
        QFETCH(QColor, accent);
        QFETCH(int, standing);
        platform::Theme theme;
        theme.setDark(dark);
        theme.setAccent(accent);
        const auto& row = standings().at(static_cast<size_t>(standing));
        const auto ratio =
            platform::contrastRatio(theme.color(row.text), background(theme, row.backgrounds));
        QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
    }

    void contrastIsThatOfTheGuidelines() {
        QCOMPARE(platform::contrastRatio(Qt::black, Qt::white), 21.0);
        QCOMPARE(platform::contrastRatio(Qt::red, Qt::red), 1.0);
        QVERIFY(qAbs(platform::contrastRatio(QColor(0x777777), Qt::white) - 4.48) < 0.01);
    }

    void fillsHaveTheirOpacities() {
        const platform::Theme theme;
        const auto alpha = [&](ColorRole role) { return theme.color(role).alphaF(); };
        QVERIFY(qAbs(alpha(ColorRole::AssistantBubble) - 0.15F) < 0.001F);
        QVERIFY(qAbs(alpha(ColorRole::GreetingBubble) - 0.12F) < 0.001F);
        QVERIFY(qAbs(alpha(ColorRole::Field) - 0.1F) < 0.001F);
        QVERIFY(qAbs(alpha(ColorRole::Chip) - 0.1F) < 0.001F);
        QVERIFY(qAbs(alpha(ColorRole::ModeBar) - 0.08F) < 0.001F);
        QCOMPARE(theme.color(ColorRole::UserBubble).alpha(), 255);
    }

    void aDesktopAccentThatIsDarkEnoughIsTakenAsItIs() {
        platform::Theme theme;
        theme.setAccent(QColor(0x6a1b9a));
        QCOMPARE(theme.color(ColorRole::UserBubble), QColor(0x6a1b9a));
        theme.setAccent({});
        QVERIFY(theme.color(ColorRole::UserBubble) != QColor(0x6a1b9a));
    }

    void textStylesAreRatiosOfTheDesktopsFont_data() {
        QTest::addColumn<TextStyle>("style");
        QTest::addColumn<double>("points");
        QTest::newRow("large title") << TextStyle::LargeTitle << 26.0;
        QTest::newRow("title 2") << TextStyle::Title2 << 17.0;
        QTest::newRow("body") << TextStyle::Body << 13.0;
        QTest::newRow("subheadline") << TextStyle::Subheadline << 11.0;
        QTest::newRow("footnote") << TextStyle::Footnote << 10.0;
        QTest::newRow("caption") << TextStyle::Caption << 10.0;
    }
    void textStylesAreRatiosOfTheDesktopsFont() {
        QFETCH(TextStyle, style);
        QFETCH(double, points);
        platform::Theme theme;
        QFont desktop;
        desktop.setPointSizeF(26); // twice the usual
        theme.setBodyFont(desktop);
        QVERIFY(qAbs(theme.font(style).pointSizeF() - 2 * points) < 0.02);
        desktop.setPixelSize(13);
        theme.setBodyFont(desktop);
        QCOMPARE(theme.font(style).pixelSize(), static_cast<int>(points));
    }

    void codeIsALittleSmallerThanTheText() {
        platform::Theme theme;
        QFont desktop;
        desktop.setPointSizeF(20);
        theme.setBodyFont(desktop);
        QVERIFY(qAbs(theme.codeFont().pointSizeF() - 18.4) < 0.02);
        desktop.setPixelSize(100);
        theme.setBodyFont(desktop);
        QCOMPARE(theme.codeFont().pixelSize(), 92);
    }

    void lengthsFollowTheFont() {
        platform::Theme theme;
        QFont desktop;
        desktop.setPixelSize(13);
        theme.setBodyFont(desktop);
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
