// SPDX-License-Identifier: MIT
// What a turn does from its start to its end, and what it leaves in the store.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Role = ChatMessage::Role;

class ChatTurnTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_conversation = std::make_unique<Conversation>();
        m_conversation->start();
    }
    void cleanup() { m_conversation.reset(); }

    void theReplyIsReplacedByEachSnapshot() {
        const auto& turn = conversation().ask(u"Hello"_s);
        for (const QString& snapshot : {u"Hel"_s, u"Hello"_s, u"Hello there"_s}) {
            turn.say(snapshot);
            QVERIFY(conversation().waitForReply(snapshot));
            QVERIFY(controller().isGenerating.value());
        }
        turn.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, u"Hello there"_s}));
        QCOMPARE(conversation().roles(), u"ua"_s);
    }

    void theSystemPromptIsThatOfTheModeActiveWhenTheTurnStarts() {
        const auto summarise = AppConfig::writingModes()[1];
        const QString prompt = AppConfig::defaultSystemPrompt();
        controller().setMode(summarise);
        conversation().ask(u"one"_s).end();
        QVERIFY(conversation().settle());
        controller().newChat();
        controller().setMode(summarise);
        QVERIFY(conversation().send(u"two"_s));
        controller().clearMode(); // before the turn has started
        QTRY_COMPARE(conversation().model.turns.size(), std::size_t(2));
        QCOMPARE(conversation().model.instructions,
                 (QStringList{prompt + u"\n\n"_s + summarise.systemPrompt, prompt}));
    }

    void aTurnIsStoredAtItsEndAndNotBefore() {
        const auto& turn = conversation().ask(u"Hello"_s);
        turn.say(u"Hi");
        QVERIFY(conversation().waitForReply(u"Hi"_s));
        QCOMPARE(storedContents(), QStringList());
        QVERIFY(!conversation().context().hasChanges());
        const QDateTime before = conversation().stored().first().updatedAt;
        turn.end();
        QVERIFY(conversation().settle());
        const auto stored = conversation().stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().roles, (QStringList{u"user"_s, u"assistant"_s}));
        QCOMPARE(stored.first().contents, (QStringList{u"Hello"_s, u"Hi"_s}));
        QVERIFY(stored.first().updatedAt > before);
    }

    void stoppedBeforeTheFirstElementAnEmptyReplyIsStored() {
        conversation().ask(u"Hello"_s);
        controller().stop();
        QVERIFY(controller().isGenerating.value()); // until the turn itself has run
        QVERIFY(conversation().settle());
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, {}}));
        QCOMPARE(conversation().stored().first().roles, (QStringList{u"user"_s, u"assistant"_s}));
    }

    void stoppedBeforeTheTurnHasStartedItEndsAllTheSame() {
        QVERIFY(conversation().send(u"Hello"_s));
        controller().stop();
        controller().stop();
        QVERIFY(conversation().settle());
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, {}}));
        QTRY_COMPARE(conversation().model.turns.size(), std::size_t(1)); // asked all the same
        QVERIFY(conversation().talk(u"Again"_s, u"Hi"_s));
    }

    void stoppedMidwayTheLastSnapshotStays() {
        const auto& turn = conversation().ask(u"Hello"_s);
        turn.say(u"Once upon");
        QVERIFY(conversation().waitForReply(u"Once upon"_s));
        controller().stop();
        QVERIFY(conversation().settle());
        turn.say(u"Once upon a time");
        turn.fail();
        QVERIFY(conversation().drain());
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, u"Once upon"_s}));
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, u"Once upon"_s}));
    }

    void elementsThatWaitWhenTheTurnIsStoppedAreNotApplied() {
        const auto& turn = conversation().ask(u"Hello"_s);
        for (int i = 0; i < 100; ++i)
            turn.say(u"too late");
        controller().stop();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, {}}));
    }

    void aFailureReplacesTheReplyAndIsStored() {
        const auto& turn = conversation().ask(u"Hello"_s);
        turn.say(u"Once upon");
        QVERIFY(conversation().waitForReply(u"Once upon"_s));
        turn.fail();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(),
                 (QStringList{u"Hello"_s, u"Error: The model is tired."_s}));
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, u"Error: The model is tired."_s}));
        QVERIFY(!controller().availabilityError.value());
    }

    void aFailureWithoutAnySnapshotIsShownToo() {
        conversation().ask(u"Hello"_s).fail();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(),
                 (QStringList{u"Hello"_s, u"Error: The model is tired."_s}));
    }

    void afterAFailureTheNextTurnStartsANewSession() {
        QVERIFY(conversation().talk(u"one"_s, u"1"_s));
        conversation().ask(u"two"_s).fail();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().ask(u"three"_s).session, 1);
    }

    void afterAStopTheSessionGoesOn() {
        conversation().ask(u"one"_s);
        controller().stop();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().ask(u"two"_s).session, 0);
    }

    void aSendWhileAnAbandonedReplyStillStreamsIsATurnOfItsOwn() {
        const auto& abandoned = conversation().ask(u"one"_s);
        abandoned.say(u"1");
        QVERIFY(conversation().waitForReply(u"1"_s));
        controller().stop();
        QVERIFY(conversation().settle());
        const auto& next = conversation().ask(u"two"_s);
        abandoned.say(u"1 and more");
        next.say(u"2");
        abandoned.say(u"1 and still more");
        QVERIFY(conversation().waitForReply(u"2"_s));
        abandoned.fail();
        next.say(u"2!");
        next.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2!"_s}));
        QCOMPARE(storedContents(), conversation().contents());
    }

    void newChatWhileGeneratingEmptiesEverythingAndRefusesUntilTheTurnHasEnded() {
        QVERIFY(conversation().talk(u"one"_s, u"1"_s));
        const auto before = conversation().stored().first();
        const auto& turn = conversation().ask(u"two"_s);
        turn.say(u"2");
        QVERIFY(conversation().waitForReply(u"2"_s));
        controller().newChat();
        QVERIFY(controller().messages.value().isEmpty());
        QVERIFY(controller().isGenerating.value());
        QCOMPARE(storedContents(), QStringList()); // written at once
        QVERIFY(conversation().send(u"three"_s));
        QCOMPARE(controller().draft.value(), u"three"_s);
        QVERIFY(controller().messages.value().isEmpty());
        QVERIFY(conversation().settle());
        QVERIFY(controller().messages.value().isEmpty());
        const auto after = conversation().stored();
        QCOMPARE(after.size(), 1);
        QCOMPARE(after.first().row, before.row);
        QCOMPARE(after.first().roles, QStringList());
        QCOMPARE(after.first().contents, QStringList());
        QVERIFY(after.first().updatedAt > before.updatedAt);
        QVERIFY(conversation().talk(u"three"_s, u"3"_s));
        QCOMPARE(conversation().contents(), (QStringList{u"three"_s, u"3"_s}));
    }

    void afterANewChatTheOldTurnWritesNothing_data() {
        QTest::addColumn<bool>("hasFailed");
        QTest::newRow("elements wait") << false;
        QTest::newRow("a failure waits") << true;
    }

    void afterANewChatTheOldTurnWritesNothing() {
        QFETCH(bool, hasFailed);
        const auto& turn = conversation().ask(u"one"_s);
        turn.say(u"1");
        QVERIFY(conversation().waitForReply(u"1"_s));
        turn.say(u"1 and more");
        if (hasFailed)
            turn.fail();
        controller().newChat();
        turn.say(u"1 and still more");
        QVERIFY(conversation().settle());
        QVERIFY(controller().messages.value().isEmpty());
        QCOMPARE(storedContents(), QStringList());
    }

    // The list of messages may be set from outside at any time; positions then tell nothing any
    // more.
    void anOldTurnTouchesNoMessageThatIsNotItsReply_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("fails");
        for (const bool fails : {false, true})
            for (const int count : {0, 1, 2, 3})
                QTest::addRow("%d messages, %s", count, fails ? "a failure" : "an element")
                    << count << fails;
    }

    void anOldTurnTouchesNoMessageThatIsNotItsReply() {
        QFETCH(int, count);
        QFETCH(bool, fails);
        const auto& turn = conversation().ask(u"one"_s);
        QList<ChatMessage> others;
        for (int i = 0; i < count; ++i)
            others.append(
                ChatMessage(i % 2 ? Role::assistant : Role::user, TextSnapshot(u"other")));
        controller().messages = others;
        turn.say(u"1");
        if (fails)
            turn.fail();
        else
            turn.end();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), QStringList(count, u"other"_s));
    }

    void quittingInTheMiddleOfATurnLosesTheTurnAndNothingElse() {
        QVERIFY(conversation().talk(u"one"_s, u"1"_s));
        const auto before = conversation().stored().first();
        const auto& turn = conversation().ask(u"two"_s);
        turn.say(u"2");
        QVERIFY(conversation().waitForReply(u"2"_s));
        conversation().quit();
        turn.say(u"2 and more"); // the model speaks on, to nobody
        turn.end();
        QVERIFY(conversation().drain());
        const auto after = conversation().stored();
        QCOMPARE(after.size(), 1);
        QCOMPARE(after.first().contents, before.contents);
        QVERIFY(after.first().updatedAt == before.updatedAt);
    }

    void theNextTurnMayBeginInTheNotificationOfTheEnd() {
        const auto notifier = controller().isGenerating.addNotifier([&] {
            if (!controller().isGenerating.value() && controller().messages.value().size() == 2)
                conversation().send(u"two"_s);
        });
        const auto& first = conversation().ask(u"one"_s);
        first.say(u"1");
        first.end();
        QTRY_COMPARE(conversation().model.turns.size(), std::size_t(2));
        QVERIFY(controller().isGenerating.value());
        // The second turn is still in hand: it can be stopped.
        conversation().model.turns.back().say(u"2");
        QVERIFY(conversation().waitForReply(u"2"_s));
        controller().stop();
        QVERIFY(conversation().settle());
        QCOMPARE(conversation().contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
        QCOMPARE(storedContents(), conversation().contents());
    }

    void manyTurnsInARowNeverMixTheirReplies() {
        QStringList expected;
        for (int i = 0; i < 50; ++i) {
            const QString text = QString::number(i);
            const auto& turn = conversation().ask(text);
            turn.say(u"reply "_s + text);
            if (i % 3 == 0) {
                QVERIFY(conversation().waitForReply(u"reply "_s + text));
                controller().stop();
            } else {
                turn.end();
            }
            QVERIFY(conversation().settle());
            expected << text << u"reply "_s + text;
        }
        QCOMPARE(conversation().contents(), expected);
        conversation().quit();
        conversation().start();
        QCOMPARE(conversation().contents(), expected);
    }

    void aReplyOfAMillionCharactersInAHundredThousandElements() {
        constexpr int elements = 100'000;
        const auto& turn = conversation().ask(u"Tell me everything"_s);
        const Notifications notifications(controller().messages);
        const auto* const place = controller().messages.value().constData();
        QElapsedTimer timer;
        timer.start();
        TextBuilder builder;
        for (int i = 0; i < elements; ++i) {
            builder.append(u"0123456789");
            turn.reply.yield(builder.text());
        }
        turn.end();
        QVERIFY(conversation().settle());
        qInfo("%d elements in %lld ms", elements, static_cast<long long>(timer.elapsed()));
        QCOMPARE(notifications.count(), elements); // nothing is left out or gathered
        QCOMPARE(controller().messages.value().constData(), place); // and the list was never copied
        QCOMPARE(controller().messages.value().last().content.size(), 10 * elements);
        QVERIFY(storedContents().last() == builder.text().view());
    }

private:
    Conversation& conversation() { return *m_conversation; }
    ChatViewModel& controller() { return *m_conversation->controller; }
    QStringList storedContents() { return conversation().stored().first().contents; }

    std::unique_ptr<Conversation> m_conversation;
};

TELLWICK_TEST(ChatTurnTests, EventLoop)
#include "ChatTurnTests.moc"
