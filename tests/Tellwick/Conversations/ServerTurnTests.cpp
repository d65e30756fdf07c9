// SPDX-License-Identifier: MIT
// Turns with the models of a local server: what they are handed, how they fail, and what a change
// of the selection does to them.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Availability = SystemLanguageModel::Availability;

class ServerTurnTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_conversation = std::make_unique<Conversation>();
        m_conversation->start();
        QVERIFY(m_conversation->select({u"tiny"_s, u"large"_s}, u"tiny"_s));
    }
    void cleanup() { m_conversation.reset(); }

    void theHistoryIsWhatPrecedesTheNewMessage() {
        QVERIFY(talk(u" one "_s, u"1"_s));
        const auto& first = conversation().server.requests[0];
        QCOMPARE(first.model, u"tiny"_s);
        QCOMPARE(first.prompt, u"one"_s);
        QVERIFY(first.history.isEmpty());
        const auto& second = conversation().askServer(u"two"_s);
        QCOMPARE(second.prompt, u"two"_s);
        QCOMPARE(second.history.size(), 2);
        for (qsizetype i = 0; i < 2; ++i)
            QVERIFY(second.history[i].id() == controller().messages.value()[i].id());
        QCOMPARE(second.history[0].content.toString(), u"one"_s);
        QCOMPARE(second.history[1].content.toString(), u"1"_s);
    }

    void aRestoredConversationIsTheHistory() {
        QVERIFY(talk(u"one"_s, u"1"_s));
        conversation().quit();
        conversation().start();
        QCOMPARE(controller().modelManager.selectedID.value(), u"apple-intelligence"_s);
        QVERIFY(conversation().select({u"tiny"_s}, u"tiny"_s));
        QCOMPARE(conversation().askServer(u"two"_s).history.size(), 2);
    }

    void theSystemPromptIsComposedForEachTurn() {
        const auto mode = AppConfig::writingModes().first();
        const QString prompt = AppConfig::defaultSystemPrompt();
        controller().setMode(mode);
        QVERIFY(talk(u"one"_s, u"1"_s));
        const QString withMode = conversation().server.requests.back().systemPrompt;
        QCOMPARE(withMode, prompt + u"\n\n"_s + mode.systemPrompt);
        QCOMPARE(withMode.toUtf8().size(), 334 + 2 + 171);
        controller().clearMode();
        QCOMPARE(conversation().askServer(u"two"_s).systemPrompt, prompt);
    }

    void theStateOfTheOnDeviceModelDoesNotMatter() {
        conversation().model.state =
            Availability::unavailable(Availability::UnavailableReason::modelNotReady);
        const int asked = conversation().model.timesAsked;
        QVERIFY(talk(u"one"_s, u"1"_s));
        QCOMPARE(conversation().model.timesAsked, asked);
        QVERIFY(!controller().availabilityError.value());
    }

    void aCancellationErrorLeavesThePartialReplyAndResetsNothing() {
        const auto& request = conversation().askServer(u"one"_s);
        request.say(u"so far");
        request.fail(CancellationError());
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, u"so far"_s}));
        QCOMPARE(conversation().stored().first().contents, (QStringList{u"one"_s, u"so far"_s}));
        QVERIFY(conversation().server.resets.isEmpty());
    }

    void everyOtherErrorIsShownAndResetsTheBackendOfTheTurn_data() {
        QTest::addColumn<bool>("isLocalized");
        QTest::newRow("with a description") << true;
        QTest::newRow("of the library") << false;
    }

    void everyOtherErrorIsShownAndResetsTheBackendOfTheTurn() {
        QFETCH(bool, isLocalized);
        const auto& request = conversation().askServer(u"one"_s);
        request.say(u"so far");
        QVERIFY(conversation().waitForReply(u"so far"_s));
        if (isLocalized)
            request.fail(ScriptedError());
        else
            request.fail(std::runtime_error("out of order"));
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents().last(),
                 isLocalized ? u"Error: The model is tired."_s : u"Error: out of order"_s);
        QCOMPARE(conversation().stored().first().contents, conversation().contents());
        QCOMPARE(conversation().server.resets, QStringList{u"tiny"_s});
    }

    void aFailureWhoseReplyHasGoneResetsItsBackendAllTheSame() {
        const auto& request = conversation().askServer(u"one"_s);
        controller().messages = QList<ChatMessage>();
        request.fail(ScriptedError());
        QVERIFY(conversation().settle());
        QVERIFY(controller().messages.value().isEmpty());
        QCOMPARE(conversation().server.resets, QStringList{u"tiny"_s});
    }

    void anErrorInPlaceOfAStreamIsShownToo() {
        conversation().server.refusal = std::make_exception_ptr(ScriptedError());
        QVERIFY(conversation().send(u"one"_s));
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(),
                 (QStringList{u"one"_s, u"Error: The model is tired."_s}));
        QCOMPARE(conversation().server.resets, QStringList{u"tiny"_s});
    }

    void aCancellationInPlaceOfAStreamLeavesTheReplyEmpty() {
        conversation().server.refusal = std::make_exception_ptr(CancellationError());
        QVERIFY(conversation().send(u"one"_s));
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, {}}));
        QVERIFY(conversation().server.resets.isEmpty());
    }

    void aModeResetsTheSelectedBackendOnlyWhenItMayBeSet() {
        const auto modes = AppConfig::writingModes();
        QStringList& resets = conversation().server.resets;
        controller().setMode(modes[0]);
        controller().setMode(modes[1]);
        controller().setMode(modes[1]);
        QCOMPARE(resets.size(), 3);
        controller().clearMode();
        QCOMPARE(resets.size(), 4);
        QVERIFY(talk(u"one"_s, u"1"_s));
        controller().setMode(modes[0]);
        QCOMPARE(resets.size(), 4);
        controller().clearMode();
        QCOMPARE(resets, QStringList(5, u"tiny"_s));
    }

    void aNewChatResetsTheSelectedBackendOnce() {
        QVERIFY(talk(u"one"_s, u"1"_s));
        controller().newChat();
        QCOMPARE(conversation().server.resets, QStringList{u"tiny"_s});
    }

    void aRefreshThatRemovesTheSelectedModelLeavesTheTurnAlone() {
        const auto& request = conversation().askServer(u"one"_s);
        request.say(u"1");
        QVERIFY(conversation().waitForReply(u"1"_s));
        conversation().server.listed = {u"large"_s};
        controller().modelManager.startRefresh();
        QTRY_COMPARE(controller().modelManager.selectedID.value(), u"apple-intelligence"_s);
        request.say(u"1 and more");
        QVERIFY(conversation().waitForReply(u"1 and more"_s));
        request.fail(ScriptedError());
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents().last(), u"Error: The model is tired."_s);
        QCOMPARE(conversation().server.resets,
                 QStringList{u"tiny"_s}); // the turn's, not the selected
        conversation().ask(u"two"_s);     // goes to the model that is selected now
    }

    void aRefreshThatKeepsTheNameLeavesTheTurnWithItsOwnBackend() {
        const std::weak_ptr<ModelBackend> old = controller().modelManager.selected();
        const auto& request = conversation().askServer(u"one"_s);
        controller().modelManager.startRefresh();
        QTRY_VERIFY(controller().modelManager.selected() != old.lock());
        QCOMPARE(controller().modelManager.selectedID.value(), u"ollama-tiny"_s);
        QVERIFY(!old.expired());
        request.say(u"1");
        request.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents().last(), u"1"_s);
        QTRY_VERIFY(old.expired()); // and it goes with the turn
    }

    void anotherModelMayBeSelectedInTheMiddleOfATurn() {
        const auto& request = conversation().askServer(u"one"_s);
        QVERIFY(conversation().select({u"tiny"_s, u"large"_s}, u"large"_s));
        request.say(u"1");
        request.end();
        QVERIFY(conversation().settle());
        const auto& next = conversation().askServer(u"two"_s);
        QCOMPARE(next.model, u"large"_s);
        QCOMPARE(next.history.last().content.toString(), u"1"_s);
    }

    void aSendWhileTheAbandonedReplyOfAnotherModelStreams() {
        const auto& abandoned = conversation().askServer(u"one"_s);
        abandoned.say(u"1");
        QVERIFY(conversation().waitForReply(u"1"_s));
        controller().stop();
        QVERIFY(conversation().settle());
        QVERIFY(conversation().select({u"tiny"_s, u"large"_s}, u"large"_s));
        const auto& next = conversation().askServer(u"two"_s);
        abandoned.say(u"1 and more");
        next.say(u"2");
        abandoned.fail(ScriptedError());
        next.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
        QVERIFY(conversation().server.resets.isEmpty());
    }

    void twoTurnsInOnePassOfTheEventLoop() {
        // The first ends, and the second begins, while one and the same pass goes on.
        bool hasBegun = false;
        const auto notifier = controller().isGenerating.addNotifier([&] {
            if (!controller().isGenerating.value() && !std::exchange(hasBegun, true)) {
                conversation().send(u"two"_s);
                conversation().send(u"refused"_s);
            }
        });
        const auto& first = conversation().askServer(u"one"_s);
        first.say(u"1");
        first.end();
        QTRY_COMPARE(conversation().server.requests.size(), std::size_t(2));
        QCOMPARE(controller().draft.value(), u"refused"_s);
        const auto& second = conversation().server.requests.back();
        QCOMPARE(second.history.size(), 2);
        second.say(u"2");
        second.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
        QCOMPARE(conversation().stored().first().contents, conversation().contents());
    }

    void aReplyThatIsCompleteAtOnceIsShownWhole() {
        const QString text = u"a\u2028b\u0000c\U0001F600"_s + QChar(0xd83d);
        QVERIFY(talk(u"one"_s, text));
        QCOMPARE(conversation().contents().last(), text);
        conversation().quit();
        conversation().start();
        QCOMPARE(conversation().contents().last(), text);
    }

    void aFloodOfElementsCanBeStopped() {
        const auto& request = conversation().askServer(u"one"_s);
        // A click comes as an event while the elements are being applied.
        QTimer click;
        click.setSingleShot(true);
        qsizetype sizeAtClick = 0;
        QObject::connect(
            &click, &QTimer::timeout, &click,
            [&] {
                sizeAtClick = controller().messages.value().last().content.size();
                controller().stop();
            });
        const Notifications notifications(controller().messages, [&] {
            if (!click.isActive() && sizeAtClick == 0)
                click.start(0);
        });
        TextBuilder builder;
        for (int i = 0; i < 300'000; ++i) {
            builder.append(u"word ");
            request.reply.yield(builder.text());
        }
        QVERIFY(conversation().settle());
        QVERIFY(sizeAtClick > 0);
        QVERIFY(sizeAtClick < builder.text().size());
        QCOMPARE(controller().messages.value().last().content.size(), sizeAtClick);
    }

    void theEventLoopTurnsWhileElementsFlood() {
        const auto& request = conversation().askServer(u"one"_s);
        int turns = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++turns; });
        timer.start(0);
        TextBuilder builder;
        for (int i = 0; i < 300'000; ++i) {
            builder.append(u"word ");
            request.reply.yield(builder.text());
        }
        request.end();
        turns = 0;
        QVERIFY(conversation().settle());
        QVERIFY2(turns >= 3, qPrintable(QString::number(turns)));
        QCOMPARE(controller().messages.value().last().content.size(), builder.text().size());
    }

private:
    Conversation& conversation() { return *m_conversation; }
    ChatViewModel& controller() { return *m_conversation->controller; }
    bool talk(const QString& text, const QString& reply) {
        const auto& request = conversation().askServer(text);
        request.say(reply);
        request.end();
        return conversation().settle();
    }

    std::unique_ptr<Conversation> m_conversation;
};

TELLWICK_TEST(ServerTurnTests, EventLoop)
#include "ServerTurnTests.moc"
