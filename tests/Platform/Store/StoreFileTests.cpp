// SPDX-License-Identifier: MIT
// The store as a file: who may read it, what it looks like from outside.
#include "tests/Platform/Store/NoteStore.h"
#include "tests/support/TestMain.h"

#include <QDir>

#include <sys/stat.h>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString& path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 0777 : 0;
}

} // namespace

class StoreFileTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m.emplace();
        m->move(u"data/app/store.sqlite"_s);
    }
    void cleanup() { m.reset(); }

    void aStoreThatIsNotThereIsEmptyAndStaysAway() {
        ModelContext context(m->container);
        QVERIFY(notesIn(context).isEmpty());
        context.save();
        QVERIFY(!QFile::exists(dataFolder()));
    }

    void folderFileAndJournalAreForTheUserAlone() {
        const mode_t previous = ::umask(0);
        const auto reset = qScopeGuard([previous] { ::umask(previous); });
        m->save({});
        QCOMPARE(modeOf(dataFolder()), mode_t(0700));
        QCOMPARE(modeOf(dataFolder() + u"/app"_s), mode_t(0700));
        QCOMPARE(modeOf(m->file), mode_t(0600));
        Database database = m->container.openForWriting();
        database.execute("DELETE FROM Note");
        QCOMPARE(modeOf(m->file + u"-journal"_s), mode_t(0600));
    }

    void theFileIsPlainlyReadable_data() {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QByteArray>("answer");
        const auto row = [](const char* query, const char* answer) {
            QTest::newRow(query) << QByteArray(query) << QByteArray(answer);
        };
        row("SELECT group_concat(sql) FROM sqlite_schema",
            "CREATE TABLE \"Note\" (\"writtenAt\" TEXT NOT NULL, \"lines\" TEXT NOT NULL)");
        row("SELECT writtenAt FROM Note", "1970-01-01T00:00:01.000Z");
        row("SELECT lines FROM Note", "[\"Grüße\",\"\",\"a\\nb\"]");
        row("SELECT value FROM Note, json_each(lines) WHERE key = 2", "a\nb");
        row("SELECT user_version || '' FROM pragma_user_version", "1");
        row("PRAGMA integrity_check", "ok");
    }

    void theFileIsPlainlyReadable() {
        QFETCH(QByteArray, query);
        QFETCH(QByteArray, answer);
        m->save({u"Grüße"_s, {}, u"a\nb"_s});
        Database database(m->file);
        Statement statement(database, query);
        QVERIFY(statement.step());
        QCOMPARE(statement.text(0), answer);
    }

    void savesAreFullySynchronous() {
        Database database = m->container.openForWriting();
        QCOMPARE(database.number("PRAGMA synchronous"), qint64(2));
        QCOMPARE(database.number("PRAGMA secure_delete"), qint64(1));
    }

    void aSaveWithoutChangesTouchesNothing() {
        ModelContext context(m->container);
        context.insert(makeNote(1));
        context.save();
        QVERIFY(QFile::remove(m->file));
        context.save();
        QVERIFY(!QFile::exists(m->file));
    }

    void aStoreRemovedMeanwhileIsMadeAgain() {
        ModelContext context(m->container, never);
        const auto note = makeNote(1);
        context.insert(note);
        context.save();
        QVERIFY(QDir(dataFolder()).removeRecursively());
        note->lines = QStringList{u"kept"_s};
        context.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"kept"_s}});
    }

private:
    QString dataFolder() const { return m->folder.filePath(u"data"_s); }

    std::optional<NoteStore> m;
};

TELLWICK_TEST(StoreFileTests, EventLoop)
#include "StoreFileTests.moc"
