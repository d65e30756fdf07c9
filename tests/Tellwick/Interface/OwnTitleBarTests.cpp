// SPDX-License-Identifier: MIT
// The program's window under a Wayland compositor that leaves title bars to the programs.
#include "Platform/Widgets/Controls/WindowFrame.h"
#include "Tellwick/Interface/TellwickApp.h"
#include "tests/support/ScreenReader.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QShortcut>
#include <QTemporaryDir>
#include <QTimer>

using namespace Qt::StringLiterals;
using platform::WindowFrame;
using tellwick::ContentView;
using tellwick::TellwickApp;

class OwnTitleBarTests final : public QObject {
    Q_OBJECT

    std::optional<QTemporaryDir> m_folder;
    std::optional<TellwickApp> m_app;
    WindowFrame* m_frame = nullptr;
    ContentView* m_content = nullptr;

    /// Runs the event loop with this as the first thing that happens in it; false if the program
    /// has not quit by itself in time.
    template <class Action>
    static bool quitsAfter(Action action) {
        QTimer watchdog;
        watchdog.setSingleShot(true);
        connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(1); });
        watchdog.start(10000);
        QTimer::singleShot(0, qApp, action);
        return QApplication::exec() == 0;
    }

private Q_SLOTS:
    void init() {
        m_folder.emplace();
        for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            qputenv(variable, m_folder->filePath(u"data"_s).toLocal8Bit());
        m_app.emplace(*qApp);
        m_app->openWindow({});
        QCOMPARE(QApplication::topLevelWidgets().size(), 1);
        m_frame = qobject_cast<WindowFrame*>(QApplication::topLevelWidgets().constFirst());
        QVERIFY(m_frame);
        m_content = m_frame->findChild<ContentView*>();
        QVERIFY(m_content);
        QVERIFY(QTest::qWaitForWindowExposed(m_frame));
    }
    void cleanup() {
        m_app.reset();
        m_folder.reset();
    }

    void theHeaderIsTheOnlyTitleBar() {
        QVERIFY(tests::ScreenReader(m_content).shows(u"Close"_s, QAccessible::Button));
        QVERIFY(m_frame->windowHandle()->frameMargins().isNull()); // the toolkit draws none
        QCOMPARE(m_frame->windowTitle(), u"Tellwick"_s);
        QCOMPARE(m_content->size(), QSize(640, 800));
    }

    void maximisedAndBackTheWindowHasTheSizeThatItHad() {
        for (int i = 0; i < 3; ++i) {
            m_frame->showMaximized();
            QTRY_COMPARE(m_content->width(), m_frame->screen()->size().width());
            QTRY_COMPARE(m_content->geometry(), m_frame->rect());
            m_frame->showNormal();
            QTRY_COMPARE(m_content->size(), QSize(640, 800));
        }
    }

    void closeQuits() {
        QVERIFY(quitsAfter([this] { QVERIFY(tests::ScreenReader(m_content).press(u"Close"_s)); }));
    }

    void itsButtonsWorkWhileTheWindowIsDimmed() {
        const tests::ScreenReader reader(m_content);
        const auto* close = reader.widget(u"Close"_s);
        const QPoint at = close->mapTo(m_frame, close->rect().center());
        QVERIFY(reader.press(u"More"_s));
        QVERIFY(reader.press(u"About"_s, QAccessible::MenuItem));
        QTRY_VERIFY(reader.shows(u"About"_s, QAccessible::Dialog));
        QVERIFY(quitsAfter([&reader, at] { reader.clickAt(at); }));
    }

    void controlWQuits() {
        // The compositor in memory has no keyboard.
        QVERIFY(quitsAfter([this] {
            for (auto* shortcut : m_content->findChildren<QShortcut*>())
                if (shortcut->key() == QKeySequence(Qt::CTRL | Qt::Key_W))
                    Q_EMIT shortcut->activated();
        }));
    }
};

TELLWICK_TEST(OwnTitleBarTests, Widgets)
#include "OwnTitleBarTests.moc"
