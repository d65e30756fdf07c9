// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpClient.h"
#include "Platform/Http/HttpError.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

using namespace platform;
using tests::runTask;
using tests::Script;
using tests::ScriptedServer;
using tests::startTask;
using Kind = HttpError::Kind;
using namespace std::chrono_literals;

namespace {

/// What a reading saw: its lines, and how it ended.
struct Reading {
    QByteArrayList lines;
    std::optional<Kind> fault;
};

Task<Reading> read(HttpClient client, std::chrono::milliseconds idleTimeout = 60s) {
    Reading reading;
    HttpRequest request;
    request.idleTimeout = idleTimeout;
    try {
        HttpBody body = co_await client.bytes(request);
        while (const auto line = co_await body.nextLine())
            reading.lines.append(*line);
    } catch (const HttpError& error) {
        reading.fault = error.kind();
    }
    co_return reading;
}

Task<Reading> there(TaskScope& network, Task<Reading> task) {
    co_return co_await runOn(network, std::move(task));
}

quint16 freePort() {
    ScriptedServer server;
    server.listen();
    return server.port();
}

} // namespace

Q_DECLARE_METATYPE(std::optional<Kind>)

class HttpFaultTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void errorsAreSentences_data();
    void errorsAreSentences();
    void nobodyListensOnThePort();
    void nobodyListensOnTheSocket_data();
    void nobodyListensOnTheSocket();
    void aBrokenResponseFails_data();
    void aBrokenResponseFails();
    void aResetMidLineFailsBehindTheLinesBefore();
    void aResetInTheHeadFails();
    void aFaultInTheFramingComesBehindTheLinesBefore();
    void aHeadWithoutEndFails();
    void aBodyBeyondTheMaximumFails();
    void aLineWithoutEndFails();
    void aRedirectIsNotFollowed();
    void proxiesOfTheEnvironmentAreNotUsed();
    void silenceBeforeTheHeadTimesOut();
    void silenceInTheHeadTimesOut();
    void silenceInTheBodyTimesOutBehindTheLinesBefore();
    void eachByteStartsTheIdleTimeAnew();
    void aServerThatReadsNothingTimesOut();
    void aHugeLengthIsNotTrusted();

private:
    HttpClient client() { return {*m_network, HttpEndpoint::loopback(m_server->port())}; }

    // What ends first stands last.
    std::unique_ptr<MainExecutor> m_main;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<ScriptedServer> m_server;
};

void HttpFaultTests::init() {
    m_main = std::make_unique<MainExecutor>();
    m_network = std::make_unique<NetworkThread>();
    m_server = std::make_unique<ScriptedServer>();
    QVERIFY2(m_server->listen(), qPrintable(m_server->errorString()));
}

void HttpFaultTests::cleanup() {
    m_server.reset();
    m_network.reset();
    m_main.reset();
}

void HttpFaultTests::errorsAreSentences_data() {
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("refused") << Kind::CouldNotConnect
                             << QStringLiteral("Could not connect to the server.");
    QTest::newRow("lost") << Kind::ConnectionLost
                          << QStringLiteral("The connection to the server was lost.");
    QTest::newRow("silent") << Kind::TimedOut << QStringLiteral("The request timed out.");
    QTest::newRow("not HTTP") << Kind::BadResponse
                              << QStringLiteral(
                                     "The server sent a response that could not be understood.");
    QTest::newRow("too large") << Kind::TooLarge
                               << QStringLiteral("The server sent a response that is too large.");
}

void HttpFaultTests::errorsAreSentences() {
    QFETCH(Kind, kind);
    QTEST(localizedDescription(std::make_exception_ptr(HttpError(kind))), "sentence");
}

void HttpFaultTests::nobodyListensOnThePort() {
    const HttpClient client(*m_network, HttpEndpoint::loopback(freePort()));
    QCOMPARE(runTask(*m_main, client.data(HttpRequest())).errorText(),
             QStringLiteral("Could not connect to the server."));
    QCOMPARE(runTask(*m_main, read(client)).value->fault, Kind::CouldNotConnect);
    QCOMPARE(runTask(*m_main, there(m_network->scope(), read(client))).value->fault,
             Kind::CouldNotConnect);
}

void HttpFaultTests::nobodyListensOnTheSocket_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("absent") << QStringLiteral("absent.sock");
    QTest::newRow("a file") << QStringLiteral("file");
    QTest::newRow("longer than such a path may be") << QString(200, u'x');
}

void HttpFaultTests::nobodyListensOnTheSocket() {
    QFETCH(QString, name);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const HttpClient client(*m_network, HttpEndpoint::unixSocket(folder.filePath(name)));
    QCOMPARE(runTask(*m_main, read(client)).value->fault, Kind::CouldNotConnect);
}

