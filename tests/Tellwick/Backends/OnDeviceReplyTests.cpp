// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"
#include "Tellwick/Backends/AppleIntelligenceBackend.h"
#include "tests/support/StreamProbe.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests

QByteArray instructed(const QByteArray& text) {
    return "<|im_start|>system\n" + text + "<|im_end|>\n";
}

QByteArray turn(const QByteArray& prompt) {
    return "<|im_start|>user\n" + prompt + "<|im_end|>\n<|im_start|>assistant\n";
}

} // namespace

/// The on-device backend over the real engine, as the conversation uses it.
class OnDeviceReplyTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init();
    void cleanup();

    void aWholeTurnIsAnswered();
    void threeTurnsAreOneConversation();
    void aResetBeginsAConversationWithItsOwnSystemPrompt();
    void theHistoryIsNotSent();
    void afterAStopTheSameConversationIsBusyUntilItsReplyHasEnded();
    void afterAStopAndAResetTheNextTurnIsAnsweredAtOnce();
    void afterAFailureAndAResetTheNextTurnIsAnswered();

private:
    std::shared_ptr<Heard> ask(const QString& prompt, const QString& systemPrompt = u"Be kind."_s,
                               const QList<ChatMessage>& history = {}) {
        return listen(*m_scope, m_backend->streamResponse(prompt, history, systemPrompt));
    }
    void expectAnswer(const QString& prompt, const QString& systemPrompt = u"Be kind."_s);

    const QByteArray m_reply = replyOf(TinyModel::sentence());
    std::unique_ptr<EngineFolders> m_folders;
    std::unique_ptr<MainExecutor> m_executor;
    std::unique_ptr<TaskScope> m_scope;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<LlamaServerModel> m_model;
    std::unique_ptr<AppleIntelligenceBackend> m_backend;
};

void OnDeviceReplyTests::init() {
    m_folders = std::make_unique<EngineFolders>();
    m_folders->setModel(TinyModel::sentence());
    m_executor = std::make_unique<MainExecutor>();
    m_scope = std::make_unique<TaskScope>(*m_executor);
    m_network = std::make_unique<NetworkThread>();
    m_model = std::make_unique<LlamaServerModel>(*m_network, m_folders->paths());
    m_backend = std::make_unique<AppleIntelligenceBackend>(*m_model, m_network->scope());
}

void OnDeviceReplyTests::cleanup() {
    m_scope.reset();
    m_backend.reset();
    m_model.reset();
    m_network.reset();
    m_executor.reset();
    m_folders.reset();
}

void OnDeviceReplyTests::expectAnswer(const QString& prompt, const QString& systemPrompt) {
    const auto heard = ask(prompt, systemPrompt);
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(heard->error.value_or(QString()), QString());
    QCOMPARE(heard->text(), QString::fromUtf8(m_reply));
    QVERIFY(heard->everGrew);
}

void OnDeviceReplyTests::aWholeTurnIsAnswered() {
    QVERIFY(m_backend->isAvailable());
    expectAnswer(u"Hello"_s);
}

void OnDeviceReplyTests::threeTurnsAreOneConversation() {
    m_folders->recordPrompts();
    expectAnswer(u"one"_s, u"A"_s);
    expectAnswer(u"two"_s, u"B"_s);
    expectAnswer(u"three"_s, u"C"_s);
    const QByteArray first = instructed("A") + turn("one");
    const QByteArray second = first + m_reply + "<|im_end|>\n" + turn("two");
    const QByteArray third = second + m_reply + "<|im_end|>\n" + turn("three");
    QCOMPARE(m_folders->recordedPrompts(), (QByteArrayList{first, second, third}));
}

void OnDeviceReplyTests::aResetBeginsAConversationWithItsOwnSystemPrompt() {
    m_folders->recordPrompts();
    expectAnswer(u"one"_s, u"A"_s);
    m_backend->reset();
    expectAnswer(u"two"_s, u"B"_s);
    QCOMPARE(m_folders->recordedPrompts().value(1), instructed("B") + turn("two"));
}

void OnDeviceReplyTests::theHistoryIsNotSent() {
    m_folders->recordPrompts();
    const auto heard = ask(u"now"_s, u"A"_s,
                           {ChatMessage(ChatMessage::Role::user, TextSnapshot(u"earlier")),
                            ChatMessage(ChatMessage::Role::assistant, TextSnapshot(u"answer"))});
    QTRY_VERIFY_WITH_TIMEOUT(heard->hasEnded, limit);
    QCOMPARE(m_folders->recordedPrompts(), QByteArrayList{instructed("A") + turn("now")});
}

void OnDeviceReplyTests::afterAStopTheSameConversationIsBusyUntilItsReplyHasEnded() {
    m_folders->setModel(TinyModel::endless());
    const auto stopped = ask(u"one"_s);
    QTRY_VERIFY_WITH_TIMEOUT(stopped->snapshots > 0, limit);
    m_scope = std::make_unique<TaskScope>(*m_executor); // nobody reads the reply any more
    const auto next = ask(u"two"_s);
    QTRY_VERIFY_WITH_TIMEOUT(next->hasEnded, limit);
    QCOMPARE(next->error.value_or(QString()),
             u"The on-device model is still answering your previous message. Try again when it "
             u"has finished, or start a new chat."_s);
}

void OnDeviceReplyTests::afterAStopAndAResetTheNextTurnIsAnsweredAtOnce() {
    m_folders->setModel(TinyModel::endless());
    const auto stopped = ask(u"one"_s);
    QTRY_VERIFY_WITH_TIMEOUT(stopped->snapshots > 0, limit);
    m_scope = std::make_unique<TaskScope>(*m_executor);
    m_backend->reset();
    const auto next = ask(u"two"_s);
    QTRY_VERIFY_WITH_TIMEOUT(next->snapshots > 3, limit);
    QVERIFY(!next->hasEnded);
}

void OnDeviceReplyTests::afterAFailureAndAResetTheNextTurnIsAnswered() {
    m_folders->setModelFile("no model");
    const auto failed = ask(u"one"_s);
    QTRY_VERIFY_WITH_TIMEOUT(failed->hasEnded, limit);
    QVERIFY(failed->error);
    m_backend->reset();
    m_folders->setModel(TinyModel::sentence());
    expectAnswer(u"one"_s);
}

TELLWICK_TEST(OnDeviceReplyTests, EventLoop)
#include "OnDeviceReplyTests.moc"
