// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <thread>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

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
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_chat.emplace(m_folders->paths());
    }

    void aReplyArrivesInGrowingSnapshots() {
        const auto heard = m_chat->ask(u"Hello"_s);
        QCOMPARE(outcomeOf(heard), m_reply);
        QCOMPARE(heard->elements.size(), TinyModel::sentence().tokens.size());
        QVERIFY(everGrew(*heard));
    }

    void charactersSplitOverTokensArriveWhole() {
        m_folders->setModel(TinyModel::splitCharacters());
        const auto heard = m_chat->ask(u"Hello"_s);
        QCOMPARE(outcomeOf(heard), u"\u00e9\U0001F98A"_s);
        QCOMPARE(heard->elements.size(), 2);
    }

    void threeTurnsInOneSessionReadOnlyWhatIsNew() {
        m_folders->setEngineScript("exec \"$ENGINE\" \"$@\" --metrics\n");
        QCOMPARE(answerTo(QString(200, u'x')), m_reply);
        int before = m_folders->tokensRead();
        QVERIFY(before > 200);
        for (const QString& prompt : {u"Again"_s, u"And once more"_s}) {
            QCOMPARE(answerTo(prompt), m_reply);
            const int read = m_folders->tokensRead() - before;
            before += read;
            // One token a character at most; the reply's last token was said and not read.
            QVERIFY2(read > 0 && read <= prompt.size() + templateTokens + 1,
                     qPrintable(QString::number(read)));
        }
    }

    void theModelGetsTheInstructionsAndTheTurnsSoFar() {
        m_folders->recordPrompts();
        m_chat->begin(u"Speak like a pirate."_s);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QCOMPARE(answerTo(u"Again"_s), m_reply);
        const QByteArray first = instructed("Speak like a pirate.") + turn("Hello");
        QCOMPARE(m_folders->recordedPrompts(),
                 (QByteArrayList{first, first + m_said + "<|im_end|>\n" + turn("Again")}));
    }

    void sessionsKnowNothingOfEachOther() {
        m_folders->recordPrompts();
        m_chat->begin(u"One."_s);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        m_chat->begin(u"Two."_s);
        QCOMPARE(answerTo(u"Ahoy"_s), m_reply);
        QCOMPARE(m_folders->recordedPrompts().value(1), instructed("Two.") + turn("Ahoy"));
    }

    void aSessionThatWasLetGoAnswersToTheEnd() {
        const auto heard = m_chat->ask(u"Hello"_s);
        m_chat->session.reset();
        QCOMPARE(outcomeOf(heard), m_reply);
    }

    void theReplyIsAsLongAsTheOptionsAllow() {
        GenerationOptions options;
        options.maximumResponseTokens = 3;
        options.temperature = 0.1;
        options.sampling = GenerationOptions::Sampling::Greedy;
        QCOMPARE(answerTo(u"Hello"_s, options), u"The quick brown"_s);
    }

    void awkwardTextsReachTheModelUnchanged_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("quotes and backslashes") << u"say \"yes\\no\""_s;
        QTest::newRow("line breaks and tabs") << u"one\n\ttwo\r\nthree"_s;
        QTest::newRow("line separator") << u"one\u2028two\u2029three"_s;
        QTest::newRow("outside the first plane") << u"\U0001F98A \u05e9\u05dc\u05d5\u05dd"_s;
        QTest::newRow("control characters") << u"bell \u0007 escape \u001b end"_s;
    }
    void awkwardTextsReachTheModelUnchanged() {
        QFETCH(QString, text);
        m_folders->recordPrompts();
        m_chat->begin(QString()); // without instructions there is no system message
        QCOMPARE(answerTo(text), m_reply);
        QCOMPARE(m_folders->recordedPrompts(), QByteArrayList{turn(text.toUtf8())});
    }

    void anyThreadMayAsk() {
        std::optional<AsyncStream<TextSnapshot>> reply;
        bool isAvailable = false;
        std::thread([&] {
            isAvailable = m_chat->model.availability().isAvailable();
            reply.emplace(m_chat->model.makeSession(u"Be kind."_s)->streamResponse(u"Hello"_s, {}));
        }).join();
        QVERIFY(isAvailable);
        QCOMPARE(outcomeOf(m_chat->hear(std::move(*reply))), m_reply);
    }

private:
    QString answerTo(const QString& prompt, const GenerationOptions& options = {}) {
        return outcomeOf(m_chat->ask(prompt, options));
    }

    const QByteArray m_said = replyOf(TinyModel::sentence());
    const QString m_reply = QString::fromUtf8(m_said);
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

TELLWICK_TEST(LlamaServerSessionTests, EventLoop)
#include "LlamaServerSessionTests.moc"
