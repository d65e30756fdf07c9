// SPDX-License-Identifier: MIT
// The window's root view over a real store: the first start, a later appearance, a restart.
#include "tests/Tellwick/Interface/ChatWindow.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QDir>

using namespace Qt::StringLiterals;
namespace AppConfig = tellwick::AppConfig;

class ContentViewTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ChatWindow> m;

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theControllerIsMadeByTheFirstAppearance() {
        m->view.emplace(m->desktop.services(), [this] {
            ++m->controllersMade;
            return m->conversation.startForWindow();
        });
        m->view->resize(640, 800);
        QCoreApplication::processEvents();
        QVERIFY(!m->chat());
        QCOMPARE(m->controllersMade, 0);
        m->view->show();
        QCOMPARE(m->controllersMade, 1);
        QVERIFY(m->chat()->isVisible());
    }

    void anEmptyChatIsStoredOnce() {
        QVERIFY(m->open());
        QVERIFY(m->screen().shows(AppConfig::welcomeMessage()));
        const auto stored = m->conversation.stored();
        m->close();
        QVERIFY(m->open());
        QCOMPARE(m->conversation.stored().size(), 1);
        QCOMPARE(m->conversation.stored().first().row, stored.first().row);
    }

    void aSecondAppearanceKeepsTheController() {
        QVERIFY(m->open());
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        QVERIFY(m->conversation.select({u"llama"_s}, u"llama"_s));
        m->screen().type("draft");
        auto* chat = m->chat();
        for (int i = 0; i < 3; ++i) {
            m->view->hide();
            QCoreApplication::processEvents();
            m->view->show();
            QVERIFY(QTest::qWaitForWindowActive(&*m->view));
            m->flush();
            QCOMPARE(m->controllersMade, 1);
            QCOMPARE(m->chat(), chat);
            QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
            QCOMPARE(m->field()->text(), u"draft"_s);
            QCOMPARE(m->vm().modelManager.selectedID.value(), u"ollama-llama"_s);
        }
        m->screen().type("s"); // the keyboard is where it was
        QCOMPARE(m->vm().draft.value(), u"drafts"_s);
    }

    void aSecondAppearanceDuringATurnGoesOnWithIt() {
        QVERIFY(m->open());
        auto& turn = m->conversation.ask(u"Hi"_s);
        turn.say(u"Hel");
        QVERIFY(m->conversation.waitForReply(u"Hel"_s));
        m->view->hide();
        turn.say(u"Hello");
        QVERIFY(m->conversation.waitForReply(u"Hello"_s));
        m->view->show();
        turn.end();
        QVERIFY(m->conversation.settle());
        m->flush();
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
    }

    void aRestartShowsTheConversationAndSelectsTheOnDeviceModel() {
        QVERIFY(m->open());
        QVERIFY(m->conversation.select({u"llama"_s}, u"llama"_s));
        m->vm().setMode(AppConfig::writingModes().first());
        auto& request = m->conversation.askServer(u"Hi"_s);
        request.say(u"Hello **you**");
        request.end();
        QVERIFY(m->conversation.settle());
        m->screen().type("draft");
        m->close();

        QVERIFY(m->open());
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello you"_s}));
        QCOMPARE(m->vm().modelManager.selectedID.value(), u"apple-intelligence"_s);
        QVERIFY(m->screen().shows(u"On-device · Private"_s));
        QVERIFY(!m->vm().activeMode.value());
        QCOMPARE(m->field()->text(), QString());
        QVERIFY(!m->vm().isGenerating.value());
        QVERIFY(m->screen().shows(u"Send"_s));
    }

    void aRestartInTheMiddleOfATurnShowsWhatWasBefore() {
        QVERIFY(m->open());
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->conversation.ask(u"More"_s).say(u"Half");
        QVERIFY(m->conversation.waitForReply(u"Half"_s));
        m->close();
        QVERIFY(m->open());
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
        QVERIFY(m->screen().shows(u"Send"_s));
    }

    void severalRecordsLeaveTheNewest() {
        for (const int second : {10, 30, 20})
            m->conversation.store({u"user"_s}, {u"Number %1"_s.arg(second)},
                                  QDateTime::fromSecsSinceEpoch(second));
        QVERIFY(m->open());
        QCOMPARE(m->bubbles(), QStringList{u"You: Number 30"_s});
        m->close();
        QCOMPARE(m->conversation.stored().size(), 1);
    }

    void aStoreThatCannotBeReadShowsAnEmptyChat() {
        QDir().mkpath(QFileInfo(m->conversation.file()).path());
        const QByteArray foreign = "This is no database. ";
        tests::writeBytes(m->conversation.file(), foreign.repeated(1000));
        QVERIFY(m->open());
        QVERIFY(m->screen().shows(AppConfig::tagline()));
        QVERIFY(m->conversation.talk(u"Hi"_s, u"Hello"_s));
        m->flush();
        QCOMPARE(m->bubbles(), (QStringList{u"You: Hi"_s, u"Tellwick: Hello"_s}));
        m->close();
        QCOMPARE(tests::bytesOf(m->conversation.file()), foreign.repeated(1000));
    }

    void theChatFillsTheWindow() {
        QVERIFY(m->open());
        for (const QSize size : {QSize(640, 800), QSize(1500, 500), QSize(1, 1)}) {
            m->view->resize(size);
            QTRY_COMPARE(m->chat()->geometry(), m->view->rect());
            QTRY_VERIFY(m->view->rect().contains(m->placeOf(m->sendButton())));
        }
    }

    void theBackgroundFollowsTheTheme() {
        QVERIFY(m->open());
        const auto background = [this] { return m->view->grab().toImage().pixelColor(320, 600); };
        const QColor light = m->desktop.theme.color(platform::ColorRole::Window);
        QCOMPARE(background(), light);
        m->desktop.theme.setDark(true);
        m->flush();
        const QColor dark = m->desktop.theme.color(platform::ColorRole::Window);
        QVERIFY(dark != light);
        QCOMPARE(background(), dark);
    }
};

TELLWICK_TEST(ContentViewTests, Widgets)
#include "ContentViewTests.moc"
