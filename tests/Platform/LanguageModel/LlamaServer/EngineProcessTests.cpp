// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests

// Scripts with a program that they start and say the number of; the engine's wrapper is of the
// first kind.
const auto execScript = u"echo $$; exec sleep 600"_s;
const auto stayingScript = u"sleep 600 & echo $!; wait; exit"_s;

std::unique_ptr<EngineProcess> shell(const QString& script,
                                     const EngineProcess::EnvironmentChanges& changes = {}) {
    return EngineProcess::start(u"/bin/sh"_s, {u"-c"_s, script}, changes);
}

/// The process that a script says it has started, once it has.
qint64 saidBy(const EngineProcess& process) {
    (void)QTest::qWaitFor([&] { return process.output().endsWith('\n'); }, limit);
    return process.output().trimmed().toLongLong();
}

/// Runs this program as another one, which starts an engine; the caller ends it.
bool startProgram(QProcess& program, const QString& script) {
    program.start(QCoreApplication::applicationFilePath(),
                  {u"EngineProcessTests"_s, u"--start-engine"_s, script});
    return program.waitForReadyRead(limit);
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

    void aScriptTellsTheSignalOfItsProgram() {
        const auto process = shell(u"sh -c 'kill -ABRT $$'; exit $?"_s);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->endSignal(), SIGABRT);
    }

    void destroyingTheObjectEndsTheProcessAndWhatItHasStarted() {
        auto process = shell(u"trap '' TERM; "_s + stayingScript);
        const pid_t id = process->id();
        const qint64 started = saidBy(*process);
        QVERIFY(isRunning(id) && isRunning(started));
        process.reset();
        QVERIFY(!isRunning(id));
        QTRY_VERIFY(!isRunning(started));
    }

    void aProcessThatEndsLeavesNothingBehind() {
        const auto process = shell(u"sleep 600 & echo $!"_s);
        const qint64 started = saidBy(*process);
        QTRY_VERIFY(!process->isRunning());
        QTRY_VERIFY(!isRunning(started));
    }

    void workIsSeenWhereverItIsDone() {
        const auto busy = shell(u"sh -c 'while :; do :; done'; exit"_s);
        const quint64 before = busy->workDone();
        QTRY_VERIFY_WITH_TIMEOUT(busy->workDone() > before, limit);
        const auto idle = shell(u"exec sleep 600"_s);
        QTRY_VERIFY(QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(idle->id())).endsWith(u"sleep"));
        QCOMPARE(idle->workDone(), idle->workDone());
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

    void theProcessEndsWhenTheProgramIsKilled_data() {
        QTest::addColumn<QString>("script");
        QTest::newRow("the script becomes it") << execScript;
        QTest::newRow("the script stays") << stayingScript;
        QTest::newRow("the script has gone") << u"sleep 600 & echo $!"_s;
    }
    void theProcessEndsWhenTheProgramIsKilled() {
        QFETCH(QString, script);
        QProcess program;
        QVERIFY(startProgram(program, script));
        const qint64 engine = program.readLine().trimmed().toLongLong();
        QVERIFY(engine > 0);
        QVERIFY(isRunning(engine));
        program.kill();
        QVERIFY(program.waitForFinished(limit));
        QTRY_VERIFY_WITH_TIMEOUT(!isRunning(engine), limit);
    }

    void howItEndsIsToldToAProgramThatWasStartedToIgnoreIt() {
        QProcess program;
        program.setChildProcessModifier([] { signal(SIGCHLD, SIG_IGN); });
        QVERIFY(startProgram(program, u"echo x; exit 3"_s));
        program.readLine();
        while (!program.canReadLine() && program.waitForReadyRead(limit)) {
        }
        QCOMPARE(program.readLine(), QByteArray("ended by signal 0\n"));
        program.kill();
        QVERIFY(program.waitForFinished(limit));
    }
};

static int run(int argc, char** argv) {
    if (QCoreApplication::arguments().value(1) == u"--start-engine") {
        const QString script = QCoreApplication::arguments().value(2);
        const auto process = shell(script);
        printf("%lld\n", saidBy(*process));
        fflush(stdout);
        if (script.endsWith(u"exit 3")) {
            (void)QTest::qWaitFor([&] { return !process->isRunning(); }, limit);
            printf("ended by signal %d\n", process->endSignal());
            fflush(stdout);
        }
        pause();
    }
    EngineProcessTests tests;
    return QTest::qExec(&tests, argc, argv);
}
TELLWICK_TEST_FUNCTION(EngineProcessTests, EventLoop, run)

#include "EngineProcessTests.moc"
