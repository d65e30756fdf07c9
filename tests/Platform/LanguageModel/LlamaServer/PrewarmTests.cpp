// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

/// Getting ready for a turn that is about to come, with the real engine.
class PrewarmTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_chat.emplace(m_folders->paths());
    }

    void theEngineReadsTheInstructionsAheadAndTheTurnOnlyWhatIsNew() {
        m_folders->setEngineScript("exec \"$ENGINE\" \"$@\" --metrics\n");
        m_chat->begin(QString(300, u'x'));
        QCOMPARE(engineProcess(), qint64{0});
        m_chat->session->prewarm();
        QTRY_VERIFY_WITH_TIMEOUT(m_folders->tokensRead() > 300, 30'000);
        const int ahead = m_folders->tokensRead();
        QCOMPARE(outcomeOf(m_chat->ask(u"Hello"_s)), m_reply);
        const int read = m_folders->tokensRead() - ahead;
        QVERIFY2(read > 0 && read < 40, qPrintable(QString::number(read)));
    }

    void anotherSessionOfTheSameInstructionsGainsFromItToo() {
        m_folders->setEngineScript("exec \"$ENGINE\" \"$@\" --metrics\n");
        const QString instructions(300, u'x');
        m_chat->model.makeSession(instructions)->prewarm();
        QTRY_VERIFY_WITH_TIMEOUT(m_folders->tokensRead() > 300, 30'000);
        const int ahead = m_folders->tokensRead();
        m_chat->begin(instructions);
        QCOMPARE(outcomeOf(m_chat->ask(u"Hello"_s)), m_reply);
        QVERIFY(m_folders->tokensRead() - ahead < 40);
    }

    void theTurnsSoFarAreReadAheadWithThem() {
        m_folders->recordPrompts();
        m_chat->begin();
        QCOMPARE(outcomeOf(m_chat->ask(u"Hello"_s)), m_reply);
        m_chat->session->prewarm();
        QTRY_COMPARE(m_folders->recordedPrompts().size(), 2);
        QCOMPARE(m_folders->recordedPrompts().at(1), instructed("Be kind.") + turn("Hello") +
                                                         m_reply.toUtf8() + "<|im_end|>\n" +
                                                         turn(""));
        // It is no turn of the conversation.
        QCOMPARE(outcomeOf(m_chat->ask(u"Again"_s)), m_reply);
        QVERIFY(m_folders->recordedPrompts().last().endsWith("<|im_end|>\n" + turn("Again")));
        QCOMPARE(m_folders->recordedPrompts().last().count("<|im_start|>user"), 2);
    }

    void anAnswerUnderWayIsLeftAlone() {
        m_folders->setModel(TinyModel::endless());
        m_folders->recordPrompts();
        const auto heard = m_chat->ask(u"Hello"_s);
        QVERIFY(hasSaid(heard));
        m_chat->session->prewarm();
        m_chat->model.makeSession(u"Be brief."_s)->prewarm();
        QVERIFY(hasSaid(heard, heard->elements.size() + 20));
        QVERIFY(!heard->hasEnded);
        QCOMPARE(m_folders->recordedPrompts().size(), 1);
    }

    void whatNobodyReadsIsAnsweredToItsEndAndRemembered() {
        m_folders->recordPrompts();
        m_chat->begin();
        { const auto dropped = m_chat->session->streamResponse(u"Hello"_s, {}); }
        QTRY_COMPARE(m_folders->recordedPrompts().size(), 1);
        // Does nothing until the answer has come to its end.
        const auto isPrewarmed = [&] {
            m_chat->session->prewarm();
            return m_folders->recordedPrompts().size() > 1;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isPrewarmed(), 30'000);
        QCOMPARE(m_folders->recordedPrompts().at(1), instructed("Be kind.") + turn("Hello") +
                                                         m_reply.toUtf8() + "<|im_end|>\n" +
                                                         turn(""));
    }

    void unusedTheEngineSleepsAndEndsAsEver() {
        m_chat.emplace(m_folders->paths(), EngineLimits{.idleTime = std::chrono::seconds(1)});
        m_chat->begin();
        m_chat->session->prewarm();
        const auto isAsleep = [&] {
            return m_folders->get("/props").replace(" ", "").contains("\"is_sleeping\":true");
        };
        QTRY_VERIFY_WITH_TIMEOUT(isAsleep(), 30'000);
        const qint64 engine = engineProcess();
        m_chat.reset();
        QTRY_VERIFY(!isRunning(engine));
    }

    void aFaultIsToldByTheTurnAlone() {
        m_folders->setEngineScript("exit 127\n");
        m_chat->begin();
        m_chat->session->prewarm();
        QCOMPARE(outcomeOf(m_chat->ask(u"Hello"_s)),
                 u"Error: The program that runs the on-device model could not be started."_s);
    }

private:
    const QString m_reply = QString::fromUtf8(replyOf(TinyModel::sentence()));
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

TELLWICK_TEST(PrewarmTests, EventLoop)
#include "PrewarmTests.moc"
