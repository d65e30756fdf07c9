// SPDX-License-Identifier: MIT
// The controller and its record in the store: the start, the new chat, and a store that fails.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QDir>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QDateTime atHour(int hour) {
    return {QDate(2026, 3, 1), QTime(hour, 0), Qt::UTC};
}

} // namespace

class ConversationStoreTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_conversation = std::make_unique<Conversation>(); }
    void cleanup() { m_conversation.reset(); }

    void theFirstStartLeavesOneEmptyRecord() {
        conversation().start();
        QVERIFY(controller().messages.value().isEmpty());
        const auto stored = conversation().stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().roles, QStringList());
        QCOMPARE(stored.first().contents, QStringList());
        conversation().quit();
        conversation().start();
        QCOMPARE(conversation().stored().size(), 1);
        QCOMPARE(conversation().stored().first().row, stored.first().row);
    }

    void aConversationIsThereAgainAfterARestart() {
        conversation().start();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi\u2028\U0001F600"_s));
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi\u2028\U0001F600"_s));
        QList<QUuid> identities;
        for (const auto& message : controller().messages.value())
            identities.append(message.id());
        const QStringList contents = conversation().contents();
        conversation().quit();
        conversation().start();
        QCOMPARE(conversation().contents(), contents);
        QCOMPARE(conversation().roles(), u"uaua"_s);
        for (const auto& message : controller().messages.value())
            QVERIFY(!identities.contains(message.id()));
    }

    void theModeAndTheDraftAreNotKept() {
        conversation().start();
        controller().setMode(AppConfig::writingModes().first());
        controller().draft = u"half a sentence"_s;
        controller().availabilityError = u"No model selected."_s;
        conversation().quit();
        conversation().start();
        QVERIFY(!controller().activeMode.value());
        QCOMPARE(controller().draft.value(), QString());
        QVERIFY(!controller().availabilityError.value());
    }

    void theNewestOfThreeRecordsIsLoadedAndTheNextSaveLeavesItAlone() {
        conversation().store({u"user"_s}, {u"ten"_s}, atHour(10));
        conversation().store({u"user"_s}, {u"twelve"_s}, atHour(12));
        conversation().store({u"user"_s}, {u"eleven"_s}, atHour(11));
        conversation().start();
        QCOMPARE(conversation().contents(), QStringList{u"twelve"_s});
        QCOMPARE(conversation().stored().size(), 3); // the load itself does not save
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        const auto stored = conversation().stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().contents, (QStringList{u"twelve"_s, u"Hello"_s, u"Hi"_s}));
    }

    void olderRecordsAreAlsoDeletedByTheAutomaticSave() {
        conversation().store({u"user"_s}, {u"old"_s}, atHour(10));
        conversation().store({u"user"_s}, {u"new"_s}, atHour(12));
        conversation().autosaveDelay = 10ms;
        conversation().start();
        QTRY_COMPARE(conversation().stored().size(), 1);
        QCOMPARE(conversation().stored().first().contents, QStringList{u"new"_s});
    }

    void aStoreOfAnEarlierVersionIsReadAndWritten() {
        QVERIFY(QDir().mkpath(QFileInfo(conversation().file()).path()));
        writeBytes(conversation().file(), {});
        Database::open(conversation().file())
            .execute("CREATE TABLE \"ChatSession\" (\"updatedAt\" TEXT NOT NULL, \"roles\" TEXT "
                     "NOT NULL,"
                     " \"contents\" TEXT NOT NULL); PRAGMA user_version=1;"
                     "INSERT INTO ChatSession VALUES"
                     " ('2026-03-01T12:00:00.123456Z', '[\"user\",\"assistant\"]', "
                     "'[\"Hello\",\"Hi\"]')");
        conversation().start();
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
        QVERIFY(conversation().talk(u"Again"_s, u"Yes"_s));
        const auto stored = conversation().stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().contents, (QStringList{u"Hello"_s, u"Hi"_s, u"Again"_s, u"Yes"_s}));
        QCOMPARE(stored.first().row, 1);
    }

    void aRecordOfUnequalListsLoadsWhatPairs() {
        conversation().store({u"user"_s, u"assistant"_s, u"user"_s}, {u"a"_s, u"b"_s}, atHour(1));
        conversation().start();
        QCOMPARE(conversation().roles(), u"ua"_s);
        QCOMPARE(conversation().contents(), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(conversation().stored().first().roles.size(), 3);
    }

    void aStoredRoleOtherThanUserIsTheAssistants() {
        conversation().store({u"system"_s, u"User"_s, u"user"_s}, {u"a"_s, u"b"_s, u"c"_s},
                             atHour(1));
        conversation().start();
        QCOMPARE(conversation().roles(), u"aau"_s);
    }

    void loadingChangesNothingInTheStore() {
        conversation().store({u"user"_s}, {u"a"_s}, atHour(1));
        const QByteArray before = bytesOf(conversation().file());
        conversation().start();
        QVERIFY(!conversation().context().hasChanges());
        conversation().quit();
        QCOMPARE(bytesOf(conversation().file()), before);
    }

    void newChatEmptiesTheSameRecord() {
        conversation().start();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        const auto before = conversation().stored().first();
        controller().newChat();
        const auto after = conversation().stored();
        QCOMPARE(after.size(), 1);
        QCOMPARE(after.first().row, before.row);
        QCOMPARE(after.first().roles, QStringList());
        QCOMPARE(after.first().contents, QStringList());
        QVERIFY(after.first().updatedAt > before.updatedAt);
        QVERIFY(!bytesOf(conversation().file()).contains("Hello")); // not even as a leftover
    }

    void aRecordFromTheFutureStillMovesOn() {
        const QDateTime future = QDateTime::currentDateTimeUtc().addYears(30);
        conversation().store({u"user"_s}, {u"a"_s}, future);
        conversation().start();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        const QDateTime afterTurn = conversation().stored().first().updatedAt;
        QVERIFY(afterTurn > future);
        controller().newChat();
        QVERIFY(conversation().stored().first().updatedAt > afterTurn);
    }

    void aStoreThatCannotBeReadLeavesTheRunWithoutARecord_data() {
        QTest::addColumn<QByteArray>("sql");
        QTest::newRow("no database") << QByteArray();
        QTest::newRow("a later version") << QByteArray("PRAGMA user_version=2; COMMIT");
        QTest::newRow("a record that cannot be read")
            << QByteArray("INSERT INTO ChatSession VALUES ('now', '[]', '[]'); COMMIT");
    }

    void aStoreThatCannotBeReadLeavesTheRunWithoutARecord() {
        QFETCH(QByteArray, sql);
        conversation().store({u"user"_s}, {u"a"_s});
        if (sql.isEmpty())
            writeBytes(conversation().file(), QByteArray("Dear diary,\n").repeated(100));
        else
            conversationStore(conversation().folder()).openForWriting().execute(sql);
        const QByteArray before = bytesOf(conversation().file());
        conversation().start();
        QVERIFY(controller().messages.value().isEmpty());
        QVERIFY(!controller().availabilityError.value());
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        QCOMPARE(conversation().contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
        controller().newChat();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        conversation().quit();
        QCOMPARE(bytesOf(conversation().file()), before);
    }

    void aSaveThatFailsIsIgnoredAndCaughtUpWith() {
        conversation().start();
        QVERIFY(conversation().talk(u"one"_s, u"1"_s));
        {
            Database other =
                conversationStore(conversation().folder()).openForWriting(); // holds the lock
            QVERIFY(conversation().talk(u"two"_s, u"2"_s));
            QVERIFY(!controller().availabilityError.value());
            QCOMPARE(conversation().contents().size(), 4);
        }
        QCOMPARE(conversation().stored().first().contents.size(), 2);
        conversation().quit(); // what is pending is written at the end
        QCOMPARE(conversation().stored().first().contents,
                 (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
    }

    void aStoreThatNeverCanBeWrittenDisturbsNothing() {
        QFile inTheWay(conversation().folder());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        conversation().start();
        QVERIFY(conversation().talk(u"Hello"_s, u"Hi"_s));
        controller().newChat();
        QVERIFY(controller().messages.value().isEmpty());
        conversation().quit();
        QCOMPARE(inTheWay.size(), 0);
    }

    void twoControllersOverOneStoreLoseNothing() {
        conversation().start();
        const auto container = conversationStore(conversation().folder());
        ModelContext otherContext(container);
        const auto other = conversation().makeController(otherContext);
        QVERIFY(conversation().talk(u"ours"_s, u"1"_s));
        other->draft = u"theirs"_s;
        other->send();
        QTRY_COMPARE(conversation().model.turns.size(), std::size_t(2));
        conversation().model.turns.back().end();
        QTRY_VERIFY(!other->isGenerating.value());
        QStringList first;
        for (const auto& session : conversation().stored())
            first.append(session.contents.first());
        QCOMPARE(first, (QStringList{u"theirs"_s, u"ours"_s}));
    }

    void startingFromALongConversationIsQuick() {
        QStringList roles;
        QStringList contents;
        for (int i = 0; i < 1000; ++i) {
            roles << u"user"_s << u"assistant"_s;
            contents << QString(100, u'q') << QString(900, u'a');
        }
        conversation().store(roles, contents, atHour(1));
        const auto container = conversationStore(conversation().folder());
        QBENCHMARK {
            ModelContext context(container);
            QCOMPARE(context.fetch(ChatSession::newestFirst()).first()->messages().size(), 2000);
        }
    }

private:
    Conversation& conversation() { return *m_conversation; }
    ChatViewModel& controller() { return *m_conversation->controller; }

    std::unique_ptr<Conversation> m_conversation;
};

TELLWICK_TEST(ConversationStoreTests, EventLoop)
#include "ConversationStoreTests.moc"
