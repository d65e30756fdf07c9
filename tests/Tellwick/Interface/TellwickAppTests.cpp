// SPDX-License-Identifier: MIT
// The whole program but for its event loop's first turn: its window, its store, how it quits.
#include "Platform/Observation/Observer.h"
#include "Platform/Store/ModelContext.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Interface/ChatView.h"
#include "Tellwick/Interface/ContentView.h"
#include "Tellwick/Interface/TellwickApp.h"
#include "tests/support/ScreenReader.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFontInfo>
#include <QTemporaryDir>
#include <QTimer>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using tellwick::ContentView;
using tellwick::TellwickApp;

class TellwickAppTests final : public QObject {
    Q_OBJECT

    std::optional<QTemporaryDir> m_folder;
    std::optional<TellwickApp> m_app;

    platform::ModelContainer store() const {
        return tellwick::conversationStore(m_folder->filePath(u"data/tellwick"_s));
    }
    QString file() const { return m_folder->filePath(u"data/tellwick/conversation.sqlite"_s); }

    static ContentView* window() {
        QList<ContentView*> found;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* view = qobject_cast<ContentView*>(widget))
                found.append(view);
        if (found.size() > 1)
            qFatal("there are two windows");
        return found.value(0);
    }

    bool start() {
        m_app.emplace(*qApp);
        m_app->openWindow({});
        return QTest::qWaitForWindowActive(window());
    }

    /// Runs the event loop with this as the first thing that happens in it; false if the program
    /// has not quit by itself in time.
    template <class Action>
    static bool quitsAfter(Action action) {
        bool isInTime = true;
        QTimer watchdog;
        watchdog.setSingleShot(true);
        connect(&watchdog, &QTimer::timeout, qApp, [&isInTime] {
            isInTime = false;
            QCoreApplication::exit(1);
        });
        watchdog.start(10000);
        QTimer::singleShot(0, qApp, action);
        const int status = QApplication::exec();
        return isInTime && status == 0;
    }

private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); }
    void init() {
        m_folder.emplace();
        for (const char* variable : {"XDG_DATA_HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
            qputenv(variable, m_folder->filePath(u"data"_s).toLocal8Bit());
    }
    void cleanup() {
        m_app.reset();
        m_folder.reset();
    }

    void theFirstStartOpensAWindowOf640By800OverOneEmptyRecord() {
        QVERIFY(!QFile::exists(file()));
        QVERIFY(start());
        QCOMPARE(window()->size(), QSize(640, 800));
        QCOMPARE(window()->windowTitle(), u"Tellwick"_s);
        QVERIFY(tests::ScreenReader(window()).shows(tellwick::AppConfig::tagline()));
        QVERIFY(tests::ScreenReader(window()).shows(u"On-device · Private"_s));
        const auto container = store();
        platform::ModelContext context(container);
        const auto sessions = context.fetch(tellwick::ChatSession::newestFirst());
        QCOMPARE(sessions.size(), 1);
        QVERIFY(sessions.first()->roles.value().isEmpty());
        QVERIFY(sessions.first()->contents.value().isEmpty());
        QCOMPARE(QFile::permissions(file()) & (QFile::ReadGroup | QFile::ReadOther), 0);
    }

    void aStartShowsTheStoredConversation() {
        {
            const auto container = store();
            platform::ModelContext context(container);
            const auto session = std::make_shared<tellwick::ChatSession>();
            session->roles = QStringList{u"user"_s, u"assistant"_s};
            session->contents = QStringList{u"Hi"_s, u"**Hello**"_s};
            context.insert(session);
            context.save();
        }
        for (int i = 0; i < 2; ++i) {
            QVERIFY(start());
            QCOMPARE(tests::ScreenReader(window()).names(QAccessible::ListItem),
                     (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
            m_app.reset();
            QVERIFY(!window());
        }
    }

    void aSecondRequestToOpenKeepsTheWindow() {
        QVERIFY(start());
        auto* first = window();
        const auto* chat = first->findChild<tellwick::ChatView*>();
        first->resize(700, 600);
        m_app->openWindow("token");
        QCoreApplication::processEvents();
        QCOMPARE(window(), first);
        QCOMPARE(first->findChild<tellwick::ChatView*>(), chat);
        QCOMPARE(first->size(), QSize(700, 600));
    }

    void controlQQuits_data() {
        QTest::addColumn<bool>("isMenuOpen");
        QTest::newRow("at rest") << false;
        QTest::newRow("while the menu is open") << true;
    }
    void controlQQuits() {
        QFETCH(bool, isMenuOpen);
        QVERIFY(start());
        QVERIFY(quitsAfter([isMenuOpen] {
            const tests::ScreenReader screen(window());
            if (isMenuOpen)
                QVERIFY(screen.press(u"More"_s, QAccessible::ButtonMenu));
            screen.key(Qt::Key_Q, Qt::ControlModifier);
        }));
    }

    void closingTheWindowQuits() {
        QVERIFY(start());
        QVERIFY(quitsAfter([] { window()->close(); }));
    }

    void controlWClosesTheWindow() {
        QVERIFY(start());
        QVERIFY(
            quitsAfter([] { tests::ScreenReader(window()).key(Qt::Key_W, Qt::ControlModifier); }));
    }

    void keysAndTheWheelSizeTheText() {
        QVERIFY(start());
        const tests::ScreenReader screen(window());
        auto* field = screen.widget(u"Message"_s);
        const auto size = [&] {
            platform::flushObservers(window());
            return QFontInfo(field->font()).pointSizeF();
        };
        const qreal usual = size();
        screen.key(Qt::Key_Plus, Qt::ControlModifier);
        const qreal larger = size();
        QVERIFY(larger > usual);
        screen.key(Qt::Key_Equal, Qt::ControlModifier); // where plus wants Shift
        QVERIFY(size() > larger);
        screen.key(Qt::Key_0, Qt::ControlModifier);
        QCOMPARE(size(), usual);
        screen.key(Qt::Key_Minus, Qt::ControlModifier);
        QVERIFY(size() < usual);
        screen.key(Qt::Key_0, Qt::ControlModifier);
        QWheelEvent up({5, 5}, window()->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton,
                       Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window(), &up);
        QCOMPARE(size(), larger);
    }

    void theEndOfTheProgramTakesNoTime() {
        QVERIFY(start());
        QElapsedTimer clock;
        clock.start();
        m_app.reset();
        QVERIFY(clock.elapsed() < 2000);
    }
};

TELLWICK_TEST(TellwickAppTests, Widgets)
#include "TellwickAppTests.moc"
