// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/AppIcon.h"
#include "Platform/Widgets/Look/Icons.h"
#include "tests/support/TestMain.h"

#include <QIcon>
#include <QWidget>

class AppIconTests final : public QObject {
    Q_OBJECT

    platform::Icons m_icons;

private Q_SLOTS:
    void theIconIsAWhiteSignOnABlueSquareWithRoundCorners() {
        const QIcon icon = platform::appIcon(m_icons);
        QVERIFY(icon.availableSizes().contains(QSize(16, 16)));
        const QImage image = icon.pixmap(128, 128, QIcon::Normal).toImage();
        QCOMPARE(image.size(), QSize(128, 128));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        QCOMPARE(image.pixelColor(12, 12).alpha(), 0); // beyond the round corner
        const QColor top = image.pixelColor(64, 14);
        const QColor bottom = image.pixelColor(64, 115);
        QCOMPARE(bottom.alpha(), 255);
        QVERIFY(top.lightness() > bottom.lightness());
        QVERIFY(bottom.blue() > 200 && bottom.red() < 40);
        QCOMPARE(image.pixelColor(64, 70), QColor(Qt::white)); // between the sign's halves
    }

    void theFirstPaintDoesNotWaitForIt() {
        QWidget window;
        platform::setAppIcon(window, m_icons);
        window.show();
        QVERIFY(window.windowIcon().isNull());
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(!window.windowIcon().isNull());
        QTRY_COMPARE(window.children().size(), 0); // nothing waits any longer
    }

    void aWindowThatGoesBeforeItTakesTheWaitAlong() {
        auto window = std::make_unique<QWidget>();
        platform::setAppIcon(*window, m_icons);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->repaint();
        window.reset();
        QCoreApplication::processEvents();
    }
};

TELLWICK_TEST(AppIconTests, Widgets)
#include "AppIconTests.moc"
