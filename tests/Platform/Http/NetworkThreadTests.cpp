// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Http/HttpClient.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <QDir>

using namespace platform;
using tests::runTask;
using tests::Script;
using tests::ScriptedServer;
using tests::startTask;

namespace {

Task<void> produce(HttpClient client, StreamContinuation<QByteArray> continuation) {
    try {
        HttpBody body = co_await client.bytes(HttpRequest());
        while (const auto line = co_await body.nextLine())
            continuation.yield(*line);
        continuation.finish();
    } catch (...) {
        continuation.finish(std::current_exception());
    }
}

Task<int> read(HttpClient client, std::shared_ptr<int> lines) {
    HttpBody body = co_await client.bytes(HttpRequest());
    while (co_await body.nextLine())
        ++*lines;
    co_return *lines;
}

Task<std::shared_ptr<HttpBody>> open(HttpClient client) {
    HttpBody body = co_await client.bytes(HttpRequest());
    co_return std::make_shared<HttpBody>(std::move(body));
}

Task<bool> runsThere(Executor& executor) {
    co_return executor.isCurrent();
}

Task<bool> there(TaskScope& scope, Task<bool> task) {
    co_return co_await runOn(scope, std::move(task));
}

int openDescriptors() {
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd"))
                                .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                                .size());
}

} // namespace

class NetworkThreadTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tasksOfItsScopeRunOnItsThread();
    void endingItWithRepliesInFlightTakesNoTimeAndLeavesNothing();
    void endingItInTheMiddleOfAFloodLeavesNothing();
    void aReadingThatGoesFirstClosesItsConnection();
    void aRequestAbandonedBeforeItsHeadLeavesNothing();
    void aBodyMayOutliveTheThread();
    void aClientMayOutliveTheThread();
    void cancellingATaskOnTheThreadClosesItsConnection();
};

void NetworkThreadTests::tasksOfItsScopeRunOnItsThread() {
    MainExecutor executor;
    NetworkThread network;
    QVERIFY(!network.executor().isCurrent());
    QCOMPARE(runTask(executor, there(network.scope(), runsThere(network.executor()))).value, true);
    QCOMPARE(runTask(executor, runsThere(network.executor())).value, false);
}

void NetworkThreadTests::endingItWithRepliesInFlightTakesNoTimeAndLeavesNothing() {
    const int before = openDescriptors();
    auto owned = std::make_unique<ScriptedServer>();
    ScriptedServer& server = *owned;
    QVERIFY(server.listen());
    server.enqueue(Script().hold());                           // before the head
    server.enqueue(Script().send("HTTP/1.1 200").hold());      // inside it
    server.enqueue(Script().head(200).hold());                 // behind it
    server.enqueue(Script().head(200).send("a\nb\nc").hold()); // inside a line
    server.enqueue(Script().head(200).send("a\n").hold());     // abandoned, below
    MainExecutor executor;
    {
        auto network = std::make_unique<NetworkThread>();
        TaskScope scope(executor);
        const HttpClient client(*network, HttpEndpoint::loopback(server.port()));
        QList<std::shared_ptr<AsyncStream<QByteArray>>> streams;
        for (int i = 0; i < 5; ++i) {
            auto [stream, continuation] = makeStream<QByteArray>();
            streams.append(std::make_shared<AsyncStream<QByteArray>>(std::move(stream)));
            network->scope().start(produce(client, continuation));
            QTRY_COMPARE(server.requestCount(), i + 1);
        }
        streams.removeLast();
        QElapsedTimer timer;
        timer.start();
        network.reset();
        QVERIFY2(timer.elapsed() < 1000, "ending the network thread waits for something");
        for (int i = 0; i < 5; ++i)
            QTRY_VERIFY(server.clientClosed(i));
    }
    owned.reset();
    QCOMPARE(openDescriptors(), before);
}

void NetworkThreadTests::endingItInTheMiddleOfAFloodLeavesNothing() {
    ScriptedServer server;
    QVERIFY(server.listen());
    server.setFallback(Script().head(200).send(QByteArray("0123456789\n").repeated(3'000'000)));
    MainExecutor executor;
    for (int round = 0; round < 5; ++round) {
        NetworkThread network;
        TaskScope scope(executor);
        const HttpClient client(network, HttpEndpoint::loopback(server.port()));
        const auto lines = std::make_shared<int>(0);
        const auto outcome = startTask(scope, read(client, lines));
        auto [stream, continuation] = makeStream<QByteArray>();
        network.scope().start(produce(client, continuation));
        QTRY_VERIFY(*lines > 0);
    }
}

void NetworkThreadTests::aReadingThatGoesFirstClosesItsConnection() {
    ScriptedServer server;
    QVERIFY(server.listen());
    server.enqueue(Script().head(200).send("a\n").hold());
    MainExecutor executor;
    NetworkThread network;
    {
        TaskScope scope(executor);
        const auto lines = std::make_shared<int>(0);
        const auto outcome = startTask(
            scope, read(HttpClient(network, HttpEndpoint::loopback(server.port())), lines));
        QTRY_COMPARE(*lines, 1);
        QVERIFY(!server.clientClosed());
    }
    QTRY_VERIFY(server.clientClosed());
}

void NetworkThreadTests::aRequestAbandonedBeforeItsHeadLeavesNothing() {
    ScriptedServer server;
    QVERIFY(server.listen());
    server.enqueue(Script().gate().head(200).send("a\n").hold());
    MainExecutor executor;
    NetworkThread network;
    {
        TaskScope scope(executor);
        const auto lines = std::make_shared<int>(0);
        const auto outcome = startTask(
            scope, read(HttpClient(network, HttpEndpoint::loopback(server.port())), lines));
        QTRY_COMPARE(server.requestCount(), 1);
    }
    server.release();
    QTRY_VERIFY(server.clientClosed());
}

void NetworkThreadTests::aBodyMayOutliveTheThread() {
    ScriptedServer server;
    QVERIFY(server.listen());
    server.enqueue(Script().head(200).send("a\n").hold());
    MainExecutor executor;
    auto network = std::make_unique<NetworkThread>();
    const auto outcome =
        runTask(executor, open(HttpClient(*network, HttpEndpoint::loopback(server.port()))));
    network.reset();
    QTRY_VERIFY(server.clientClosed());
    QCOMPARE(outcome.value->get()->status(), 200);
}

void NetworkThreadTests::aClientMayOutliveTheThread() {
    MainExecutor executor;
    auto network = std::make_unique<NetworkThread>();
    const HttpClient client(*network, HttpEndpoint::loopback(9));
    network.reset();
    const auto outcome = runTask(executor, client.data(HttpRequest()));
    QVERIFY(isCancellation(outcome.error));
}

void NetworkThreadTests::cancellingATaskOnTheThreadClosesItsConnection() {
    ScriptedServer server;
    QVERIFY(server.listen());
    server.enqueue(Script().head(200).send("a\n").hold());
    MainExecutor executor;
    NetworkThread network;
    auto [stream, continuation] = makeStream<QByteArray>();
    TaskHandle task = network.scope().start(
        produce(HttpClient(network, HttpEndpoint::loopback(server.port())), continuation));
    QTRY_COMPARE(server.requestCount(), 1);
    task.cancel();
    QTRY_VERIFY(server.clientClosed());
}

TELLWICK_TEST(NetworkThreadTests, EventLoop)
#include "NetworkThreadTests.moc"
