// SPDX-License-Identifier: MIT
// The program's window under a Wayland compositor that draws title bars.
#include "Tellwick/Interface/TellwickApp.h"
#include "tests/support/ScreenReader.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using tellwick::ContentView;

class DesktopTitleBarTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theWindowIsItsContentAlone() {
        const QTemporaryDir folder;
        for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            qputenv(variable, folder.filePath(u"data"_s).toLocal8Bit());
        tellwick::TellwickApp app(*qApp);
        app.openWindow({});
        QCOMPARE(QApplication::topLevelWidgets().size(), 1);
        auto* content = qobject_cast<ContentView*>(QApplication::topLevelWidgets().constFirst());
        QVERIFY(content);
        QVERIFY(QTest::qWaitForWindowExposed(content));
        QVERIFY(!(content->windowFlags() & Qt::FramelessWindowHint));
        QVERIFY(content->windowHandle()->frameMargins().isNull()); // the toolkit draws none
        QVERIFY(content->windowHandle()->mask().isEmpty());
        QVERIFY(!tests::ScreenReader(content).shows(u"Close"_s));
    }
};

TELLWICK_TEST(DesktopTitleBarTests, Widgets)
#include "DesktopTitleBarTests.moc"
