// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/AboutView.h"
#include "tests/Tellwick/Interface/TestWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QAbstractButton>

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using tellwick::AboutView;
namespace AppConfig = tellwick::AppConfig;

namespace {

struct Fixture : tests::TestWindow {
    Fixture() {
        view = new AboutView(environment);
        view->setParent(window.get());
        view->setGeometry(0, 0, AboutView::width, view->heightForWidth(AboutView::width));
        window->show();
    }

    Label* label(const QString& shown) const {
        for (auto* label : view->findChildren<Label*>())
            if (label->text() == shown)
                return label;
        return nullptr;
    }

    /// Where a widget stands in the screen.
    QRect place(const QWidget* widget) const {
        return {widget->mapTo(view, QPoint()), widget->size()};
    }

    AboutView* view;
};

const QStringList features{u"Fully private \u2014 nothing leaves your device"_s,
                           u"Works completely offline"_s, u"No account or sign-in required"_s,
                           u"Powered by Apple Intelligence, or other local models if available"_s};
const QStringList limitations{
    u"Knowledge cutoff \u2014 may not know recent events"_s,
    u"Content guardrails \u2014 some topics may be declined or answered cautiously"_s,
    u"Not a substitute for medical, legal, or financial advice"_s};

} // namespace

class AboutViewTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theTextsStandAndAreReadOutInOrder() {
        const Fixture f;
        QStringList shown;
        int bottom = 0;
        for (auto* element : f.screen().elements()) {
            auto* label = qobject_cast<Label*>(element->object());
            if (!label || label->text().isEmpty())
                continue;
            shown.append(label->text());
            QVERIFY2(f.place(label).top() >= bottom, qPrintable(label->text()));
            bottom = f.place(label).bottom();
        }
        QVERIFY(bottom < f.view->height());
        QCOMPARE(shown,
                 QStringList({u"Tellwick"_s, u"Version 2.3.1"_s, AppConfig::appDescription()}) +
                     features + QStringList{u"LIMITATIONS"_s} + limitations +
                     QStringList({AppConfig::disclaimer(), AppConfig::copyright()}));
        QVERIFY(f.screen().shows(u"Limitations"_s, QAccessible::Heading)); // read out as a word
        QCOMPARE(f.view->findChildren<platform::Divider*>().size(), 3);
    }

    void eachTextHasItsStyle() {
        const Fixture f;
        const auto is = [&f](const QString& text, TextStyle style, ColorRole role,
                             QFont::Weight weight = QFont::Normal) {
            return f.desktop.isStyled(f.label(text), style, role, weight);
        };
        const auto secondary = ColorRole::SecondaryLabel;
        QVERIFY(is(u"Tellwick"_s, TextStyle::LargeTitle, ColorRole::Label, QFont::Bold));
        QVERIFY(is(u"Version 2.3.1"_s, TextStyle::Subheadline, secondary));
        QVERIFY(is(AppConfig::appDescription(), TextStyle::Body, ColorRole::Label));
        for (const QString& row : features + limitations)
            QVERIFY(is(row, TextStyle::Subheadline, ColorRole::Label));
        QVERIFY(is(u"LIMITATIONS"_s, TextStyle::Footnote, secondary, QFont::DemiBold));
        QVERIFY(is(AppConfig::disclaimer(), TextStyle::Caption, secondary));
        QVERIFY(is(AppConfig::copyright(), TextStyle::Caption, secondary));
    }

    void theSymbolsAreThoseOfTheRows() {
        const Fixture f;
        QStringList symbols;
        for (const auto* label : f.view->findChildren<Label*>())
            if (!label->icon().isEmpty())
                symbols.append(label->icon());
        QCOMPARE(symbols,
                 (QStringList{u"brain"_s, u"lock.shield"_s, u"wifi.slash"_s, u"person.slash"_s,
                              u"cpu"_s, u"calendar.badge.exclamationmark"_s, u"hand.raised"_s,
                              u"exclamationmark.triangle"_s}));
        QCOMPARE(f.view->findChildren<Label*>().first()->height(),
                 f.desktop.theme.symbolSize(64.0));
        // The features' in the accent, the limitations' in orange.
        const tests::PaintRecorder painted(*f.view);
        const auto paints = [&](const QRect& symbol, ColorRole role) {
            return painted.hasColor(f.desktop.theme.color(role), symbol);
        };
        const auto rows = f.view->findChildren<tellwick::AboutRow*>();
        QCOMPARE(rows.size(), 7);
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const QRect symbol = f.place(rows[i]->findChild<Label*>());
            QCOMPARE(symbol.width(), 20);
            QCOMPARE(f.place(f.label((features + limitations)[i])).left(), 24 + 20 + 10);
            QCOMPARE(paints(symbol, ColorRole::Accent), i < 4);
            QCOMPARE(paints(symbol, ColorRole::OrangeSymbol), i >= 4);
        }
    }

    void thePartsHaveTheirPadding() {
        const Fixture f;
        const auto lines = f.view->findChildren<platform::Divider*>();
        const auto* brain = f.view->findChildren<Label*>().first();
        QCOMPARE(f.place(brain).top(), 32);
        QCOMPARE(f.place(brain).left() + f.place(brain).right(), 399);
        const auto label = [&f](const QString& text) -> QWidget* { return f.label(text); };
        const QWidget* above = brain;
        for (const auto& [below, gap] : {std::pair(label(u"Tellwick"_s), 12),
                                         {label(u"Version 2.3.1"_s), 12},
                                         {lines[0], 24},
                                         {label(AppConfig::appDescription()), 24},
                                         {label(features[0]), 16 + 4},
                                         {label(features[1]), 10},
                                         {label(features[2]), 10},
                                         {label(features[3]), 10},
                                         {lines[1], 4 + 24},
                                         {label(u"LIMITATIONS"_s), 24},
                                         {label(limitations[0]), 12},
                                         {label(limitations[1]), 10},
                                         {label(limitations[2]), 10},
                                         {label(AppConfig::disclaimer()), 12 + 4},
                                         {lines[2], 24}}) {
            QCOMPARE(f.place(below).top(), f.place(above).bottom() + 1 + gap);
            above = below;
        }
        QCOMPARE(f.place(label(AppConfig::appDescription())).left(), 24);
        QCOMPARE(f.place(label(AppConfig::copyright())).bottom() + 1, f.view->height() - 20);
        for (const auto* line : lines)
            QCOMPARE(line->width(), 400);
    }

    void theVersionIsThePackagesOrOnePointZero_data() {
        QTest::addColumn<QString>("told");
        QTest::addColumn<QString>("version");
        QTest::newRow("2.3.1") << u"2.3.1"_s << u"2.3.1"_s;
        QTest::newRow("none") << QString() << u"1.0"_s;
    }
    void theVersionIsThePackagesOrOnePointZero() {
        QFETCH(QString, told);
        QFETCH(QString, version);
        tests::TestWindow window;
        QCoreApplication::setApplicationVersion(told);
        (new AboutView(window.environment))->setParent(window.window.get());
        window.window->show();
        QVERIFY(window.screen().shows(u"Version "_s + version, QAccessible::StaticText));
    }

    void theLinkOpensTheWebSite() {
        Fixture f;
        const QUrl site(AppConfig::website());
        auto* link = f.screen().widget<platform::Button>(site.host(), QAccessible::Link);
        QVERIFY(link);
        // In the middle, whether its width is even or odd.
        QVERIFY(std::abs(f.place(link).left() + f.place(link).right() - 399) <= 1);
        QVERIFY(f.place(link).bottom() < f.place(f.label(AppConfig::copyright())).top());
        QVERIFY(f.screen().click(site.host()));
        QCOMPARE(f.desktop.opened, QList<QUrl>{site});
        QVERIFY(f.screen().press(site.host()));
        QCOMPARE(f.desktop.opened.size(), 2);
        QCOMPARE(f.view->findChildren<QAbstractButton*>().size(), 1); // no other control
    }

    void aWebsiteTextThatIsNoAddressIsPlainText_data() {
        QTest::addColumn<QString>("website");
        QTest::addColumn<QString>("link"); // none: plain text
        QTest::newRow("words") << u"to be told"_s << QString();
        QTest::newRow("nothing") << u""_s << QString();
        QTest::newRow("no host") << u"https://"_s << QString();
        QTest::newRow("no port") << u"https://a.example:port"_s << QString();
        QTest::newRow("an address") << u"https://a.example/about"_s << u"a.example"_s;
        QTest::newRow("an address of the web") << u"https://www.a.example"_s << u"a.example"_s;
    }
    void aWebsiteTextThatIsNoAddressIsPlainText() {
        QFETCH(QString, website);
        QFETCH(QString, link);
        Fixture f;
        QWidget* line = AboutView::websiteLine(f.environment, website);
        line->setParent(f.window.get());
        line->show();
        if (link.isNull()) {
            auto* text = qobject_cast<Label*>(line);
            QVERIFY(text);
            QCOMPARE(text->text(), website);
            QVERIFY(f.desktop.isStyled(text, TextStyle::Footnote, ColorRole::Label, QFont::Medium));
            QTest::mouseClick(line, Qt::LeftButton);
            QVERIFY(f.desktop.opened.isEmpty());
        } else {
            QVERIFY(f.screen().shows(link, QAccessible::Link));
            QTest::mouseClick(line, Qt::LeftButton);
            QCOMPARE(f.desktop.opened, QList<QUrl>{QUrl(website)});
            // In the same font as the plain text.
            QCOMPARE(line->font(), f.desktop.theme.font(TextStyle::Footnote, QFont::Medium));
        }
    }
};

TELLWICK_TEST(AboutViewTests, Widgets)
#include "AboutViewTests.moc"