void HttpFaultTests::aBrokenResponseFails_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::addColumn<std::optional<Kind>>("fault");
    const auto row = [](const char* name, QByteArray bytes, QByteArrayList lines,
                        std::optional<Kind> fault) {
        QTest::newRow(name) << bytes << lines << fault;
    };
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    row("nothing", "", {}, Kind::ConnectionLost);
    row("half a status line", "HTTP/1.1 20", {}, Kind::ConnectionLost);
    row("half a head", head + "Content-Length: 5\r\n", {}, Kind::ConnectionLost);
    row("an interim response alone", "HTTP/1.1 100 Continue\r\n\r\n", {}, Kind::ConnectionLost);
    row("not HTTP", "hello there, this is no HTTP\r\n\r\n", {}, Kind::BadResponse);
    row("binary", QByteArray("\0\1\2\3\xFF\xFE\0\0\0\0\0\0", 12), {}, Kind::BadResponse);
    row("another version", "HTTP/2.0 200 OK\r\n\r\n", {}, Kind::BadResponse);
    row("status of two digits", "HTTP/1.1 20 OK\r\n\r\n", {}, Kind::BadResponse);
    row("a field without a colon", head + "oops\r\n\r\n", {}, Kind::BadResponse);
    row("two lengths", head + "Content-Length: 5\r\nContent-Length: 6\r\n\r\nhello", {},
        Kind::BadResponse);
    row("a negative length", head + "Content-Length: -1\r\n\r\nhello", {}, Kind::BadResponse);
    row("length cut short", head + "Content-Length: 9\r\n\r\na\nb\ncd", {"a", "b"},
        Kind::ConnectionLost);
    row("chunk cut short", head + "Transfer-Encoding: chunked\r\n\r\n9\r\na\nb", {"a"},
        Kind::ConnectionLost);
    row("last chunk missing", head + "Transfer-Encoding: chunked\r\n\r\n4\r\na\nb\n\r\n",
        {"a", "b"}, Kind::ConnectionLost);
    row("up to the end is no fault", head + "\r\na\nbc", {"a", "bc"}, std::nullopt);
}

void HttpFaultTests::aBrokenResponseFails() {
    QFETCH(QByteArray, bytes);
    m_server->setFallback(Script().send(bytes));
    const auto here = runTask(*m_main, read(client()));
    QTEST(here.value->lines, "lines");
    QTEST(here.value->fault, "fault");
    const auto onNetwork = runTask(*m_main, there(m_network->scope(), read(client())));
    QTEST(onNetwork.value->lines, "lines");
    QTEST(onNetwork.value->fault, "fault");
    QFETCH(std::optional<Kind>, fault);
    const auto whole = runTask(*m_main, client().data(HttpRequest()));
    QCOMPARE(whole.value.has_value(), !fault.has_value());
}

void HttpFaultTests::aResetMidLineFailsBehindTheLinesBefore() {
    m_server->enqueue(Script().head(200).send("one\ntwo").gate().reset());
    TaskScope scope(*m_main);
    const auto outcome = startTask(scope, read(client()));
    QTRY_COMPARE(m_server->requestCount(), 1);
    m_server->release();
    QTRY_VERIFY(outcome->hasEnded());
    QCOMPARE(outcome->value->lines, QByteArrayList{"one"});
    QCOMPARE(outcome->value->fault, Kind::ConnectionLost);
}

void HttpFaultTests::aResetInTheHeadFails() {
    m_server->enqueue(Script().send("HTTP/1.1 200 OK\r\nX: ").gate().reset());
    m_server->release();
    QCOMPARE(runTask(*m_main, read(client())).value->fault, Kind::ConnectionLost);
}

void HttpFaultTests::aFaultInTheFramingComesBehindTheLinesBefore() {
    m_server->enqueue(
        Script().head(200, {"Transfer-Encoding: chunked"}).send("4\r\na\nb\n\r\nzzz\r\n").hold());
    const auto outcome = runTask(*m_main, read(client()));
    QCOMPARE(outcome.value->lines, (QByteArrayList{"a", "b"}));
    QCOMPARE(outcome.value->fault, Kind::BadResponse);
    QTRY_VERIFY(m_server->clientClosed());
}

