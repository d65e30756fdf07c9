// SPDX-License-Identifier: MIT
// The store as a file: where it lies, who may read it, what it looks like from outside.
#include "tests/Platform/Store/TestRecord.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QTemporaryDir>

#include <sqlite3.h>
#include <sys/stat.h>

using namespace platform;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto never = 1h;

mode_t modeOf(const QString& path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 0777 : 0;
}

/// Runs a statement on the file, as another program would, and gives the first column of its rows.
QStringList query(const QString& file, const char* sql) {
    QStringList rows;
    sqlite3* connection = nullptr;
    sqlite3_open_v2(QFile::encodeName(file).constData(), &connection, SQLITE_OPEN_READWRITE,
                    nullptr);
    const auto take = [](void* rows, int, char** values, char**) {
        static_cast<QStringList*>(rows)->append(QString::fromUtf8(values[0]));
        return 0;
    };
    char* error = nullptr;
    sqlite3_exec(connection, sql, take, &rows, &error);
    if (error)
        rows.append(u"error: "_s + QString::fromUtf8(error));
    sqlite3_free(error);
    sqlite3_close(connection);
    return rows;
}

} // namespace

class StoreFileTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void aStoreThatIsNotThereIsEmptyAndStaysAway();
    void theFirstSaveMakesFolderAndFileForTheUserAlone();
    void theJournalIsForTheUserAlone();
    void theFileIsPlainlyReadable();
    void savesAreFullySynchronous();
    void aSaveWithoutChangesTouchesNothing();
    void aStoreRemovedMeanwhileIsMadeAgain();
    void openingAStoreIsQuick();
    void theDataFolderIsTheConfiguredOneOrTheUsualOne();

private:
    QString file() const { return m_folder->filePath(u"data/app/store.sqlite"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void StoreFileTests::aStoreThatIsNotThereIsEmptyAndStaysAway() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    QVERIFY(context.fetch<Note>().isEmpty());
    context.save();
    QVERIFY(!QFile::exists(m_folder->filePath(u"data"_s)));
}

void StoreFileTests::theFirstSaveMakesFolderAndFileForTheUserAlone() {
    const mode_t previous = ::umask(0);
    const auto container = noteContainer(file());
    ModelContext context(container);
    context.insert(makeNote(1));
    context.save();
    ::umask(previous);
    QCOMPARE(modeOf(m_folder->filePath(u"data"_s)), mode_t(0700));
    QCOMPARE(modeOf(m_folder->filePath(u"data/app"_s)), mode_t(0700));
    QCOMPARE(modeOf(file()), mode_t(0600));
}

void StoreFileTests::theJournalIsForTheUserAlone() {
    const mode_t previous = ::umask(0);
    const auto container = noteContainer(file());
    ModelContext context(container);
    context.insert(makeNote(1));
    context.save();
    {
        Database database = container.openForWriting();
        database.execute("DELETE FROM Note");
        QCOMPARE(modeOf(file() + u"-journal"_s), mode_t(0600));
    }
    ::umask(previous);
}

void StoreFileTests::theFileIsPlainlyReadable() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    context.insert(makeNote(1, {u"Grüße"_s, {}, u"a\nb"_s}));
    context.save();
    QCOMPARE(query(file(), "SELECT name FROM pragma_table_info('Note')"),
             (QStringList{u"writtenAt"_s, u"lines"_s}));
    QCOMPARE(query(file(), "SELECT writtenAt FROM Note"),
             QStringList{u"1970-01-01T00:00:01.000000Z"_s});
    QCOMPARE(query(file(), "SELECT lines FROM Note"), QStringList{u"[\"Grüße\",\"\",\"a\\nb\"]"_s});
    QCOMPARE(query(file(), "SELECT value FROM Note, json_each(lines) WHERE key = 2"),
             QStringList{u"a\nb"_s});
    QCOMPARE(query(file(), "PRAGMA user_version"), QStringList{u"1"_s});
    QCOMPARE(query(file(), "PRAGMA integrity_check"), QStringList{u"ok"_s});
}

void StoreFileTests::savesAreFullySynchronous() {
    const auto container = noteContainer(file());
    Database database = container.openForWriting();
    QCOMPARE(database.number("PRAGMA synchronous"), qint64(2));
    QCOMPARE(database.number("PRAGMA secure_delete"), qint64(1));
}

void StoreFileTests::aSaveWithoutChangesTouchesNothing() {
    const auto container = noteContainer(file());
    ModelContext context(container);
    context.insert(makeNote(1));
    context.save();
    QVERIFY(QFile::remove(file()));
    context.save();
    QVERIFY(!QFile::exists(file()));
}

void StoreFileTests::aStoreRemovedMeanwhileIsMadeAgain() {
    const auto container = noteContainer(file());
    ModelContext context(container, never);
    const auto note = makeNote(1);
    context.insert(note);
    context.save();
    QVERIFY(QDir(m_folder->filePath(u"data"_s)).removeRecursively());
    note->lines = QStringList{u"kept"_s};
    context.save();
    QCOMPARE(linesInStore(container), Lines{QStringList{u"kept"_s}});
}

void StoreFileTests::openingAStoreIsQuick() {
    const auto container = noteContainer(file());
    {
        ModelContext context(container);
        context.insert(makeNote(1, QStringList(200, QString(500, u'x'))));
    }
    QBENCHMARK {
        ModelContext context(container);
        QCOMPARE(context.fetch<Note>(newestFirst()).size(), 1);
    }
}

void StoreFileTests::theDataFolderIsTheConfiguredOneOrTheUsualOne() {
    const QByteArray previous = qgetenv("XDG_DATA_HOME");
    const bool wasSet = qEnvironmentVariableIsSet("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/elsewhere/data/");
    QCOMPARE(userDataFile(u"app/store.sqlite"_s), u"/elsewhere/data/app/store.sqlite"_s);
    const QString usual = QDir::homePath() + u"/.local/share/app/store.sqlite"_s;
    qputenv("XDG_DATA_HOME", "not/absolute");
    QCOMPARE(userDataFile(u"app/store.sqlite"_s), usual);
    qputenv("XDG_DATA_HOME", "");
    QCOMPARE(userDataFile(u"app/store.sqlite"_s), usual);
    qunsetenv("XDG_DATA_HOME");
    QCOMPARE(userDataFile(u"app/store.sqlite"_s), usual);
    if (wasSet)
        qputenv("XDG_DATA_HOME", previous);
}

TELLWICK_TEST(StoreFileTests, EventLoop)
#include "StoreFileTests.moc"
