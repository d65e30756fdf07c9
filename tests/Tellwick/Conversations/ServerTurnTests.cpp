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
        m.emplace();
        m->start();
        QVERIFY(m->select({u"tiny"_s, u"large"_s}, u"tiny"_s));
    }
    void cleanup() { m.reset(); }

    void theHistoryIsWhatPrecedesTheNewMessage() {
        QVERIFY(talk(u" one "_s, u"1"_s));
        const auto& first = m->server.requests[0];
        QCOMPARE(first.model, u"tiny"_s);
        QCOMPARE(first.prompt, u"one"_s);
        QVERIFY(first.history.isEmpty());
        const auto& second = m->askServer(u"two"_s);
        QCOMPARE(second.prompt, u"two"_s);
        QCOMPARE(second.history.size(), 2);
        for (qsizetype i = 0; i < 2; ++i)
            QVERIFY(second.history[i].id() == vm().messages.value()[i].id());
        QCOMPARE(second.history[0].content.toString(), u"one"_s);
        QCOMPARE(second.history[1].content.toString(), u"1"_s);
    }

    void aRestoredConversationIsTheHistory() {
        QVERIFY(talk(u"one"_s, u"1"_s));
        m->quit();
        m->start();
        QCOMPARE(vm().modelManager.selectedID.value(), u"apple-intelligence"_s);
        QVERIFY(m->select({u"tiny"_s}, u"tiny"_s));
        QCOMPARE(m->askServer(u"two"_s).history.size(), 2);
    }

    void theSystemPromptIsComposedForEachTurn() {
        const auto mode = AppConfig::writingModes().first();
        const QString prompt = AppConfig::defaultSystemPrompt();
        vm().setMode(mode);
        QVERIFY(talk(u"one"_s, u"1"_s));
        const QString withMode = m->server.requests.back().systemPrompt;
        QCOMPARE(withMode, prompt + u"\n\n"_s + mode.systemPrompt);
        QCOMPARE(withMode.toUtf8().size(), 334 + 2 + 171);
        vm().clearMode();
        QCOMPARE(m->askServer(u"two"_s).systemPrompt, prompt);
    }

    void theStateOfTheOnDeviceModelDoesNotMatter() {
        m->model.state = Availability::unavailable(Availability::UnavailableReason::modelNotReady);
        const int asked = m->model.timesAsked;
        QVERIFY(talk(u"one"_s, u"1"_s));
        QCOMPARE(m->model.timesAsked, asked);
        QVERIFY(!vm().availabilityError.value());
    }

    void aFailureIsShownStoredAndResetsTheBackendOfTheTurn_data() {
        QTest::addColumn<std::exception_ptr>("error");
        QTest::addColumn<QString>("said"); // before it; "-": there is not even a stream
        QTest::addColumn<QString>("reply");
        const auto described = std::make_exception_ptr(ScriptedError());
        const auto cancelled = std::make_exception_ptr(CancellationError());
        const QString shown = u"Error: The model is tired."_s;
        QTest::newRow("with a description") << described << u"so far"_s << shown;
        QTest::newRow("of the library") << std::make_exception_ptr(std::runtime_error("no order"))
                                        << u"so far"_s << u"Error: no order"_s;
        QTest::newRow("before any text") << described << QString() << shown;
        QTest::newRow("in place of a stream") << described << u"-"_s << shown;
        QTest::newRow("no failure: a cancellation") << cancelled << u"so far"_s << u"so far"_s;
        QTest::newRow("the same in place of a stream") << cancelled << u"-"_s << QString();
    }

    void aFailureIsShownStoredAndResetsTheBackendOfTheTurn() {
        QFETCH(std::exception_ptr, error);
        QFETCH(QString, said);
        QFETCH(QString, reply);
        if (said == u"-") {
            m->server.refusal = error;
            QVERIFY(m->send(u"one"_s));
        } else {
            const auto& request = m->askServer(u"one"_s);
            request.say(said);
            QVERIFY(m->waitForReply(said));
            request.reply.finish(error);
        }
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"one"_s, reply}));
        QCOMPARE(m->stored().first().contents, m->contents());
        QVERIFY(!vm().availabilityError.value());
        QCOMPARE(m->server.resets, QStringList(reply.startsWith(u"Error: ") ? 1 : 0, u"tiny"_s));
    }

    void aFailureWhoseReplyHasGoneResetsItsBackendAllTheSame() {
        const auto& request = m->askServer(u"one"_s);
        vm().messages = QList<ChatMessage>();
        request.fail(ScriptedError());
        QVERIFY(m->settle());
        QVERIFY(vm().messages.value().isEmpty());
        QCOMPARE(m->server.resets, QStringList{u"tiny"_s});
    }

    void aModeResetsTheSelectedBackendOnlyWhenItMayBeSet() {
        const auto modes = AppConfig::writingModes();
        QStringList& resets = m->server.resets;
        vm().setMode(modes[0]);
        vm().setMode(modes[1]);
        vm().setMode(modes[1]);
        QCOMPARE(resets.size(), 3);
        vm().clearMode();
        QCOMPARE(resets.size(), 4);
        QVERIFY(talk(u"one"_s, u"1"_s));
        vm().setMode(modes[0]);
        QCOMPARE(resets.size(), 4);
        vm().clearMode();
        QCOMPARE(resets, QStringList(5, u"tiny"_s));
    }

    void aNewChatResetsTheSelectedBackendOnce() {
        QVERIFY(talk(u"one"_s, u"1"_s));
        vm().newChat();
        QCOMPARE(m->server.resets, QStringList{u"tiny"_s});
    }

    void aRefreshThatRemovesTheSelectedModelLeavesTheTurnAlone() {
        const auto& request = m->askServer(u"one"_s);
        request.say(u"1");
        QVERIFY(m->waitForReply(u"1"_s));
        m->server.listed = {u"large"_s};
        vm().modelManager.startRefresh();
        QTRY_COMPARE(vm().modelManager.selectedID.value(), u"apple-intelligence"_s);
        request.say(u"1 and more");
        QVERIFY(m->waitForReply(u"1 and more"_s));
        request.fail(ScriptedError());
        QVERIFY(m->settle());
        QCOMPARE(m->contents().last(), u"Error: The model is tired."_s);
        QCOMPARE(m->server.resets, QStringList{u"tiny"_s}); // the turn's, not the selected
        m->ask(u"two"_s); // goes to the model that is selected now
    }

    void aRefreshThatKeepsTheNameLeavesTheTurnWithItsOwnBackend() {
        const std::weak_ptr<ModelBackend> old = vm().modelManager.selected();
        const auto& request = m->askServer(u"one"_s);
        vm().modelManager.startRefresh();
        QTRY_VERIFY(vm().modelManager.selected() != old.lock());
        QCOMPARE(vm().modelManager.selectedID.value(), u"ollama-tiny"_s);
        QVERIFY(!old.expired());
        request.say(u"1");
        request.end();
        QVERIFY(m->settle());
        QCOMPARE(m->contents().last(), u"1"_s);
        QTRY_VERIFY(old.expired()); // and it goes with the turn
    }

    void anotherModelMayBeSelectedInTheMiddleOfATurn() {
        const auto& request = m->askServer(u"one"_s);
        QVERIFY(m->select({u"tiny"_s, u"large"_s}, u"large"_s));
        request.say(u"1");
        request.end();
        QVERIFY(m->settle());
        const auto& next = m->askServer(u"two"_s);
        QCOMPARE(next.model, u"large"_s);
        QCOMPARE(next.history.last().content.toString(), u"1"_s);
    }

    void aFloodOfElementsCanBeStopped() {
        const auto& request = m->askServer(u"one"_s);
        // A click comes as an event while the elements are being applied.
        QTimer click;
        click.setSingleShot(true);
        qsizetype sizeAtClick = 0;
        QObject::connect(
            &click, &QTimer::timeout, &click,
            [&] {
                sizeAtClick = vm().messages.value().last().content.size();
                vm().stop();
            });
        const Notifications notifications(vm().messages, [&] {
            if (!click.isActive() && sizeAtClick == 0)
                click.start(0);
        });
        TextBuilder builder;
        for (int i = 0; i < 300'000; ++i) {
            builder.append(u"word ");
            request.reply.yield(builder.text());
        }
        QVERIFY(m->settle());
        QVERIFY(sizeAtClick > 0);
        QVERIFY(sizeAtClick < builder.text().size());
        QCOMPARE(vm().messages.value().last().content.size(), sizeAtClick);
    }

private:
    ChatViewModel& vm() { return *m->controller; }
    bool talk(const QString& text, const QString& reply) {
        const auto& request = m->askServer(text);
        request.say(reply);
        request.end();
        return m->settle();
    }

    std::optional<Conversation> m;
};

TELLWICK_TEST(ServerTurnTests, EventLoop)
#include "ServerTurnTests.moc"
