// SPDX-License-Identifier: MIT
#include "Platform/Desktop/AppearanceSettings.h"
#include "Platform/Desktop/Linux/SessionBus.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

using namespace platform;
using namespace Qt::StringLiterals;

class SessionBusTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("XDG_RUNTIME_DIR");
    }

    void aSessionWithoutABusHasNone() { QVERIFY(!sessionBus()); }

    void aRuntimeFolderWithoutABusHasNone() {
        const QTemporaryDir folder;
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path()));
        QVERIFY(!sessionBus());
        QFile file(folder.filePath(u"bus"_s)); // not a socket
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!sessionBus());
    }

    void anAddressWhereNobodyListensGivesNone() {
        const QTemporaryDir folder;
        qputenv("DBUS_SESSION_BUS_ADDRESS",
                "unix:path=" + QFile::encodeName(folder.filePath(u"bus"_s)));
        QVERIFY(!sessionBus());
    }

    void appearanceStartsWithoutABus() {
        AppearanceSettings settings;
        settings.start();
        settings.settle();
        QVERIFY(!settings.isDark());
    }
};

TELLWICK_TEST(SessionBusTests, Widgets)
#include "SessionBusTests.moc"
