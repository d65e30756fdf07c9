// SPDX-License-Identifier: MIT
// The controller and its record in the store: the start, the new chat, and a store that fails.
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QTimeZone>

using namespace platform;
using namespace tellwick;
using namespace tests;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QDateTime atHour(int hour) {
    return {QDate(2026, 3, 1), QTime(hour, 0), QTimeZone::utc()};
}

} // namespace

class ConversationStoreTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theFirstStartLeavesOneEmptyRecord() {
        m->start();
        QVERIFY(vm().messages.value().isEmpty());
        const auto stored = m->stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().roles, QStringList());
        QCOMPARE(stored.first().contents, QStringList());
        m->quit();
        m->start();
        QCOMPARE(m->stored().size(), 1);
        QCOMPARE(m->stored().first().row, stored.first().row);
    }

    void aConversationIsThereAgainAfterARestart() {
        m->start();
        QVERIFY(m->talk(u"Hello"_s, u"Hi\u2028\U0001F600"_s));
        QVERIFY(m->talk(u"Hello"_s, u"Hi\u2028\U0001F600"_s));
        const QStringList contents = m->contents();
        m->quit();
        m->start();
        QCOMPARE(m->contents(), contents);
        QCOMPARE(m->roles(), u"uaua"_s);
    }

    void theModeAndTheDraftAreNotKept() {
        m->start();
        vm().setMode(AppConfig::writingModes().first());
        vm().draft = u"half a sentence"_s;
        vm().availabilityError = u"No model selected."_s;
        m->quit();
        m->start();
        QVERIFY(!vm().activeMode.value());
        QCOMPARE(vm().draft.value(), QString());
        QVERIFY(!vm().availabilityError.value());
    }

    void theNewestOfThreeRecordsIsLoadedAndTheNextSaveLeavesItAlone() {
        m->store({u"user"_s}, {u"ten"_s}, atHour(10));
        m->store({u"user"_s}, {u"twelve"_s}, atHour(12));
        m->store({u"user"_s}, {u"eleven"_s}, atHour(11));
        m->start();
        QCOMPARE(m->contents(), QStringList{u"twelve"_s});
        QCOMPARE(m->stored().size(), 3); // the load itself does not save
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        const auto stored = m->stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().contents, (QStringList{u"twelve"_s, u"Hello"_s, u"Hi"_s}));
    }

    void olderRecordsAreAlsoDeletedByTheAutomaticSave() {
        m->store({u"user"_s}, {u"old"_s}, atHour(10));
        m->store({u"user"_s}, {u"new"_s}, atHour(12));
        m->autosaveDelay = 10ms;
        m->start();
        QTRY_COMPARE(m->stored().size(), 1);
        QCOMPARE(m->stored().first().contents, QStringList{u"new"_s});
    }

    void aStoreOfAnEarlierVersionIsReadAndWritten() {
        QVERIFY(QDir().mkpath(QFileInfo(m->file()).path()));
        writeBytes(m->file(), {});
        Database(m->file()).execute(
            "CREATE TABLE \"ChatSession\" (\"updatedAt\" TEXT NOT NULL, \"roles\" TEXT "
            "NOT NULL,"
            " \"contents\" TEXT NOT NULL); PRAGMA user_version=1;"
            "INSERT INTO ChatSession VALUES"
            " ('2026-03-01T12:00:00.123456Z', '[\"user\",\"assistant\"]', "
            "'[\"Hello\",\"Hi\"]')");
        m->start();
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
        QVERIFY(m->talk(u"Again"_s, u"Yes"_s));
        const auto stored = m->stored();
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored.first().contents, (QStringList{u"Hello"_s, u"Hi"_s, u"Again"_s, u"Yes"_s}));
        QCOMPARE(stored.first().row, 1);
    }

    void aRecordOfUnequalListsAndUnknownRolesLoadsWhatPairs() {
        m->store({u"user"_s, u"system"_s, u"User"_s}, {u"a"_s, u"b"_s}, atHour(1));
        m->start();
        QCOMPARE(m->roles(), u"ua"_s);
        QCOMPARE(m->contents(), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(m->stored().first().roles.size(), 3);
    }

    void loadingChangesNothingInTheStore() {
        m->store({u"user"_s}, {u"a"_s}, atHour(1));
        const QByteArray before = bytesOf(m->file());
        m->start();
        QVERIFY(!m->context().hasChanges());
        m->quit();
        QCOMPARE(bytesOf(m->file()), before);
    }

    void newChatEmptiesTheSameRecord() {
        m->start();
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        const auto before = m->stored().first();
        vm().newChat();
        const auto after = m->stored();
        QCOMPARE(after.size(), 1);
        QCOMPARE(after.first().row, before.row);
        QCOMPARE(after.first().roles, QStringList());
        QCOMPARE(after.first().contents, QStringList());
        QVERIFY(after.first().updatedAt > before.updatedAt);
        QVERIFY(!bytesOf(m->file()).contains("Hello")); // not even as a leftover
    }

    void aRecordFromTheFutureStillMovesOn() {
        const QDateTime future = QDateTime::currentDateTimeUtc().addYears(30);
        m->store({u"user"_s}, {u"a"_s}, future);
        m->start();
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        const QDateTime afterTurn = m->stored().first().updatedAt;
        QVERIFY(afterTurn > future);
        vm().newChat();
        QVERIFY(m->stored().first().updatedAt > afterTurn);
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
        m->store({u"user"_s}, {u"a"_s});
        if (sql.isEmpty())
            writeBytes(m->file(), QByteArray("Dear diary,\n").repeated(100));
        else
            conversationStore(m->folder()).openForWriting().execute(sql);
        const QByteArray before = bytesOf(m->file());
        m->start();
        QVERIFY(vm().messages.value().isEmpty());
        QVERIFY(!vm().availabilityError.value());
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        QCOMPARE(m->contents(), (QStringList{u"Hello"_s, u"Hi"_s}));
        vm().newChat();
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        m->quit();
        QCOMPARE(bytesOf(m->file()), before);
    }

    void aSaveThatFailsIsIgnoredAndCaughtUpWith() {
        m->start();
        QVERIFY(m->talk(u"one"_s, u"1"_s));
        {
            Database other = conversationStore(m->folder()).openForWriting(); // holds the lock
            QVERIFY(m->talk(u"two"_s, u"2"_s));
            QVERIFY(!vm().availabilityError.value());
            QCOMPARE(m->contents().size(), 4);
        }
        QCOMPARE(m->stored().first().contents.size(), 2);
        m->quit(); // what is pending is written at the end
        QCOMPARE(m->stored().first().contents, (QStringList{u"one"_s, u"1"_s, u"two"_s, u"2"_s}));
    }

    void aStoreThatNeverCanBeWrittenDisturbsNothing() {
        QFile inTheWay(m->folder());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        m->start();
        QVERIFY(m->talk(u"Hello"_s, u"Hi"_s));
        vm().newChat();
        QVERIFY(vm().messages.value().isEmpty());
        m->quit();
        QCOMPARE(inTheWay.size(), 0);
    }

    void twoControllersOverOneStoreLoseNothing() {
        m->start();
        const auto container = conversationStore(m->folder());
        ModelContext otherContext(container);
        const auto other = m->makeController(otherContext);
        QVERIFY(m->talk(u"ours"_s, u"1"_s));
        other->draft = u"theirs"_s;
        other->send();
        QTRY_COMPARE(m->model.turns.size(), std::size_t(2));
        m->model.turns.back().end();
        QTRY_VERIFY(!other->isGenerating.value());
        QStringList first;
        for (const auto& session : m->stored())
            first.append(session.contents.first());
        QCOMPARE(first, (QStringList{u"theirs"_s, u"ours"_s}));
    }

private:
    ChatViewModel& vm() { return *m->controller; }

    std::optional<Conversation> m;
};

TELLWICK_TEST(ConversationStoreTests, EventLoop)
#include "ConversationStoreTests.moc"
