// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

/// The real engine answers one prompt at a time: the newest.
class OneAnswerTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_folders->recordPrompts();
        m_folders->setModel(TinyModel::endless());
        m_chat.emplace(m_folders->paths());
    }

    void aNewPromptEndsTheAnswerUnderWayAndBuildsOnIt() {
        const auto first = m_chat->ask(u"Hello"_s);
        QVERIFY(hasSaid(first, 3));
        const auto second = m_chat->ask(u"Again"_s);
        const QString said = outcomeOf(first);
        QVERIFY2(said.startsWith(u"one two three"), qPrintable(said));
        QVERIFY(everGrew(*first));
        QVERIFY(hasSaid(second, 3));
        QVERIFY(!second->hasEnded);
        QCOMPARE(m_folders->recordedPrompts().value(1),
                 m_helloTurn + said.toUtf8() + "<|im_end|>\n" + turn("Again"));
    }

    void anotherSessionsPromptEndsItToo() {
        const auto first = m_chat->ask(u"Hello"_s);
        QVERIFY(hasSaid(first, 3));
        const auto earlier = m_chat->session;
        m_chat->begin(u"Be brief."_s);
        const auto second = m_chat->ask(u"Ahoy"_s);
        const QString said = outcomeOf(first);
        QVERIFY2(said.startsWith(u"one two three"), qPrintable(said));
        QVERIFY(hasSaid(second, 3));
        QCOMPARE(m_folders->recordedPrompts().value(1), instructed("Be brief.") + turn("Ahoy"));

        // What was said has stayed in its session.
        const auto third = m_chat->hear(earlier->streamResponse(u"Again"_s, {}));
        QVERIFY(!outcomeOf(second).startsWith(u"Error"));
        QVERIFY(hasSaid(third));
        QCOMPARE(m_folders->recordedPrompts().value(2),
                 m_helloTurn + said.toUtf8() + "<|im_end|>\n" + turn("Again"));
    }

    void anAnswerThatNobodyReadsIsEndedToo() {
        m_chat->begin();
        { const auto dropped = m_chat->session->streamResponse(u"Hello"_s, {}); }
        QTRY_COMPARE(m_folders->recordedPrompts().size(), 1);
        QVERIFY(hasSaid(m_chat->ask(u"Again"_s), 3));
        QVERIFY(m_folders->recordedPrompts().value(1).startsWith(m_helloTurn));
    }

    void aPromptThatIsStillWaitingForTheEngineGivesWay() {
        m_folders->setModel(TinyModel::sentence());
        m_folders->setEngineScript("until [ -e '" + m_folders->path(u"go"_s).toUtf8() +
                                   "' ]; do sleep 0.01; done\n" + EngineFolders::realEngine);
        const auto first = m_chat->ask(u"Hello"_s);
        const auto second = m_chat->ask(u"Again"_s);
        QTRY_VERIFY(engineProcess() > 0);
        writeBytes(m_folders->path(u"go"_s), "x");
        QCOMPARE(outcomeOf(first), QString());
        QVERIFY(!first->error);
        QCOMPARE(outcomeOf(second), QString::fromUtf8(replyOf(TinyModel::sentence())));
    }

    void manyPromptsInARowLeaveTheLastOne() {
        QList<std::shared_ptr<Heard>> heard;
        for (int i = 0; i < 20; ++i) {
            heard.append(m_chat->ask(u"Hello"_s));
            if (i % 3 == 0)
                QVERIFY(hasSaid(heard.last()));
            if (i % 5 == 0)
                m_chat->begin();
        }
        const auto last = heard.takeLast();
        QVERIFY(hasSaid(last, 3));
        for (const auto& ended : heard)
            QVERIFY(!outcomeOf(ended).startsWith(u"Error"));
        QVERIFY(!last->hasEnded);
    }

private:
    const QByteArray m_helloTurn = instructed("Be kind.") + turn("Hello");
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

TELLWICK_TEST(OneAnswerTests, EventLoop)
#include "OneAnswerTests.moc"
