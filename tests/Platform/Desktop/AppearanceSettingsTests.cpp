// SPDX-License-Identifier: MIT
#include "Platform/Desktop/AppearanceSettings.h"
#include "Platform/Observation/Observer.h"
#include "tests/support/TestMain.h"

#include <QGuiApplication>
#include <QPalette>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

constexpr QRgb toolkitHighlight = 0xff308cc6;

/// As a desktop gives it: no role is marked as set by the program.
QPalette desktopPalette(bool dark, QRgb highlight = toolkitHighlight) {
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
    palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
    palette.setColor(QPalette::Highlight, QColor(highlight));
    palette.setResolveMask(0);
    return palette;
}

} // namespace

class AppearanceSettingsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_palette = desktopPalette(false);
        m_settings = std::make_unique<AppearanceSettings>([this] { return m_palette; });
    }
    void cleanup() { m_settings.reset(); }

    void untilTheDesktopSpeaksThePaletteDoes() {
        QVERIFY(!m_settings->isDark());
        QVERIFY(!m_settings->accent());
        QVERIFY(!m_settings->reducesMotion());
        QVERIFY(!m_settings->increasesContrast());
        QCOMPARE(m_settings->windowButtons(), u":close"_s);
        const AppearanceSettings dark([] { return desktopPalette(true, 0xffe95420); });
        QVERIFY(dark.isDark());
        QCOMPARE(dark.accent(), QColor(0xffe95420));
    }

    void theDesktopsWordComesBeforeThePalettes() {
        changePalette(desktopPalette(true, 0xffe95420));
        m_settings->follow({.isDark = false,
                            .accent = QColor(0xff3584e4),
                            .reducesMotion = true,
                            .increasesContrast = true,
                            .windowButtons = u"close:"_s});
        QVERIFY(!m_settings->isDark());
        QCOMPARE(m_settings->accent(), QColor(0xff3584e4));
        QVERIFY(m_settings->reducesMotion());
        QVERIFY(m_settings->increasesContrast());
        QCOMPARE(m_settings->windowButtons(), u"close:"_s);
        changePalette(desktopPalette(true, 0xff00ff00));
        QVERIFY(!m_settings->isDark());
        QCOMPARE(m_settings->accent(), QColor(0xff3584e4));
    }

    void whereTheDesktopSaysNothingThePaletteSpeaks() {
        changePalette(desktopPalette(true, 0xffe95420));
        m_settings->follow({.reducesMotion = true});
        QVERIFY(m_settings->isDark());
        QCOMPARE(m_settings->accent(), QColor(0xffe95420));
    }

    void aChangeOfThePaletteIsFollowed() {
        changePalette(desktopPalette(true, 0xffe95420));
        QVERIFY(m_settings->isDark());
        QCOMPARE(m_settings->accent(), QColor(0xffe95420));
        changePalette(desktopPalette(false));
        QVERIFY(!m_settings->isDark());
        QVERIFY(!m_settings->accent());
    }

    void aChangeOfTheDesktopIsFollowed() {
        m_settings->follow({.isDark = true, .accent = QColor(Qt::red), .reducesMotion = true});
        m_settings->follow({});
        QVERIFY(!m_settings->isDark());
        QVERIFY(!m_settings->accent());
        QVERIFY(!m_settings->reducesMotion());
    }

    void theFontIsTheDesktopsOrTheApplications() {
        QCOMPARE(m_settings->font(), QGuiApplication::font());
        const QFont before = QGuiApplication::font();
        QFont other = before;
        other.setPointSizeF(before.pointSizeF() + 3);
        QApplication::setFont(other);
        QCOMPARE(m_settings->font(), other);
        const QFont desktops(u"Cantarell"_s, 11);
        m_settings->follow({.font = desktops, .monospacedFont = QFont(u"Monospace"_s, 11)});
        QCOMPARE(m_settings->font(), desktops);
        QVERIFY(m_settings->monospacedFont());
        QApplication::setFont(before);
        QCOMPARE(m_settings->font(), desktops);
        m_settings->follow({});
        QCOMPARE(m_settings->font(), before);
        QVERIFY(!m_settings->monospacedFont());
    }

    void aHighlightOfTheToolkitIsNoAccent_data() {
        QTest::addColumn<QRgb>("highlight");
        QTest::addColumn<bool>("isAccent");
        QTest::newRow("Qt's own") << toolkitHighlight << false;
        QTest::newRow("Qt's own without a style") << QColor(Qt::darkBlue).rgb() << false;
        QTest::newRow("chosen") << QRgb(0xff3daee9) << true;
        QTest::newRow("black") << QRgb(0xff000000) << true;
    }
    void aHighlightOfTheToolkitIsNoAccent() {
        QFETCH(QRgb, highlight);
        QFETCH(bool, isAccent);
        changePalette(desktopPalette(false, highlight));
        QCOMPARE(m_settings->accent(), isAccent ? std::optional(QColor(highlight)) : std::nullopt);
    }

    void whatTheProgramSetItselfTellsNothing() {
        // A program that shows a dark theme puts dark colours into its own palette. Once the
        // desktop has no wish any more, these must not keep it dark.
        QPalette own = desktopPalette(false);
        own.setColor(QPalette::Window, Qt::black);
        own.setColor(QPalette::WindowText, Qt::white);
        own.setColor(QPalette::Highlight, Qt::green);
        changePalette(own);
        QVERIFY(!m_settings->isDark());
        QVERIFY(!m_settings->accent());
    }

    void theRealPaletteOfAnApplicationSpeaks() {
        const QPalette palette = QGuiApplication::palette();
        QVERIFY(!palette.isBrushSet(QPalette::Active, QPalette::Window));
        QVERIFY(!palette.isBrushSet(QPalette::Active, QPalette::WindowText));
        QVERIFY(!palette.isBrushSet(QPalette::Active, QPalette::Highlight));
        const AppearanceSettings settings;
        QVERIFY(!settings.isDark());
        QVERIFY(!settings.accent());
    }

    void observersSeeChangesAndOnlyChanges() {
        QList<bool> seen;
        QObject owner;
        observe(&owner, [&] { seen.append(m_settings->isDark()); });
        m_settings->follow(
            {.isDark = false, .reducesMotion = true}); // nothing that the observer reads
        m_settings->follow({.isDark = true});
        QTRY_COMPARE(seen, (QList<bool>{false, true}));
    }

private:
    void changePalette(const QPalette& palette) {
        m_palette = palette;
        QEvent event(QEvent::ApplicationPaletteChange);
        QCoreApplication::sendEvent(qApp, &event);
    }

    QPalette m_palette;
    std::unique_ptr<AppearanceSettings> m_settings;
};

TELLWICK_TEST(AppearanceSettingsTests, Widgets)
#include "AppearanceSettingsTests.moc"
