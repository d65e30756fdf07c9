// SPDX-License-Identifier: MIT
#include "tests/Platform/Store/FaultyFiles.h"
#include "tests/Platform/Store/NoteStore.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <linux/capability.h>

using namespace platform;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using tests::bytesOf;
using tests::writeBytes;

namespace {

/// Runs the function in a process of its own and gives its end as waitpid() tells it. The function
/// returns the exit status.
int inChild(const std::function<int()>& function) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(function());
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

/// Runs the function in a process of its own, which is killed before that change of a file. Whether
/// it has come to its end all the same.
bool endsBefore(int fatal, const std::function<void()>& function) {
    const int status = inChild([&] {
        FaultyFiles files([fatal](int change) {
            if (change == fatal)
                ::raise(SIGKILL);
            return SQLITE_OK;
        });
        function();
        return 0;
    });
    if (!WIFEXITED(status) && WTERMSIG(status) != SIGKILL)
        qFatal("another end than was meant");
    return WIFEXITED(status);
}

/// Runs the function in a process of its own to which the folder is read-only, even to root. Gives
/// its exit status.
int withoutTheRightToWrite(const QTemporaryDir& folder, const std::function<int()>& function) {
    const QByteArray path = QFile::encodeName(folder.path());
    ::chmod(path.constData(), 0500);
    const int status = inChild([&] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        std::array<__user_cap_data_struct, 2> none{};
        return ::syscall(SYS_capset, &header, none.data()) == 0 ? function() : 99;
    });
    ::chmod(path.constData(), 0700);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Lets every change happen. What it is for: without real syncs the many rounds of a test take a
/// fraction of the time.
int noFault(int) {
    return SQLITE_OK;
}

} // namespace

class StoreFaultTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void killedAtAnyChangeOfAFileTheStoreHoldsTheOldOrTheNew() {
        const Lines before{QStringList(40, QString(1000, u'o')), {u"deleted"_s}};
        const Lines after{QStringList(50, QString(1000, u'n')), {u"inserted"_s}};
        m->save(before[0], 2);
        m->save(before[1], 1);
        const QByteArray pristine = bytesOf(m->file);
        bool wasOld = false;
        bool hasEnded = false;
        for (int fatal = 1; !hasEnded; ++fatal) {
            QVERIFY(fatal < 1000);
            writeBytes(m->file, pristine);
            QFile::remove(m->file + u"-journal"_s);
            hasEnded = endsBefore(fatal, [&] {
                ModelContext context(m->container, never);
                const auto notes = notesIn(context);
                notes.first()->lines = after[0];
                context.deleteRecord(notes.last());
                context.insert(makeNote(1, after[1]));
                context.save();
            });
            const FaultyFiles files(noFault);
            const auto found = m->lines();
            QVERIFY(found == before || found == after);
            wasOld = wasOld || found == before;
            QVERIFY(!hasEnded || found == after);
        }
        QVERIFY(wasOld);
    }

    void killedWhileTheStoreIsMadeItIsMadeByTheNextSave() {
        bool hasEnded = false;
        for (int fatal = 1; !hasEnded; ++fatal) {
            QVERIFY(fatal < 1000);
            m.emplace();
            m->move(u"new/store.sqlite"_s);
            hasEnded = endsBefore(fatal, [&] { m->save({u"first"_s}); });
            const FaultyFiles files(noFault);
            const auto found = m->lines();
            QVERIFY(found.isEmpty() || found == Lines{QStringList{u"first"_s}});
            m->save({u"second"_s});
            QCOMPARE(m->lines().size(), found.size() + 1);
        }
    }

    void aFaultAtAnyChangeOfAFileLosesNothing_data() {
        QTest::addColumn<int>("fault");
        QTest::newRow("no room") << SQLITE_FULL;
        QTest::newRow("a write fails") << SQLITE_IOERR_WRITE;
        QTest::newRow("a sync fails") << SQLITE_IOERR_FSYNC;
    }

    void aFaultAtAnyChangeOfAFileLosesNothing() {
        QFETCH(int, fault);
        const QStringList before(40, QString(1000, u'o'));
        const QStringList after(50, QString(1000, u'n'));
        m->save(before);
        const QByteArray pristine = bytesOf(m->file);
        bool hasSucceeded = false;
        for (int faulty = 1; !hasSucceeded; ++faulty) {
            QVERIFY(faulty < 1000);
            writeBytes(m->file, pristine);
            QFile::remove(m->file + u"-journal"_s);
            ModelContext context(m->container, never);
            const auto note = notesIn(context).first();
            note->lines = after;
            {
                // From then on nothing can be written any more, not even what would undo the
                // damage.
                FaultyFiles files([&](int change) { return change >= faulty ? fault : SQLITE_OK; });
                hasSucceeded = !fails([&] { context.save(); });
            }
            QCOMPARE(context.hasChanges(), !hasSucceeded);
            QCOMPARE(note->lines.value(), after);
            const FaultyFiles files(noFault);
            // What has not become durable may have been written all the same, but never in part.
            const auto found = m->lines();
            QVERIFY(found == Lines{before} || (found == Lines{after}));
            context.save();
            QCOMPARE(m->lines().first(), after);
        }
    }

    void aFullDiskLosesNothingAndTheSaveSucceedsOnceThereIsRoom() {
        m->save({u"before"_s});
        const int status = inChild([&] {
            ::signal(SIGXFSZ, SIG_IGN); // the write is to fail as it does on a full disk
            struct rlimit limit {};
            ::getrlimit(RLIMIT_FSIZE, &limit);
            const auto whole = limit.rlim_cur;
            limit.rlim_cur = 64 * 1024;
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
                return 1;
            ModelContext context(m->container, never);
            const auto note = notesIn(context).first();
            note->lines = QStringList{QString(1'000'000, u'x')};
            if (!fails([&] { context.save(); }))
                return 2;
            if (m->lines() != Lines{QStringList{u"before"_s}})
                return 3;
            limit.rlim_cur = whole;
            ::setrlimit(RLIMIT_FSIZE, &limit);
            context.save();
            return 0;
        });
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QCOMPARE(m->lines(), Lines{QStringList{QString(1'000'000, u'x')}});
    }

    void aReadOnlyFolderIsReadAndTheSaveFails() {
        m->save({u"before"_s});
        QFile::remove(m->file + u"-journal"_s);
        QCOMPARE(::chmod(QFile::encodeName(m->file).constData(), 0400), 0);
        const QByteArray bytes = bytesOf(m->file);
        const auto read = [&] {
            ModelContext context(m->container, never);
            const auto notes = notesIn(context);
            if (notes.size() != 1 || notes.first()->lines.value() != QStringList{u"before"_s})
                return 1;
            notes.first()->lines = QStringList{u"after"_s};
            return fails([&] { context.save(); }) ? 0 : 2;
        };
        QCOMPARE(withoutTheRightToWrite(m->folder, read), 0);
        QCOMPARE(bytesOf(m->file), bytes);
    }

    void aFolderThatCannotBeMadeFailsTheSaveOnly() {
        m->move(u"data/app/store.sqlite"_s);
        const auto begin = [&] {
            ModelContext context(m->container, never);
            if (!notesIn(context).isEmpty())
                return 1;
            context.insert(makeNote(1));
            return fails([&] { context.save(); }, "Permission denied") ? 0 : 2;
        };
        QCOMPARE(withoutTheRightToWrite(m->folder, begin), 0);
    }

    void aFolderThatIsAFileFailsQuietly() {
        writeBytes(m->folder.filePath(u"data"_s), "mine");
        m->move(u"data/app/store.sqlite"_s);
        ModelContext context(m->container, never);
        QVERIFY(fails([&] { notesIn(context); }, "Not a directory"));
        context.insert(makeNote(1));
        QVERIFY(fails([&] { context.save(); }, "Not a directory"));
        QCOMPARE(bytesOf(m->folder.filePath(u"data"_s)), QByteArray("mine"));
    }

    void aStoreLockedByAnotherProgramIsGivenUpSoonAndSavedLater() {
        m->save({u"before"_s});
        ModelContext context(m->container, never);
        const auto note = notesIn(context).first();
        note->lines = QStringList{u"after"_s};
        Database other(m->file);
        other.execute("BEGIN EXCLUSIVE");
        QElapsedTimer timer;
        timer.start();
        QVERIFY(fails([&] { context.save(); }, "locked"));
        QVERIFY(fails([&] { notesIn(context); }, "locked"));
        QVERIFY(timer.elapsed() < 2000);
        other.execute("ROLLBACK");
        QCOMPARE(m->lines(), Lines{QStringList{u"before"_s}});
        context.save();
        QCOMPARE(m->lines(), Lines{QStringList{u"after"_s}});
    }

    void aFailedSaveIsTriedAgainByItself() {
        m->save({u"before"_s});
        ModelContext context(m->container, 5ms);
        const auto note = notesIn(context).first();
        {
            FaultyFiles files([](int) { return SQLITE_FULL; });
            note->lines = QStringList{u"after"_s};
            QTRY_VERIFY(files.changes() >= 2);
            QVERIFY(context.hasChanges());
        }
        QTRY_VERIFY(!context.hasChanges());
        QCOMPARE(m->lines(), Lines{QStringList{u"after"_s}});
    }

    void twoProgramsSavingAtOnceLoseNothing() {
        constexpr int programs = 2;
        constexpr int saves = 25;
        std::array<pid_t, programs> children{};
        for (int program = 0; program < programs; ++program) {
            children[size_t(program)] = ::fork();
            if (children[size_t(program)] == 0) {
                ModelContext context(m->container, never);
                const auto note = makeNote(1);
                context.insert(note);
                for (int number = 1; number <= saves; ++number) {
                    note->lines = QStringList{QString::number(program), QString::number(number)};
                    note->writtenAt = note->writtenAt.value().addMSecs(1);
                    while (fails([&] { context.save(); }, "locked")) {
                    }
                }
                ::_exit(0);
            }
        }
        for (const pid_t child : children) {
            int status = -1;
            ::waitpid(child, &status, 0);
            QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        auto found = m->lines();
        std::sort(found.begin(), found.end());
        const QString last = QString::number(saves);
        QCOMPARE(found, (Lines{{u"0"_s, last}, {u"1"_s, last}}));
    }

private:
    std::optional<NoteStore> m;
};

TELLWICK_TEST(StoreFaultTests, EventLoop)
#include "StoreFaultTests.moc"
