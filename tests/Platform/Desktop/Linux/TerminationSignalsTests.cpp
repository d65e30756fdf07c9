// SPDX-License-Identifier: MIT
#include "Platform/Desktop/TerminationSignals.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QThread>

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

/// Runs the helper program, which has said that it is ready.
void start(QProcess& process, const QStringList& arguments = {}) {
    process.start(QStringLiteral(UNTIL_TERMINATED), arguments);
    QCOMPARE(lineOf(process), "ready");
}

void send(const QProcess& process, int number) {
    kill(static_cast<pid_t>(process.processId()), number);
}

} // namespace

class TerminationSignalsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSignalEndsTheProgramInItsNormalWay_data() {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
    void aSignalEndsTheProgramInItsNormalWay() {
        QFETCH(int, number);
        QProcess process;
        start(process);
        send(process, number);
        QCOMPARE(lineOf(process), "quitting");
        QVERIFY(process.waitForFinished(processLimit));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 7);
    }

    void theCallComesOnTheMainThreadFromTheLoop() {
        QThread* thread = nullptr;
        const TerminationSignals signals([&thread] { thread = QThread::currentThread(); });
        raise(SIGTERM);
        QVERIFY(!thread);
        QTRY_COMPARE(thread, QCoreApplication::instance()->thread());
    }

    void theCallComesOnce() {
        int calls = 0;
        const TerminationSignals signals([&calls] { ++calls; });
        raise(SIGTERM);
        raise(SIGHUP);
        QTRY_COMPARE(calls, 1);
        raise(SIGTERM);
        QCoreApplication::processEvents();
        QCOMPARE(calls, 1);
    }

    void aSecondInterruptEndsTheProgramAtOnce() {
        QProcess process;
        start(process, {u"stay"_s});
        send(process, SIGINT);
        QCOMPARE(lineOf(process), "quitting");
        send(process, SIGINT);
        QVERIFY(process.waitForFinished(processLimit));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    }

    void furtherTerminationsLetTheProgramFinish() {
        QProcess process;
        start(process, {u"stay"_s});
        for (const int number : {SIGTERM, SIGTERM, SIGHUP})
            send(process, number);
        QCOMPARE(lineOf(process), "quitting");
        send(process, SIGTERM);
        send(process, SIGKILL); // ends it for the test; had SIGTERM done it, the exit would tell
        QVERIFY(process.waitForFinished(processLimit));
        QCOMPARE(process.exitCode(), SIGKILL);
    }

    void whatWasIgnoredStaysIgnored() {
        const auto before = signal(SIGHUP, SIG_IGN);
        {
            int calls = 0;
            const TerminationSignals signals([&calls] { ++calls; });
            raise(SIGHUP);
            QCoreApplication::processEvents();
            QCOMPARE(calls, 0);
        }
        QVERIFY(signal(SIGHUP, before) == SIG_IGN);
    }

    void whatWasBeforeComesBack() {
        struct sigaction before {};
        sigaction(SIGTERM, nullptr, &before);
        {
            const TerminationSignals signals([] {});
            struct sigaction during {};
            sigaction(SIGTERM, nullptr, &during);
            QVERIFY(during.sa_handler != before.sa_handler);
        }
        struct sigaction after {};
        sigaction(SIGTERM, nullptr, &after);
        QVERIFY(after.sa_handler == before.sa_handler);
        QCOMPARE(after.sa_flags, before.sa_flags);
    }

    void childrenStartWithNoneOfIt() {
        const TerminationSignals signals([] {});
        QProcess child;
        child.start(u"sh"_s, {u"-c"_s, u"kill -TERM $$; echo survived"_s});
        QVERIFY(child.waitForFinished(processLimit));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QCOMPARE(child.readAll(), QByteArray());
    }
};

TELLWICK_TEST(TerminationSignalsTests, EventLoop)
#include "TerminationSignalsTests.moc"
