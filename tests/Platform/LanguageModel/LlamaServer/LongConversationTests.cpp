// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

const QString tooLong = u"Error: This message is longer than the on-device model can read at once. "
                        u"Shorten it, or send it in parts."_s;

/// The names of the turns in a prompt that the model got: the first letters of what was asked.
QString turnsIn(const QByteArray& prompt) {
    QString turns;
    const QByteArray mark = "<|im_start|>user\n";
    for (qsizetype at = prompt.indexOf(mark); at >= 0; at = prompt.indexOf(mark, at + 1))
        turns += QLatin1Char(prompt.at(at + mark.size()));
    return turns;
}

} // namespace

/// Conversations with the real engine that are longer than the model can hold.
class LongConversationTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_folders->recordPrompts();
    }

    // A letter is a token of these models.

    void theOldestTurnsLeaveBeforeARepliesRoomIsUsedUp() {
        talkWithLittleMemory(); // the context is 2,048 tokens
        QString asked;
        QString previous;
        int departures = 0;
        for (char16_t name = u'a'; name < u'm'; ++name) {
            asked += QChar(name);
            QCOMPARE(answerTo(QString(300, name)), m_reply);
            const QByteArray prompt = m_folders->recordedPrompts().last();
            QVERIFY(prompt.startsWith(instructed("Be kind.") + "<|im_start|>user\n"));
            const QString turns = turnsIn(prompt);
            QVERIFY2(asked.endsWith(turns), qPrintable(turns));
            QVERIFY2(turns.size() * 300 < 2'048 * 3 / 4, qPrintable(turns));
            departures += turns.size() <= previous.size() ? 1 : 0;
            previous = turns;
        }
        QVERIFY(departures > 0);
        // Several leave at a time: each time the engine reads anew what is left.
        QVERIFY(departures <= 12 / 2);
    }

    void theOldestTurnsLeaveWhereTheEngineHoldsLessThanItWasGiven() {
        TinyModel model = TinyModel::sentence();
        model.contextLength = 512;
        talkTo(model);
        for (char16_t name = u'a'; name < u'g'; ++name)
            QCOMPARE(answerTo(QString(150, name)), m_reply);
        const QByteArray prompt = m_folders->recordedPrompts().last();
        QVERIFY(prompt.startsWith(instructed("Be kind.")));
        QVERIFY(turnsIn(prompt).endsWith(u"f"));
        QVERIFY(turnsIn(prompt).size() < 4);
    }

    void aReplyGoesOnAsTheOldestTurnsLeaveForIt() {
        // Whole words, so that what was said takes no more tokens when it is read again.
        const TinyModel model{
            .tokens = {" one", " two", " three", " four"}, .isEndless = true, .contextLength = 512};
        talkTo(model);
        GenerationOptions brief;
        brief.maximumResponseTokens = 5;
        QVERIFY(!answerTo(QString(200, u'x'), brief).startsWith(u"Error"));
        const auto heard = m_chat->ask(u"Hello"_s);
        const QString reply = outcomeOf(heard);
        // With the turn before it in the context there would be room for half of it.
        QVERIFY2(heard->elements.size() > 400 && heard->elements.size() < 512,
                 qPrintable(QString::number(heard->elements.size())));
        QVERIFY(everGrew(*heard));
        const QString round = QString::fromUtf8(replyOf(model));
        QCOMPARE(reply, round.repeated(200).left(reply.size()));
    }

    void aReplyThatFillsTheContextEndsThereAndTheNextTurnWorks() {
        TinyModel model = TinyModel::endless();
        model.contextLength = 512;
        talkTo(model);
        for (const QString& prompt : {u"Hello"_s, u"Again"_s}) {
            const auto heard = m_chat->ask(prompt);
            QVERIFY(!outcomeOf(heard).startsWith(u"Error"));
            QVERIFY(heard->elements.size() > 300);
            QVERIFY(heard->elements.size() < 512);
        }
    }

    void aPromptThatAloneIsTooLongSaysWhatToDoAndTheSessionGoesOn_data() {
        QTest::addColumn<int>("length");
        QTest::newRow("longer than the context") << 20'000;
        QTest::newRow("with no room left for a reply") << 2'000;
    }
    void aPromptThatAloneIsTooLongSaysWhatToDoAndTheSessionGoesOn() {
        QFETCH(int, length);
        talkWithLittleMemory();
        QCOMPARE(answerTo(QString(length, u'x')), tooLong);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QCOMPARE(answerTo(QString(length, u'x')), tooLong);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
    }

private:
    void talkTo(const TinyModel& model) {
        m_folders->setModel(model);
        m_chat.emplace(m_folders->paths());
    }
    void talkWithLittleMemory() {
        LlamaServerPaths paths = m_folders->paths();
        paths.memory = &EngineFolders::littleMemory;
        m_chat.emplace(paths);
    }
    QString answerTo(const QString& prompt, const GenerationOptions& options = {}) {
        return outcomeOf(m_chat->ask(prompt, options));
    }

    const QString m_reply = QString::fromUtf8(replyOf(TinyModel::sentence()));
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

TELLWICK_TEST(LongConversationTests, EventLoop)
#include "LongConversationTests.moc"
