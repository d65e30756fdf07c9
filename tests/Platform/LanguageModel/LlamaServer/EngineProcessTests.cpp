// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<EngineProcess> shell(const QString& script,
                                     const EngineProcess::EnvironmentChanges& changes = {}) {
    return EngineProcess::start(u"/bin/sh"_s, {u"-c"_s, script}, changes);
}

bool isThere(qint64 process) {
    // A process that waits for its parent to notice its end counts as gone.
    QFile status(u"/proc/%1/stat"_s.arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = status.readAll();
    return !line.mid(line.lastIndexOf(')')).startsWith(") Z");
}

} // namespace

class EngineProcessTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatTheProcessWritesCanBeRead() {
        const auto process = shell(u"echo out; echo err >&2"_s);
        QVERIFY(process);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->output(), QByteArray("out\nerr\n"));
        QCOMPARE(process->endSignal(), 0);
    }

    void onlyTheBeginningOfALongOutputIsKept() {
        const auto process = shell(u"head -c 200000 /dev/zero"_s);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->output().size(), 65'536);
    }

    void aKilledProcessTellsItsSignal() {
        const auto process = shell(u"sleep 600"_s);
        QVERIFY(process->isRunning());
        QCOMPARE(process->endSignal(), 0);
        kill(process->id(), SIGABRT);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->endSignal(), SIGABRT);
    }

    void aProgramThatIsNotThereEndsAtOnce() {
        const auto process = EngineProcess::start(u"/nowhere/engine"_s, {}, {});
        QVERIFY(process);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->endSignal(), 0);
    }

    void destroyingTheObjectEndsTheProcess() {
        auto process = shell(u"trap '' TERM; while :; do sleep 1; done"_s);
        const pid_t id = process->id();
        QVERIFY(isThere(id));
        process.reset();
        QVERIFY(!isThere(id));
    }

    void hiddenVariablesDoNotReachTheProcess() {
        qputenv("ENGINE_ARG_ONE", "1");
        qputenv("ENGINE_OTHER", "2");
        const auto process = shell(u"env"_s, {{"ENGINE_ARG_"}, {}});
        QTRY_VERIFY(!process->isRunning());
        QVERIFY(!process->output().contains("ENGINE_ARG_ONE"));
        QVERIFY(process->output().contains("ENGINE_OTHER=2\n"));
    }

    void aDefaultCountsWhereTheProgramHasNoSuchVariable() {
        qputenv("ENGINE_SET", "own");
        const auto process =
            shell(u"echo $ENGINE_SET $ENGINE_UNSET"_s, {{}, {"ENGINE_SET=x", "ENGINE_UNSET=y"}});
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->output(), QByteArray("own y\n"));
    }

    void noOpenFileOfTheProgramReachesTheProcess() {
        const int file = open("/dev/null", O_RDONLY); // on purpose not closed on exec
        QVERIFY(file > 2);
        const auto process = shell(u"ls /proc/self/fd"_s);
        QTRY_VERIFY(!process->isRunning());
        close(file);
        // Its three, and the one with which ls reads the folder.
        QCOMPARE(process->output(), QByteArray("0\n1\n2\n3\n"));
    }

    void theProcessHasASessionOfItsOwn() {
        const auto process = shell(u"sleep 600"_s);
        QTRY_COMPARE(getsid(process->id()), process->id());
    }

    void itIsTheFirstToGoWhenMemoryRunsOut() {
        const auto process = shell(u"cat /proc/self/oom_score_adj; ulimit -c"_s);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->output(), QByteArray("500\n0\n"));
    }

    void theProcessEndsWithTheThreadThatStartedIt() {
        std::unique_ptr<EngineProcess> process;
        std::thread([&] {
            process = shell(u"echo started; exec sleep 600"_s);
            while (process->output().isEmpty())
                std::this_thread::yield();
        }).join();
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->endSignal(), SIGKILL);
    }

    /// A script that hands over to the program by exec, as the engine's wrapper does.
    void theProcessEndsWhenTheProgramIsKilled() {
        QProcess program;
        program.start(QCoreApplication::applicationFilePath(),
                      {u"EngineProcessTests"_s, u"--start-engine"_s});
        QVERIFY(program.waitForReadyRead(20'000));
        const qint64 engine = program.readLine().trimmed().toLongLong();
        QVERIFY(engine > 0);
        QVERIFY(isThere(engine));
        program.kill();
        QVERIFY(program.waitForFinished(20'000));
        QTRY_VERIFY_WITH_TIMEOUT(!isThere(engine), 2'000);
    }
};

static int run(int argc, char** argv) {
    if (QCoreApplication::arguments().value(1) == u"--start-engine") {
        const auto process = shell(u"cd / && exec sleep 600"_s);
        printf("%d\n", static_cast<int>(process->id()));
        fflush(stdout);
        pause();
    }
    EngineProcessTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(EngineProcessTests, EventLoop, run)

#include "EngineProcessTests.moc"
