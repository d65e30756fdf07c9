// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"
#include "tests/support/Files.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

// Scripts with a program that they start and say the number of; the engine's wrapper is of the
// first kind.
const auto execScript = u"echo $$; exec sleep 600"_s;
const auto stayingScript = u"sleep 600 & echo $!; wait; exit"_s;

std::unique_ptr<EngineProcess> shell(const QString& script) {
    return EngineProcess::start(u"/bin/sh"_s, {u"-c"_s, script},
                                {"PATH=" + qgetenv("PATH"), "WORD=said"});
}

/// What a script has written, which has ended.
QByteArray outputOf(const QString& script) {
    const auto process = shell(script);
    if (!QTest::qWaitFor([&] { return !process->isRunning(); }, processLimit))
        return "no end";
    return process->output();
}

/// The process that a script says it has started, once it has.
qint64 saidBy(const EngineProcess& process) {
    (void)QTest::qWaitFor([&] { return process.output().endsWith('\n'); }, processLimit);
    return process.output().trimmed().toLongLong();
}

/// Runs this program as another one, which starts an engine; the caller ends it.
bool startProgram(QProcess& program, const QString& script) {
    program.start(QCoreApplication::applicationFilePath(),
                  {u"EngineProcessTests"_s, u"--start-engine"_s, script});
    return program.waitForReadyRead(processLimit);
}

} // namespace

class EngineProcessTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatTheProcessWritesCanBeRead() {
        QCOMPARE(outputOf(u"echo out; echo err >&2"_s), QByteArray("out\nerr\n"));
    }

    void onlyTheBeginningOfALongOutputIsKept() {
        QCOMPARE(outputOf(u"head -c 200000 /dev/zero"_s).size(), 65'536);
    }

    void theSignalThatEndedItIsTold_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("signal");
        QTest::newRow("ended by itself") << u"exit 3"_s << 0;
        QTest::newRow("killed") << u"kill -ABRT $$"_s << SIGABRT;
        QTest::newRow("a script whose program was killed")
            << u"sh -c 'kill -ABRT $$'; exit $?"_s << SIGABRT;
    }
    void theSignalThatEndedItIsTold() {
        QFETCH(QString, script);
        const auto process = shell(script);
        QTRY_VERIFY(!process->isRunning());
        QTEST(process->endSignal(), "signal");
    }

    void aRunningProcessTellsNoSignal() {
        const auto process = shell(u"sleep 600"_s);
        QVERIFY(process->isRunning());
        QCOMPARE(process->endSignal(), 0);
    }

    void aProgramThatIsNotThereEndsAtOnce() {
        const auto process = EngineProcess::start(u"/nowhere/engine"_s, {}, {});
        QVERIFY(process);
        QTRY_VERIFY(!process->isRunning());
        QCOMPARE(process->endSignal(), 0);
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
        QTRY_VERIFY_WITH_TIMEOUT(busy->workDone() > before, processLimit);
        const auto idle = shell(u"exec sleep 600"_s);
        QTRY_VERIFY(QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(idle->id())).endsWith(u"sleep"));
        QCOMPARE(idle->workDone(), idle->workDone());
    }

    void theEnvironmentIsTheOneGiven() {
        qputenv("ENGINE_OTHER", "1");
        QCOMPARE(outputOf(u"echo $WORD$ENGINE_OTHER"_s), QByteArray("said\n"));
    }

    void noOpenFileOfTheProgramReachesTheProcess() {
        const int file = open("/dev/null", O_RDONLY); // on purpose not closed on exec
        QVERIFY(file > 2);
        const QByteArray output = outputOf(u"ls /proc/self/fd"_s);
        close(file);
        // Its three, and the one with which ls reads the folder.
        QCOMPARE(output, QByteArray("0\n1\n2\n3\n"));
    }

    void theProcessHasASessionOfItsOwn() {
        const auto process = shell(u"sleep 600"_s);
        QTRY_COMPARE(getsid(process->id()), process->id());
    }

    void itIsTheFirstToGoWhenMemoryRunsOut() {
        QCOMPARE(outputOf(u"cat /proc/self/oom_score_adj; ulimit -c"_s), QByteArray("500\n0\n"));
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
        const qint64 engine = lineOf(program).toLongLong();
        QVERIFY(engine > 0);
        QVERIFY(isRunning(engine));
        program.kill();
        QVERIFY(program.waitForFinished(processLimit));
        QTRY_VERIFY_WITH_TIMEOUT(!isRunning(engine), processLimit);
    }

    void howItEndsIsToldToAProgramThatWasStartedToIgnoreIt() {
        QProcess program;
        program.setChildProcessModifier([] { signal(SIGCHLD, SIG_IGN); });
        QVERIFY(startProgram(program, u"echo x; exit 3"_s));
        lineOf(program);
        QCOMPARE(lineOf(program), QByteArray("ended by signal 0"));
        program.kill();
        QVERIFY(program.waitForFinished(processLimit));
    }
};

static int run(int argc, char** argv) {
    if (QCoreApplication::arguments().value(1) == u"--start-engine") {
        const QString script = QCoreApplication::arguments().value(2);
        const auto process = shell(script);
        printf("%lld\n", saidBy(*process));
        fflush(stdout);
        if (script.endsWith(u"exit 3")) {
            (void)QTest::qWaitFor([&] { return !process->isRunning(); }, processLimit);
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
