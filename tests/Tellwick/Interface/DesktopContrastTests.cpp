// SPDX-License-Identifier: MIT
// The real program on a desktop whose settings portal says what contrast is wanted.
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Theme.h"
#include "tests/Platform/Desktop/Linux/ScriptedPortal.h"
#include "tests/support/AccessibleDesktop.h"
#include "tests/support/TestMain.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <cstdlib>

using namespace Qt::StringLiterals;
using platform::ColorRole;

class DesktopContrastTests final : public QObject {
    Q_OBJECT

    const PortalKey m_contrast{u"org.freedesktop.appearance"_s, u"contrast"_s};

    /// The colour of a line between two areas of the light window.
    static QColor lineColor(bool isIncreased) {
        platform::Theme theme;
        theme.setIncreasedContrast(isIncreased);
        return platform::composed(theme.color(ColorRole::Divider), theme.color(ColorRole::Window));
    }

    /// Whether so many pixels of the display are of a colour, but for what is lost by rounding, as
    /// a line through the whole window has.
    static bool isLineSeen(const QColor& color) {
        constexpr int lineLength = 600;
        const QImage shown = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        int count = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x) {
                const QRgb pixel = shown.pixel(x, y);
                count += std::abs(qRed(pixel) - color.red()) <= 2 &&
                         std::abs(qGreen(pixel) - color.green()) <= 2 &&
                         std::abs(qBlue(pixel) - color.blue()) <= 2;
            }
        return count >= lineLength;
    }

    /// Waits until lines are as they are with one contrast, and none as with the other.
    static bool comesToShow(bool isIncreased) {
        return QTest::qWaitFor(
            [&] {
                return isLineSeen(lineColor(isIncreased)) && !isLineSeen(lineColor(!isIncreased));
            },
            20000);
    }

private Q_SLOTS:
    void initTestCase() {
        if (QGuiApplication::platformName() == u"xcb" &&
            QDBusConnection::sessionBus().isConnected())
            return;
        if (qEnvironmentVariable("TELLWICK_REQUIRE_DESKTOP_TESTS") == u"1")
            QFAIL("Run it in scripts/with-display --managed.");
        QSKIP("Run it in scripts/with-display --managed.");
    }

    void theWishForContrastArrivesAtTheStartAndLive() {
        ScriptedPortal portal(QDBusConnection::sessionBus());
        portal.setValue({m_contrast.first, u"color-scheme"_s}, 2U);
        portal.setValue(m_contrast, 1U);
        QVERIFY(portal.appear());
        AccessibleDesktop desktop;
        QVERIFY(desktop.startProgram(QStringLiteral(TELLWICK)));
        QVERIFY(comesToShow(true));
        portal.changeValue(m_contrast, 0U);
        QVERIFY(comesToShow(false));
        portal.changeValue(m_contrast, 1U);
        QVERIFY(comesToShow(true));
        QVERIFY(desktop.endProgram());
    }
};

TELLWICK_TEST(DesktopContrastTests, Widgets)
#include "DesktopContrastTests.moc"