void HttpFaultTests::aHeadWithoutEndFails() {
    m_server->enqueue(Script().send("HTTP/1.1 200 OK\r\nX: " + QByteArray(200'000, 'x')).hold());
    QCOMPARE(runTask(*m_main, read(client())).value->fault, Kind::TooLarge);
    m_server->enqueue(
        Script().send("HTTP/1.1 200 OK\r\n" + QByteArray("X: y\r\n").repeated(50'000)).hold());
    QCOMPARE(runTask(*m_main, read(client())).value->fault, Kind::TooLarge);
}

void HttpFaultTests::aBodyBeyondTheMaximumFails() {
    m_server->enqueue(
        Script().head(200).send(QByteArray(HttpClient::maximumBodySize + 1, 'x')).hold());
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QCOMPARE(outcome.errorAs<HttpError>()->kind(), Kind::TooLarge);
    QTRY_VERIFY(m_server->clientClosed());
}

void HttpFaultTests::aLineWithoutEndFails() {
    m_server->enqueue(Script()
                          .head(200)
                          .send("a\n" + QByteArray(HttpBody::maximumLineLength + 100'000, 'x'))
                          .hold());
    const auto outcome = runTask(*m_main, read(client()));
    QCOMPARE(outcome.value->lines, QByteArrayList{"a"});
    QCOMPARE(outcome.value->fault, Kind::TooLarge);
}

void HttpFaultTests::aRedirectIsNotFollowed() {
    ScriptedServer other;
    QVERIFY(other.listen());
    m_server->enqueue(Script().head(
        301, {"Location: http://127.0.0.1:" + QByteArray::number(other.port()) + "/api/chat",
              "Content-Length: 0"}));
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QCOMPARE(outcome.value->status(), 301);
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(other.requestCount(), 0);
}

void HttpFaultTests::proxiesOfTheEnvironmentAreNotUsed() {
    ScriptedServer proxy;
    QVERIFY(proxy.listen());
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.port());
    const QByteArrayList names = {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY",
                                  "all_proxy",  "ALL_PROXY",  "no_proxy",    "NO_PROXY"};
    for (const QByteArray& name : names)
        qputenv(name, name.toLower() == "no_proxy" ? QByteArray() : address);
    m_server->enqueue(Script::reply(200, "direct"));
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    for (const QByteArray& name : names)
        qunsetenv(name);
    QCOMPARE(outcome.value->body, QByteArray("direct"));
    QCOMPARE(proxy.requestCount(), 0);
    QCOMPARE(m_server->request().target, QByteArray("/"));
}

void HttpFaultTests::silenceBeforeTheHeadTimesOut() {
    m_server->enqueue(Script().hold());
    const auto outcome = runTask(*m_main, read(client(), 50ms));
    QCOMPARE(outcome.value->fault, Kind::TimedOut);
    QTRY_VERIFY(m_server->clientClosed());
}

void HttpFaultTests::silenceInTheHeadTimesOut() {
    m_server->enqueue(Script().send("HTTP/1.1 200 OK\r\nX").hold());
    QCOMPARE(runTask(*m_main, read(client(), 50ms)).value->fault, Kind::TimedOut);
}

void HttpFaultTests::silenceInTheBodyTimesOutBehindTheLinesBefore() {
    m_server->enqueue(Script().head(200).send("a\nb").hold());
    const auto outcome = runTask(*m_main, read(client(), 50ms));
    QCOMPARE(outcome.value->lines, QByteArrayList{"a"});
    QCOMPARE(outcome.value->fault, Kind::TimedOut);
}

void HttpFaultTests::eachByteStartsTheIdleTimeAnew() {
    // Sent byte by byte with pauses, head and body: twice the limit in all, but never so much at
    // once. The limit is generous, so that a slow machine does not make a pause of it.
    constexpr auto limit = 1000ms;
    const QByteArray bytes = "HTTP/1.1 200 OK\r\nA: b\r\n\r\nab\ncd\n";
    tests::LoopbackServer server;
    QVERIFY(server.listenOnPort(0, [&](tests::LoopbackConnection& connection) {
        for (const char& byte : bytes) {
            connection.pause(limit * 2 / static_cast<int>(bytes.size()));
            connection.send({&byte, 1});
        }
    }));
    const HttpClient slow(*m_network, HttpEndpoint::loopback(server.port()));
    QElapsedTimer timer;
    timer.start();
    const auto outcome = runTask(*m_main, read(slow, limit));
    QVERIFY(!outcome.value->fault);
    QCOMPARE(outcome.value->lines, (QByteArrayList{"ab", "cd"}));
    QVERIFY(timer.elapsed() > limit.count());
}

void HttpFaultTests::aServerThatReadsNothingTimesOut() {
    // A listening socket whose connections nobody accepts: the kernel takes what its buffers hold.
    tests::LoopbackServer server;
    QVERIFY(server.listenOnPort(0, [](tests::LoopbackConnection&) {}));
    server.stopAccepting();
    HttpRequest request;
    request.method = "POST";
    request.body = QByteArray(50'000'000, 'x');
    request.idleTimeout = 200ms;
    const HttpClient client(*m_network, HttpEndpoint::loopback(server.port()));
    QCOMPARE(runTask(*m_main, client.data(request)).errorAs<HttpError>()->kind(), Kind::TimedOut);
}

void HttpFaultTests::aHugeLengthIsNotTrusted() {
    // A length that promises more than any machine holds costs no memory.
    m_server->enqueue(Script().head(200, {"Content-Length: 9000000000000000000"}).send("a\nb\n"));
    const auto outcome = runTask(*m_main, read(client()));
    QCOMPARE(outcome.value->lines, (QByteArrayList{"a", "b"}));
    QCOMPARE(outcome.value->fault, Kind::ConnectionLost);
}

TELLWICK_TEST(HttpFaultTests, EventLoop)
#include "HttpFaultTests.moc"
