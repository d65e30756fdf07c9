// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/AppleIntelligenceBackend.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;

/// The on-device backend over the real engine, as the conversation uses it.
class OnDeviceReplyTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_folders.emplace();
        m_chat.emplace(m_folders->paths());
        m_backend.emplace(m_chat->model, m_chat->network.scope());
    }

    void cleanup() {
        m_backend.reset();
        m_chat.reset();
        m_folders.reset();
    }

    void aWholeTurnIsAnswered() {
        QVERIFY(m_backend->isAvailable());
        const auto heard = ask(u"Hello"_s);
        QCOMPARE(outcomeOf(heard), m_reply);
        QVERIFY(everGrew(*heard));
    }

    void threeTurnsAreOneConversation() {
        m_folders->recordPrompts();
        QCOMPARE(answerTo(u"one"_s, u"A"_s), m_reply);
        QCOMPARE(answerTo(u"two"_s, u"B"_s), m_reply);
        QCOMPARE(answerTo(u"three"_s, u"C"_s), m_reply);
        const QByteArray first = instructed("A") + turn("one");
        const QByteArray second = first + m_said + "<|im_end|>\n" + turn("two");
        const QByteArray third = second + m_said + "<|im_end|>\n" + turn("three");
        QCOMPARE(m_folders->recordedPrompts(), (QByteArrayList{first, second, third}));
    }

    void aResetBeginsAConversationWithItsOwnSystemPrompt() {
        m_folders->recordPrompts();
        QCOMPARE(answerTo(u"one"_s, u"A"_s), m_reply);
        m_backend->reset();
        QCOMPARE(answerTo(u"two"_s, u"B"_s), m_reply);
        QCOMPARE(m_folders->recordedPrompts().value(1), instructed("B") + turn("two"));
    }

    void theHistoryIsNotSent() {
        m_folders->recordPrompts();
        const auto heard =
            ask(u"now"_s, u"A"_s,
                {ChatMessage(ChatMessage::Role::user, TextSnapshot(u"earlier")),
                 ChatMessage(ChatMessage::Role::assistant, TextSnapshot(u"answer"))});
        QCOMPARE(outcomeOf(heard), m_reply);
        QCOMPARE(m_folders->recordedPrompts(), QByteArrayList{instructed("A") + turn("now")});
    }

    void afterAStopTheNextTurnIsAnsweredAtOnceWithAResetAndWithout() {
        m_folders->setModel(TinyModel::endless());
        QVERIFY(hasSaid(ask(u"one"_s)));
        m_chat->stopHearing();
        const auto second = ask(u"two"_s);
        QVERIFY(hasSaid(second, 3));
        QVERIFY(!second->hasEnded);
        m_chat->stopHearing();
        m_backend->reset();
        const auto third = ask(u"three"_s);
        QVERIFY(hasSaid(third, 3));
        QVERIFY(!third->hasEnded);
    }

    void afterAFailureAndAResetTheNextTurnIsAnswered() {
        m_folders->setModelFile("no model");
        QVERIFY(answerTo(u"one"_s).startsWith(u"Error: "));
        m_backend->reset();
        m_folders->setModel(TinyModel::sentence());
        QCOMPARE(answerTo(u"one"_s), m_reply);
    }

private:
    std::shared_ptr<Heard> ask(const QString& prompt, const QString& systemPrompt = u"Be kind."_s,
                               const QList<ChatMessage>& history = {}) {
        return m_chat->hear(m_backend->streamResponse(prompt, history, systemPrompt));
    }
    QString answerTo(const QString& prompt, const QString& systemPrompt = u"Be kind."_s) {
        return outcomeOf(ask(prompt, systemPrompt));
    }

    const QByteArray m_said = replyOf(TinyModel::sentence());
    const QString m_reply = QString::fromUtf8(m_said);
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
    std::optional<AppleIntelligenceBackend> m_backend;
};

TELLWICK_TEST(OnDeviceReplyTests, EventLoop)
#include "OnDeviceReplyTests.moc"
