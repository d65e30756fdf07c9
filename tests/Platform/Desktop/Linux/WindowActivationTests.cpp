// SPDX-License-Identifier: MIT
#include "Platform/Desktop/WindowActivation.h"
#include "tests/support/TestMain.h"

#include <QSignalSpy>
#include <QWindow>

using namespace platform;

class WindowActivationTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        qunsetenv("XDG_ACTIVATION_TOKEN");
        qunsetenv("DESKTOP_STARTUP_ID");
    }

    void theTokenIsTheDesktops_data() {
        QTest::addColumn<QByteArray>("wayland");
        QTest::addColumn<QByteArray>("x11");
        QTest::addColumn<QByteArray>("token");
        QTest::newRow("none") << QByteArray() << QByteArray() << QByteArray();
        QTest::newRow("Wayland") << QByteArray("w") << QByteArray() << QByteArray("w");
        QTest::newRow("X11") << QByteArray() << QByteArray("x") << QByteArray("x");
        QTest::newRow("both") << QByteArray("w") << QByteArray("x") << QByteArray("w");
    }
    void theTokenIsTheDesktops() {
        QFETCH(QByteArray, wayland);
        QFETCH(QByteArray, x11);
        if (!wayland.isNull())
            qputenv("XDG_ACTIVATION_TOKEN", wayland);
        if (!x11.isNull())
            qputenv("DESKTOP_STARTUP_ID", x11);
        QTEST(activationToken(), "token");
    }

    void aHiddenWindowIsShown() {
        QWindow window;
        activateWindow(window, "token");
        QVERIFY(window.isVisible());
        QTRY_VERIFY(window.isActive());
    }

    void aMinimisedWindowIsRestored() {
        QWindow window;
        window.showMinimized();
        QVERIFY(window.windowStates() & Qt::WindowMinimized);
        activateWindow(window, "token");
        QVERIFY(!(window.windowStates() & Qt::WindowMinimized));
        QTRY_VERIFY(window.isActive());
    }

    void aMaximisedWindowStaysMaximised() {
        QWindow window;
        window.showMaximized();
        window.setWindowStates(Qt::WindowMaximized | Qt::WindowMinimized);
        activateWindow(window, {});
        QCOMPARE(window.windowStates(), Qt::WindowStates(Qt::WindowMaximized));
    }

    void theTokenIsUsedOnce() {
        QWindow window;
        activateWindow(window, "token");
        QVERIFY(!qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
    }
};

TELLWICK_TEST(WindowActivationTests, Widgets)
#include "WindowActivationTests.moc"
