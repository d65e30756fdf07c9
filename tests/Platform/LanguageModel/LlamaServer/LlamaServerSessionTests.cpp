// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"
#include "tests/support/StreamProbe.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests

// What the models' template puts around a prompt and in front of a reply, in tokens: the end mark
// and the line feed behind the last reply, then "user" and "assistant" with their marks and line
// feeds.
constexpr int templateTokens = 2 + 6 + 2 + 11;

} // namespace

/// Conversations with the real engine.
class LlamaServerSessionTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init();
    void cleanup();

    void aReplyArrivesInGrowingSnapshots();
    void charactersSplitOverTokensArriveWhole();
    void threeTurnsInOneSessionReadOnlyWhatIsNew();
    void theModelGetsTheInstructionsAndTheTurnsSoFar();
    void withoutInstructionsThereIsNoSystemMessage();
    void sessionsKnowNothingOfEachOther();
    void aRequestWhileAnsweringFailsAndTheReplyGoesOn();
    void twoSessionsAnswerAtOnce();
    void aReplyThatNobodyReadsIsAnsweredAndRemembered();
    void aSessionThatWasLetGoAnswersToTheEnd();
    void aModelThatNeverEndsFillsItsContextAndThenAsksForANewChat();
    void aPromptLongerThanTheContextAsksForANewChatAndTheSessionGoesOn();
    void theReplyIsAsLongAsTheOptionsAllow();
    void awkwardTextsReachTheModelUnchanged_data();
    void awkwardTextsReachTheModelUnchanged();

private:
    std::shared_ptr<LlamaServerSession> makeSession(const QString& instructions = u"Be kind."_s) {
        return std::static_pointer_cast<LlamaServerSession>(m_model->makeSession(instructions));
    }
    std::shared_ptr<Heard> ask(LanguageModelSession& session, const QString& prompt,
                               const GenerationOptions& options = {}) {
        return listen(*m_scope, session.streamResponse(prompt, options));
    }

    std::unique_ptr<EngineFolders> m_folders;
    std::unique_ptr<MainExecutor> m_executor;
    std::unique_ptr<TaskScope> m_scope;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<LlamaServerModel> m_model;
};

void LlamaServerSessionTests::init() {
    m_folders = std::make_unique<EngineFolders>();
    m_folders->setModel(TinyModel::sentence());
    m_executor = std::make_unique<MainExecutor>();
    m_scope = std::make_unique<TaskScope>(*m_executor);
    m_network = std::make_unique<NetworkThread>();
    m_model = std::make_unique<LlamaServerModel>(*m_network, m_folders->paths());
}

void LlamaServerSessionTests::cleanup() {
    m_scope.reset();
    m_model.reset();
    m_network.reset();
    m_executor.reset();
    m_folders.reset();
}

void LlamaServerSessionTests::aReplyArrivesInGrowingSnapshots() {
    const auto session = makeSession();
    const auto heard = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY2(!heard->error, qPrintable(heard->error.value_or(QString())));
    QCOMPARE(heard->text(), QString::fromUtf8(replyOf(TinyModel::sentence())));
    QCOMPARE(heard->snapshots, TinyModel::sentence().tokens.size());
    QVERIFY(heard->everGrew);
}

void LlamaServerSessionTests::charactersSplitOverTokensArriveWhole() {
    m_folders->setModel(TinyModel::splitCharacters());
    const auto session = makeSession();
    const auto heard = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY(!heard->error);
    QCOMPARE(heard->text(), u"\u00e9\U0001F98A"_s);
    QCOMPARE(heard->snapshots, 2);
}

