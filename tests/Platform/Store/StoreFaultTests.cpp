// SPDX-License-Identifier: MIT
#include "Platform/Store/StoreError.h"
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
using Reason = StoreError::Reason;

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

/// Takes root's right to pass over the modes of files away from this process.
bool giveUpPrivileges() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> none{};
    return ::syscall(SYS_capset, &header, none.data()) == 0;
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
        const QStringList before(40, QString(1000, u'o'));
        const QStringList after(50, QString(1000, u'n'));
        m->save(before);
        const QByteArray pristine = bytesOf(m->file);
        bool wasOld = false;
        bool hasEnded = false;
        for (int fatal = 1; !hasEnded; ++fatal) {
            QVERIFY(fatal < 1000);
            writeBytes(m->file, pristine);
            QFile::remove(m->file + u"-journal"_s);
            const int status = inChild([&] {
                FaultyFiles files([fatal](int change) {
                    if (change == fatal)
                        ::raise(SIGKILL);
                    return SQLITE_OK;
                });
                ModelContext context(m->container, never);
                notesIn(context).first()->lines = after;
                context.save();
                return 0;
            });
            hasEnded = WIFEXITED(status);
            QVERIFY(hasEnded || WTERMSIG(status) == SIGKILL);
            const FaultyFiles files(noFault);
            const auto found = m->lines();
            QVERIFY(found == Lines{before} || found == Lines{after});
            wasOld = wasOld || found == Lines{before};
            QVERIFY(!hasEnded || found == Lines{after});
        }
        QVERIFY(wasOld);
    }

    void killedWhileTheStoreIsMadeItIsMadeByTheNextSave() {
        bool hasEnded = false;
        for (int fatal = 1; !hasEnded; ++fatal) {
            QVERIFY(fatal < 1000);
            m.emplace();
            m->move(u"new/store.sqlite"_s);
            const int status = inChild([&] {
                FaultyFiles files([fatal](int change) {
                    if (change == fatal)
                        ::raise(SIGKILL);
                    return SQLITE_OK;
                });
                m->save({u"first"_s});
                return 0;
            });
            hasEnded = WIFEXITED(status);
            const FaultyFiles files(noFault);
            const auto found = m->lines();
            QVERIFY(found.isEmpty() || found == Lines{QStringList{u"first"_s}});
            m->save({u"second"_s});
            QCOMPARE(m->lines().size(), found.size() + 1);
        }
    }

    // The same without a hand in the files: real saves, killed from outside after times of all
    // lengths.
    void killedAtAnyMomentNothingThatWasSavedIsLost() {
        m->save({u"0"_s});
        for (int round = 0; round < 30; ++round) {
            std::array<int, 2> pipe{};
            QCOMPARE(::pipe(pipe.data()), 0);
            const int first = m->lines().first().first().toInt();
            const pid_t child = ::fork();
            if (child == 0) {
                ModelContext context(m->container, never);
                const auto note = notesIn(context).first();
                for (int number = first + 1;; ++number) {
                    note->lines = QStringList(30 + number % 40, QString::number(number));
                    note->writtenAt = note->writtenAt.value().addMSecs(1);
                    context.save();
                    (void)!::write(pipe[1], &number, sizeof number);
                }
            }
            ::close(pipe[1]);
            int acknowledged = first;
            // The first save has ended; then the end comes at a moment of the next ones.
            (void)!::read(pipe[0], &acknowledged, sizeof acknowledged);
            ::usleep(useconds_t(round) * 150);
            ::kill(child, SIGKILL);
            while (::read(pipe[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged) {
            }
            ::close(pipe[0]);
            ::waitpid(child, nullptr, 0);
            QVERIFY(acknowledged > first);
            const auto found = m->lines();
            QCOMPARE(found.size(), 1);
            const int number = found.first().first().toInt();
            QVERIFY(number == acknowledged || number == acknowledged + 1);
            QCOMPARE(found.first(), QStringList(30 + number % 40, QString::number(number)));
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
                hasSucceeded = !reasonOf([&] { context.save(); });
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
            const auto reason = reasonOf([&] { context.save(); });
            if (reason != Reason::Full && reason != Reason::Unreachable)
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
        QCOMPARE(::chmod(QFile::encodeName(m->folder.path()).constData(), 0500), 0);
        const QByteArray bytes = bytesOf(m->file);
        const int status = inChild([&] {
            if (!giveUpPrivileges())
                return 1;
            ModelContext context(m->container, never);
            const auto notes = notesIn(context);
            if (notes.size() != 1 || notes.first()->lines.value() != QStringList{u"before"_s})
                return 2;
            notes.first()->lines = QStringList{u"after"_s};
            return reasonOf([&] { context.save(); }) == Reason::Unreachable ? 0 : 3;
        });
        ::chmod(QFile::encodeName(m->folder.path()).constData(), 0700);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QCOMPARE(bytesOf(m->file), bytes);
    }

    void aFolderThatCannotBeMadeFailsTheSaveOnly() {
        QCOMPARE(::chmod(QFile::encodeName(m->folder.path()).constData(), 0500), 0);
        const int status = inChild([&] {
            if (!giveUpPrivileges())
                return 1;
            m->move(u"data/app/store.sqlite"_s);
            ModelContext context(m->container, never);
            if (!notesIn(context).isEmpty())
                return 2;
            context.insert(makeNote(1));
            return reasonOf([&] { context.save(); }) == Reason::Unreachable ? 0 : 3;
        });
        ::chmod(QFile::encodeName(m->folder.path()).constData(), 0700);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    void aFolderThatIsAFileFailsQuietly() {
        writeBytes(m->folder.filePath(u"data"_s), "mine");
        m->move(u"data/app/store.sqlite"_s);
        ModelContext context(m->container, never);
        QCOMPARE(reasonOf([&] { notesIn(context); }), Reason::Unreachable);
        context.insert(makeNote(1));
        QCOMPARE(reasonOf([&] { context.save(); }), Reason::Unreachable);
        QCOMPARE(bytesOf(m->folder.filePath(u"data"_s)), QByteArray("mine"));
    }

    void aStoreLockedByAnotherProgramIsGivenUpSoonAndSavedLater() {
        m->save({u"before"_s});
        ModelContext context(m->container, never);
        const auto note = notesIn(context).first();
        note->lines = QStringList{u"after"_s};
        sqlite3* other = nullptr;
        QCOMPARE(sqlite3_open(QFile::encodeName(m->file).constData(), &other), SQLITE_OK);
        QCOMPARE(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(reasonOf([&] { context.save(); }), Reason::Busy);
        QCOMPARE(reasonOf([&] { notesIn(context); }), Reason::Busy);
        QVERIFY(timer.elapsed() < 2000);
        QCOMPARE(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(other);
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
                    while (reasonOf([&] { context.save(); }) == Reason::Busy) {
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
