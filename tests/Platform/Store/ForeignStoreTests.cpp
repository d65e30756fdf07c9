// SPDX-License-Identifier: MIT
// What somebody else has put where the store should be is reported and never written over.
#include "tests/Platform/Store/NoteStore.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <sys/stat.h>

using namespace platform;
using namespace Qt::StringLiterals;
using tests::bytesOf;
using tests::writeBytes;

namespace {

/// Runs statements on the file as another program would.
void execute(const QString& path, const QByteArray& sql) {
    if (!QFile::exists(path))
        writeBytes(path, {});
    Database(path).execute(sql);
}

} // namespace

class ForeignStoreTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void whatIsNoStoreIsReportedAndLeftAsItIs_data() {
        QTest::addColumn<QByteArray>("sql");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("reason");
        const auto bytes = [](const char* name, const QByteArray& bytes) {
            QTest::newRow(name) << QByteArray() << bytes << QByteArray("not a database");
        };
        bytes("one byte", "x");
        bytes("a text", "Dear diary,\n");
        bytes("a long text", QByteArray("Dear diary,\n").repeated(10000));
        bytes("zeros", QByteArray(8192, '\0'));
        bytes("only the mark of SQLite", QByteArray("SQLite format 3\0", 16));
        const QByteArray later = "written by a later version";
        const QByteArray foreign = "a table of another layout";
        const auto sql = [](const char* name, const char* sql, const QByteArray& reason) {
            QTest::newRow(name) << QByteArray(sql) << QByteArray() << reason;
        };
        sql("a later version",
            "PRAGMA user_version=2; CREATE TABLE Note (writtenAt INTEGER, lines BLOB, title TEXT);"
            "INSERT INTO Note VALUES (1, x'00', 'precious')",
            later);
        sql("a later version of the same layout",
            "PRAGMA user_version=2;"
            "CREATE TABLE \"Note\" (\"writtenAt\" TEXT NOT NULL, \"lines\" TEXT NOT NULL)",
            later);
        sql("a later version without tables", "PRAGMA user_version=7", later);
        sql("a database of another program", "CREATE TABLE cookies (host TEXT)", foreign);
        sql("this version without tables", "PRAGMA user_version=1", foreign);
        sql("fewer columns", "PRAGMA user_version=1; CREATE TABLE Note (writtenAt TEXT)", foreign);
        sql("one more column",
            "PRAGMA user_version=1;"
            "CREATE TABLE Note (writtenAt TEXT NOT NULL, lines TEXT NOT NULL, title TEXT NOT NULL)",
            foreign);
        sql("a column added by hand",
            "PRAGMA user_version=1;"
            "CREATE TABLE \"Note\" (\"writtenAt\" TEXT NOT NULL, \"lines\" TEXT NOT NULL);"
            "ALTER TABLE Note ADD COLUMN title TEXT",
            foreign);
        sql("other columns", "PRAGMA user_version=1; CREATE TABLE Note (a TEXT, b TEXT)", foreign);
        sql("a view of that name",
            "PRAGMA user_version=1; CREATE VIEW Note AS WITH RECURSIVE n(i) AS "
            "(SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i AS writtenAt, i AS lines FROM n",
            foreign);
        sql("a table without row identifiers",
            "PRAGMA user_version=1; CREATE TABLE Note "
            "(writtenAt TEXT PRIMARY KEY, lines TEXT) WITHOUT ROWID",
            foreign);
    }

    void whatIsNoStoreIsReportedAndLeftAsItIs() {
        QFETCH(QByteArray, sql);
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, reason);
        if (!sql.isEmpty())
            execute(m->file, sql);
        else
            writeBytes(m->file, bytes);
        isRefused(reason);
    }

    void aPlaceTakenBySomethingElseIsReported_data() {
        QTest::addColumn<bool>("isPipe");
        QTest::newRow("a folder") << false;
        QTest::newRow("a pipe") << true;
    }

    void aPlaceTakenBySomethingElseIsReported() {
        QFETCH(bool, isPipe);
        const QByteArray path = QFile::encodeName(m->file);
        QCOMPARE(isPipe ? ::mkfifo(path.constData(), 0600) : ::mkdir(path.constData(), 0700), 0);
        // Not isRefused(): a pipe is not to be read.
        ModelContext context(m->container, never);
        QVERIFY(fails([&] { notesIn(context); }, "not a database"));
        context.insert(makeNote(1));
        QVERIFY(fails([&] { context.save(); }, "not a database"));
    }

    void anEmptyFileBecomesTheStore() {
        writeBytes(m->file, {});
        QVERIFY(m->lines().isEmpty());
        m->save({u"a"_s});
        QCOMPARE(m->lines(), Lines{QStringList{u"a"_s}});
    }

    void aStoreRestoredFromItsDumpIsRead() {
        execute(m->file,
                "CREATE TABLE \"Note\" (\"writtenAt\" TEXT NOT NULL, \"lines\" TEXT NOT NULL);"
                "INSERT INTO Note VALUES ('2026-01-01 00:00:00', '[\"a\"]');"
                "CREATE INDEX byTime ON Note (writtenAt); ANALYZE");
        {
            ModelContext context(m->container, never);
            const auto notes = notesIn(context);
            QCOMPARE(notes.size(), 1);
            QCOMPARE(notes.first()->lines.value(), QStringList{u"a"_s});
            notes.first()->lines = QStringList{u"b"_s};
        }
        QCOMPARE(m->lines(), Lines{QStringList{u"b"_s}});
    }

    void triggersInTheFileAreNotRun() {
        m->save({u"a"_s});
        execute(m->file, "CREATE TRIGGER spoil AFTER UPDATE ON Note BEGIN "
                         "UPDATE Note SET lines = '[]'; END");
        {
            ModelContext context(m->container, never);
            notesIn(context).first()->lines = QStringList{u"b"_s};
        }
        QCOMPARE(m->lines(), Lines{QStringList{u"b"_s}});
    }

    void aRecordThatCannotBeReadFailsTheFetchAndIsLeftAsItIs_data() {
        QTest::addColumn<QByteArray>("values");
        QTest::newRow("no instant") << QByteArray("'yesterday', '[]'");
        QTest::newRow("no JSON") << QByteArray("'2026-01-01T00:00:00Z', 'a,b'");
        QTest::newRow("numbers in the list") << QByteArray("'2026-01-01T00:00:00Z', '[1]'");
        QTest::newRow("bytes") << QByteArray("'2026-01-01T00:00:00Z', x'5b5d'");
        QTest::newRow("not UTF-8") << QByteArray("'2026-01-01T00:00:00Z', '[\"' || x'ff' || '\"]'");
    }

    void aRecordThatCannotBeReadFailsTheFetchAndIsLeftAsItIs() {
        QFETCH(QByteArray, values);
        m->save({u"a"_s});
        execute(m->file, "INSERT INTO Note VALUES (" + values + ")");
        const QByteArray before = bytesOf(m->file);
        {
            ModelContext context(m->container, never);
            QVERIFY(fails([&] { notesIn(context); }, "a value that"));
        }
        QCOMPARE(bytesOf(m->file), before);
    }

    void aDamagedFileFailsTheFetchAndIsLeftAsItIs() {
        m->save(QStringList(100, QString(1000, u'a')));
        QByteArray bytes = bytesOf(m->file);
        bytes.replace(4096, bytes.size() - 4096, QByteArray(bytes.size() - 4096, '\xaa'));
        writeBytes(m->file, bytes);
        {
            ModelContext context(m->container, never);
            QVERIFY(fails([&] { notesIn(context); }, "malformed"));
        }
        QCOMPARE(bytesOf(m->file), bytes);
    }

private:
    /// Neither a fetch nor a save goes well, and nothing of the file changes.
    void isRefused(const QByteArray& reason) const {
        const QByteArray before = bytesOf(m->file);
        {
            ModelContext context(m->container, never);
            QVERIFY(fails([&] { notesIn(context); }, reason));
            context.insert(makeNote(1));
            QVERIFY(fails([&] { context.save(); }, reason));
        }
        QCOMPARE(bytesOf(m->file), before);
    }

    std::optional<NoteStore> m;
};

TELLWICK_TEST(ForeignStoreTests, EventLoop)
#include "ForeignStoreTests.moc"