void LlamaServerSessionTests::threeTurnsInOneSessionReadOnlyWhatIsNew() {
    const auto session = makeSession();
    qint64 tokensBefore = 0;
    for (const QString& prompt : {u"Hello there"_s, u"Again"_s, u"And once more"_s}) {
        const auto heard = ask(*session, prompt);
        QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
        QVERIFY(!heard->error);
        QCOMPARE(heard->text(), QString::fromUtf8(replyOf(TinyModel::sentence())));

        const auto timings = session->lastTimings();
        QVERIFY(timings);
        if (tokensBefore > 0) {
            // One token a character at most; the reply's last token was said and not read.
            QVERIFY2(timings->readTokens <= prompt.size() + templateTokens + 1,
                     qPrintable(QString::number(timings->readTokens)));
            QVERIFY(timings->cachedTokens >= tokensBefore - 1);
        }
        tokensBefore = timings->cachedTokens + timings->readTokens + timings->writtenTokens;
    }
}

void LlamaServerSessionTests::theModelGetsTheInstructionsAndTheTurnsSoFar() {
    m_folders->recordPrompts();
    const auto session = makeSession(u"Speak like a pirate."_s);
    for (const QString& prompt : {u"Hello"_s, u"Again"_s}) {
        const auto heard = ask(*session, prompt);
        QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
        QVERIFY(!heard->error);
    }
    const QByteArrayList prompts = m_folders->recordedPrompts();
    QCOMPARE(prompts.size(), 2);
    QCOMPARE(prompts.at(0),
             QByteArray("<|im_start|>system\nSpeak like a pirate.<|im_end|>\n"
                        "<|im_start|>user\nHello<|im_end|>\n<|im_start|>assistant\n"));
    QCOMPARE(prompts.at(1), prompts.at(0) + replyOf(TinyModel::sentence()) +
                                QByteArray("<|im_end|>\n<|im_start|>user\nAgain<|im_end|>\n"
                                           "<|im_start|>assistant\n"));
}

void LlamaServerSessionTests::withoutInstructionsThereIsNoSystemMessage() {
    m_folders->recordPrompts();
    const auto session = makeSession(QString());
    const auto heard = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(m_folders->recordedPrompts(),
             QByteArrayList{"<|im_start|>user\nHello<|im_end|>\n<|im_start|>assistant\n"});
}

