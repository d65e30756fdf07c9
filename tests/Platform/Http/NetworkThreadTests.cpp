// SPDX-License-Identifier: MIT
#include "tests/support/HttpFixture.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

using namespace platform;
using tests::HttpFixture;
using tests::Script;
using tests::ScriptedServer;

namespace {

Task<bool> runsThere(Executor& executor) {
    co_return executor.isCurrent();
}

QStringList openDescriptors(const QString& process = QStringLiteral("self")) {
    return QDir(QStringLiteral("/proc/%1/fd").arg(process))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

/// A program that does nothing until it is ended.
class IdleProgram {
public:
    IdleProgram() {
        m_process.start(QStringLiteral("cat"), QStringList());
        // Once it has answered it has no library of its own open any more.
        m_process.write("ready\n");
        m_process.waitForReadyRead();
    }
    ~IdleProgram() {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    QStringList descriptors() const {
        return openDescriptors(QString::number(m_process.processId()));
    }

private:
    QProcess m_process;
};

} // namespace

class NetworkThreadTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void tasksOfItsScopeRunOnItsThread() {
        Executor& executor = m->network->scope().executor();
        QVERIFY(!executor.isCurrent());
        QCOMPARE(m->run(runsThere(executor)).value, true);
        QCOMPARE(tests::runTask(m->main, runsThere(executor)).value, false);
    }

    void endingItWithRepliesInFlightTakesNoTimeAndLeavesNothing() {
        m.reset();
        const qsizetype before = openDescriptors().size();
        init();
        ScriptedServer& server = m->server;
        server.enqueue(Script().hold());                           // before the head
        server.enqueue(Script().send("HTTP/1.1 200").hold());      // inside it
        server.enqueue(Script().head(200).hold());                 // behind it
        server.enqueue(Script().head(200).send("a\nb\nc").hold()); // inside a line
        server.enqueue(Script().head(200).send("a\n").hold());     // abandoned, below
        for (int i = 0; i < 5; ++i) {
            m->watch();
            QTRY_COMPARE(server.requestCount(), i + 1);
        }
        m->task.cancel();
        QElapsedTimer timer;
        timer.start();
        m->network.reset();
        QVERIFY2(timer.elapsed() < 1000, "ending the network thread waits for something");
        for (int i = 0; i < 5; ++i)
            QTRY_VERIFY(server.clientClosed(i));
        m.reset();
        QCOMPARE(openDescriptors().size(), before);
    }

    void endingItInTheMiddleOfAFloodLeavesNothing() {
        m->server.setFallback(
            Script().head(200).send(QByteArray("0123456789\n").repeated(3'000'000)));
        for (int round = 0; round < 5; ++round) {
            const auto seen = m->watch();
            QTRY_VERIFY(!seen->elements.isEmpty());
            m->network.emplace();
        }
    }

    void aProgramStartedMeanwhileInheritsNoConnection() {
        m.reset();
        const QStringList before = IdleProgram().descriptors();
        init();
        m->server.enqueue(Script().head(200).send("a\n").hold());
        const auto seen = m->watch();
        QTRY_COMPARE(seen->elements, QByteArrayList{"a"});
        const IdleProgram program;
        QCOMPARE(program.descriptors(), before);
        m->network.reset();
        QTRY_VERIFY(m->server.clientClosed());
        QVERIFY(program.isRunning());
    }

private:
    std::optional<HttpFixture> m;
};

TELLWICK_TEST(NetworkThreadTests, EventLoop)
#include "NetworkThreadTests.moc"
