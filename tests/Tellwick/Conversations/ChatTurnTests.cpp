// SPDX-License-Identifier: MIT
// What a turn does from its start to its end, and what it leaves in the store.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Notifications.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using Role = ChatMessage::Role;

class ChatTurnTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m.emplace();
        m->start();
    }
    void cleanup() { m.reset(); }

    void theReplyIsReplacedByEachSnapshot() {
        const auto& turn = m->ask(u"Hello"_s);
        for (const QString& snapshot : {u"Hel"_s, u"Hello"_s, u"Hello there"_s}) {
            turn.say(snapshot);
            QVERIFY(m->waitForReply(snapshot));
            QVERIFY(vm().isGenerating.value());
        }
        turn.end();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, u"Hello there"_s}));
        QCOMPARE(m->roles(), u"ua"_s);
    }

    void theSystemPromptIsThatOfTheModeActiveWhenTheTurnStarts() {
        const auto summarise = AppConfig::writingModes()[1];
        const QString prompt = AppConfig::defaultSystemPrompt();
        vm().setMode(summarise);
        m->ask(u"one"_s).end();
        QVERIFY(m->settle());
        vm().newChat();
        vm().setMode(summarise);
        QVERIFY(m->send(u"two"_s));
        vm().clearMode(); // before the turn has started
        QTRY_COMPARE(m->model.turns.size(), std::size_t(2));
        QCOMPARE(m->model.instructions,
                 (QStringList{prompt + u"\n\n"_s + summarise.systemPrompt, prompt}));
    }

    void aTurnIsStoredAtItsEndAndNotBefore() {
        const auto& turn = m->ask(u"Hello"_s, u"Hi"_s);
        QCOMPARE(storedContents(), QStringList());
        QVERIFY(!m->context().hasChanges());
        const QDateTime before = m->stored().first().updatedAt;
        turn.end();
        QVERIFY(m->settle());
        const auto stored = m->stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().roles, (QStringList{u"user"_s, u"assistant"_s}));
        QCOMPARE(stored.first().contents, (QStringList{u"Hello"_s, u"Hi"_s}));
        QVERIFY(stored.first().updatedAt > before);
    }

    void stoppedBeforeTheFirstElementAnEmptyReplyIsStored_data() {
        QTest::addColumn<bool>("hasBegun");
        QTest::newRow("the model has been asked") << true;
        QTest::newRow("not yet") << false;
    }

    void stoppedBeforeTheFirstElementAnEmptyReplyIsStored() {
        QFETCH(bool, hasBegun);
        if (hasBegun)
            m->ask(u"Hello"_s);
        else
            QVERIFY(m->send(u"Hello"_s));
        vm().stop();
        vm().stop();
        QVERIFY(vm().isGenerating.value()); // until the turn itself has run
        QVERIFY(m->settle());
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, {}}));
        QCOMPARE(m->stored().first().roles, (QStringList{u"user"_s, u"assistant"_s}));
        QTRY_COMPARE(m->model.turns.size(), std::size_t(1)); // asked all the same
        QVERIFY(m->talk(u"Again"_s, u"Hi"_s));
    }

    void stoppedMidwayTheLastSnapshotStays() {
        const auto& turn = m->ask(u"Hello"_s, u"Once upon"_s);
        vm().stop();
        QVERIFY(m->settle());
        turn.say(u"Once upon a time");
        turn.fail();
        QVERIFY(m->drain());
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, u"Once upon"_s}));
        QCOMPARE(storedContents(), (QStringList{u"Hello"_s, u"Once upon"_s}));
    }

    void elementsThatWaitWhenTheTurnIsStoppedAreNotApplied() {
        const auto& turn = m->ask(u"Hello"_s);
        for (int i = 0; i < 100; ++i)
            turn.say(u"too late");
        vm().stop();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, {}}));
    }

    void afterAFailureTheNextTurnStartsANewSession() {
        QVERIFY(m->talk(u"one"_s, u"1"_s));
        m->ask(u"two"_s).fail();
        QVERIFY(m->settle());
        QCOMPARE(m->ask(u"three"_s).session, 1);
    }

    void afterAStopTheSessionGoesOn() {
        m->ask(u"one"_s);
        vm().stop();
        QVERIFY(m->settle());
        QCOMPARE(m->ask(u"two"_s).session, 0);
    }

    void aSendWhileAnAbandonedReplyStillStreamsIsATurnOfItsOwn() {
        const auto& abandoned = m->ask(u"one"_s, u"1"_s);
        vm().stop();
        QVERIFY(m->settle());
        const auto& next = m->ask(u"two"_s);
        abandoned.say(u"1 and more");
        next.say(u"2");
        abandoned.say(u"1 and still more");
        QVERIFY(m->waitForReply(u"2"_s));
        abandoned.fail();
        next.say(u"2!");
        next.end();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2!"_s}));
        QCOMPARE(storedContents(), m->contents());
    }

    void newChatWhileGeneratingEmptiesEverythingAndRefusesUntilTheTurnHasEnded() {
        QVERIFY(m->talk(u"one"_s, u"1"_s));
        m->ask(u"two"_s, u"2"_s);
        vm().newChat();
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(vm().isGenerating.value());
        QCOMPARE(storedContents(), QStringList()); // written at once
        QVERIFY(m->send(u"three"_s));
        QCOMPARE(vm().draft.value(), u"three"_s);
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(m->settle());
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(m->talk(u"three"_s, u"3"_s));
        QCOMPARE(m->contents(), (QStringList{u"three"_s, u"3"_s}));
    }

    void afterANewChatTheOldTurnWritesNothing_data() {
        QTest::addColumn<bool>("hasFailed");
        QTest::newRow("elements wait") << false;
        QTest::newRow("a failure waits") << true;
    }

    void afterANewChatTheOldTurnWritesNothing() {
        QFETCH(bool, hasFailed);
        const auto& turn = m->ask(u"one"_s, u"1"_s);
        turn.say(u"1 and more");
        if (hasFailed)
            turn.fail();
        vm().newChat();
        turn.say(u"1 and still more");
        QVERIFY(m->settle());
        QVERIFY(vm().messages.value().isEmpty());
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
        const auto& turn = m->ask(u"one"_s);
        QList<ChatMessage> others;
        for (int i = 0; i < count; ++i)
            others.append(
                ChatMessage(i % 2 ? Role::assistant : Role::user, TextSnapshot(u"other")));
        vm().messages = others;
        turn.say(u"1");
        if (fails)
            turn.fail();
        else
            turn.end();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), QStringList(count, u"other"_s));
    }

    void quittingInTheMiddleOfATurnLosesTheTurnAndNothingElse() {
        QVERIFY(m->talk(u"one"_s, u"1"_s));
        const auto before = m->stored().first();
        const auto& turn = m->ask(u"two"_s, u"2"_s);
        m->quit();
        turn.say(u"2 and more"); // the model speaks on, to nobody
        turn.end();
        QVERIFY(m->drain());
        const auto after = m->stored();
        QCOMPARE(after.size(), 1);
        QCOMPARE(after.first().contents, before.contents);
        QVERIFY(after.first().updatedAt == before.updatedAt);
    }

    void theNextTurnMayBeginInTheNotificationOfTheEnd() {
        const auto notifier = vm().isGenerating.addNotifier([&] {
            if (!vm().isGenerating.value() && vm().messages.value().size() == 2) {
                m->send(u"two"_s);
                m->send(u"refused"_s);
            }
        });
        const auto& first = m->ask(u"one"_s);
        first.say(u"1");
        first.end();
        QTRY_COMPARE(m->model.turns.size(), std::size_t(2));
        QCOMPARE(vm().draft.value(), u"refused"_s);
        // The second turn is still in hand: it can be stopped.
        m->model.turns.back().say(u"2");
        QVERIFY(m->waitForReply(u"2"_s));
        vm().stop();
        QVERIFY(m->settle());
        QCOMPARE(m->contents(), (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
        QCOMPARE(storedContents(), m->contents());
    }

    void manyTurnsInARowNeverMixTheirReplies() {
        QStringList expected;
        for (int i = 0; i < 50; ++i) {
            const QString text = QString::number(i);
            const auto& turn = m->ask(text);
            turn.say(u"reply "_s + text);
            if (i % 3 == 0) {
                QVERIFY(m->waitForReply(u"reply "_s + text));
                vm().stop();
            } else {
                turn.end();
            }
            QVERIFY(m->settle());
            expected << text << u"reply "_s + text;
        }
        QCOMPARE(m->contents(), expected);
        m->quit();
        m->start();
        QCOMPARE(m->contents(), expected);
    }

    void aReplyOfAMillionCharactersInAHundredThousandElements() {
        constexpr int elements = 100'000;
        const auto& turn = m->ask(u"Tell me everything"_s);
        const Notifications notifications(vm().messages);
        const auto* const place = vm().messages.value().constData();
        TextBuilder builder;
        for (int i = 0; i < elements; ++i) {
            builder.append(u"0123456789");
            turn.reply.yield(builder.text());
        }
        turn.end();
        QVERIFY(m->settle());
        QCOMPARE(notifications.count(), elements);          // nothing is left out or gathered
        QCOMPARE(vm().messages.value().constData(), place); // and the list was never copied
        QCOMPARE(vm().messages.value().last().content.size(), 10 * elements);
        QVERIFY(storedContents().last() == builder.text().view());
    }

private:
    ChatViewModel& vm() { return *m->controller; }
    QStringList storedContents() { return m->stored().first().contents; }

    std::optional<Conversation> m;
};

TELLWICK_TEST(ChatTurnTests, EventLoop)
#include "ChatTurnTests.moc"