void LlamaServerSessionTests::sessionsKnowNothingOfEachOther() {
    m_folders->recordPrompts();
    const auto first = makeSession(u"One."_s);
    const auto heard = ask(*first, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    const auto second = makeSession(u"Two."_s);
    const auto heardToo = ask(*second, u"Ahoy"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heardToo->hasEnded, limit);
    QCOMPARE(m_folders->recordedPrompts().value(1),
             QByteArray("<|im_start|>system\nTwo.<|im_end|>\n<|im_start|>user\nAhoy<|im_end|>\n"
                        "<|im_start|>assistant\n"));
}

void LlamaServerSessionTests::aRequestWhileAnsweringFailsAndTheReplyGoesOn() {
    m_folders->setModel(TinyModel::endless());
    const auto session = makeSession();
    const auto first = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(first->snapshots > 0, limit);
    const auto second = ask(*session, u"Again"_s);
    QTRY_VERIFY_WITH_TIMEOUT(second->hasEnded, limit);
    QCOMPARE(second->error.value_or(QString()),
             u"The on-device model is still answering your previous message. Try again when it "
             u"has finished, or start a new chat."_s);
    QCOMPARE(second->snapshots, 0);

    const int before = first->snapshots;
    QTRY_VERIFY_WITH_TIMEOUT(first->snapshots > before, limit);
    QVERIFY(!first->hasEnded);
}

void LlamaServerSessionTests::twoSessionsAnswerAtOnce() {
    m_folders->setModel(TinyModel::endless());
    const auto abandoned = makeSession();
    const auto first = ask(*abandoned, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(first->snapshots > 0, limit);
    const auto wanted = makeSession();
    const auto second = ask(*wanted, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(second->snapshots > 10, limit);
    const int before = first->snapshots;
    QTRY_VERIFY_WITH_TIMEOUT(first->snapshots > before, limit);
    QVERIFY(!first->hasEnded && !second->hasEnded);
}

void LlamaServerSessionTests::aReplyThatNobodyReadsIsAnsweredAndRemembered() {
    m_folders->recordPrompts();
    const auto session = makeSession();
    { const auto dropped = session->streamResponse(u"Hello"_s, {}); }
    // As soon as the session has answered the first turn it takes the second.
    std::shared_ptr<Heard> second;
    const auto isAnswered = [&] {
        if (!second || (second->hasEnded && second->error))
            second = ask(*session, u"Again"_s);
        return second->hasEnded && !second->error;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isAnswered(), limit);
    const QByteArrayList prompts = m_folders->recordedPrompts();
    QCOMPARE(prompts.size(), 2);
    QVERIFY(prompts.at(1).contains(replyOf(TinyModel::sentence())));
}

void LlamaServerSessionTests::aSessionThatWasLetGoAnswersToTheEnd() {
    auto session = makeSession();
    const auto heard = ask(*session, u"Hello"_s);
    session.reset();
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY(!heard->error);
    QCOMPARE(heard->text(), QString::fromUtf8(replyOf(TinyModel::sentence())));
}

void LlamaServerSessionTests::aModelThatNeverEndsFillsItsContextAndThenAsksForANewChat() {
    TinyModel model = TinyModel::endless();
    model.contextLength = 512;
    m_folders->setModel(model);
    const auto session = makeSession();
    const auto heard = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY2(!heard->error, qPrintable(heard->error.value_or(QString())));
    QVERIFY(heard->snapshots > 300);
    QVERIFY(heard->snapshots < 512);

    const auto next = ask(*session, u"Again"_s);
    QTRY_VERIFY_WITH_TIMEOUT(next->hasEnded, limit);
    QCOMPARE(next->error.value_or(QString()),
             u"This conversation is longer than the on-device model can hold. Start a new chat to "
             u"go on."_s);
}

void LlamaServerSessionTests::aPromptLongerThanTheContextAsksForANewChatAndTheSessionGoesOn() {
    const auto session = makeSession();
    const auto heard = ask(*session, QString(20'000, u'x'));
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()),
             u"This conversation is longer than the on-device model can hold. Start a new chat to "
             u"go on."_s);
    const auto next = ask(*session, u"Hello"_s);
    QTRY_VERIFY_WITH_TIMEOUT(next->hasEnded, limit);
    QVERIFY(!next->error);
}

void LlamaServerSessionTests::theReplyIsAsLongAsTheOptionsAllow() {
    const auto session = makeSession();
    GenerationOptions options;
    options.maximumResponseTokens = 3;
    options.temperature = 0.1;
    options.sampling = GenerationOptions::Sampling::Greedy;
    const auto heard = ask(*session, u"Hello"_s, options);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY(!heard->error);
    QCOMPARE(heard->text(), u"The quick brown"_s);
}

void LlamaServerSessionTests::awkwardTextsReachTheModelUnchanged_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes and backslashes") << u"say \"yes\\no\""_s;
    QTest::newRow("line breaks and tabs") << u"one\n\ttwo\r\nthree"_s;
    QTest::newRow("line separator") << u"one\u2028two\u2029three"_s;
    QTest::newRow("outside the first plane") << u"\U0001F98A \u05e9\u05dc\u05d5\u05dd"_s;
    QTest::newRow("control characters") << u"bell \u0007 escape \u001b end"_s;
}

void LlamaServerSessionTests::awkwardTextsReachTheModelUnchanged() {
    QFETCH(QString, text);
    m_folders->recordPrompts();
    const auto session = makeSession(QString());
    const auto heard = ask(*session, text);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QVERIFY(!heard->error);
    QCOMPARE(m_folders->recordedPrompts().value(0),
             "<|im_start|>user\n" + text.toUtf8() + "<|im_end|>\n<|im_start|>assistant\n");
}

TELLWICK_TEST(LlamaServerSessionTests, EventLoop)
#include "LlamaServerSessionTests.moc"
