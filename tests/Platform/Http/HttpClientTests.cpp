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

namespace {

Task<QByteArrayList> readLines(HttpClient client, HttpRequest request) {
    QByteArrayList lines;
    HttpBody body = co_await client.bytes(std::move(request));
    while (const auto line = co_await body.nextLine())
        lines.append(*line);
    co_return lines;
}

/// Reads lines into a list that the test watches.
Task<int> watchLines(HttpClient client, std::shared_ptr<QByteArrayList> seen) {
    HttpBody body = co_await client.bytes(HttpRequest());
    while (const auto line = co_await body.nextLine())
        seen->append(*line);
    co_return body.status();
}

/// Runs the whole task on the network thread, as a producer of a reply does.
template <class T>
Task<T> there(TaskScope& network, Task<T> task) {
    co_return co_await runOn(network, std::move(task));
}

Task<qsizetype> countLines(HttpClient client) {
    HttpBody body = co_await client.bytes(HttpRequest());
    qsizetype count = 0;
    while (co_await body.nextLine())
        ++count;
    co_return count;
}

Task<int> statusOnly(HttpClient client) {
    const HttpBody body = co_await client.bytes(HttpRequest());
    co_return body.status();
}

HttpRequest post(const QByteArray& target, const QByteArray& body) {
    HttpRequest request;
    request.method = "POST";
    request.target = target;
    request.headers = {{"Content-Type", "application/json"}};
    request.body = body;
    return request;
}

} // namespace

class HttpClientTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aWholeBodyArrives_data();
    void aWholeBodyArrives();
    void theHeadIsHandedOver();
    void aPostSendsItsHeadersAndBody();
    void aGetSendsNoBodyAndNoLength();
    void anyStatusIsAnOrdinaryResponse_data();
    void anyStatusIsAnOrdinaryResponse();
    void anInterimResponseIsPassedOver();
    void theResponseIsThereAsSoonAsItsHeadIs();
    void aLineIsThereAsSoonAsItIsComplete();
    void linesComeWholeHoweverTheyAreCut_data();
    void linesComeWholeHoweverTheyAreCut();
    void linesAreReadOnTheNetworkThreadToo();
    void aUnixSocketServesAsWell();
    void aHundredThousandLinesInChunksOfTheirOwnNeedNoDeepStack();
    void aLineOf8MegabytesComesWhole();
    void severalRequestsRunAtTheSameTime();
    void droppingTheBodyClosesTheConnection();
    void aLargeRequestBodyIsSentWhole();

private:
    HttpClient client() { return {*m_network, HttpEndpoint::loopback(m_server->port())}; }

    // What ends first stands last.
    std::unique_ptr<MainExecutor> m_main;
    std::unique_ptr<NetworkThread> m_network;
    std::unique_ptr<ScriptedServer> m_server;
};

void HttpClientTests::init() {
    m_network.reset();
    m_main = std::make_unique<MainExecutor>();
    m_network = std::make_unique<NetworkThread>();
    m_server = std::make_unique<ScriptedServer>();
    QVERIFY2(m_server->listen(), qPrintable(m_server->errorString()));
}

void HttpClientTests::aWholeBodyArrives_data() {
    QTest::addColumn<QByteArrayList>("fields");
    QTest::addColumn<QByteArrayList>("pieces");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("length given") << QByteArrayList{"Content-Length: 5"} << QByteArrayList{"hello"}
                                  << QByteArray("hello");
    QTest::newRow("length given, in pieces")
        << QByteArrayList{"Content-Length: 5"} << QByteArrayList{"h", "el", "lo"}
        << QByteArray("hello");
    QTest::newRow("more than the length") << QByteArrayList{"content-length: 5"}
                                          << QByteArrayList{"hello, world"} << QByteArray("hello");
    QTest::newRow("no body") << QByteArrayList{"Content-Length: 0"} << QByteArrayList{}
                             << QByteArray();
    QTest::newRow("up to the end")
        << QByteArrayList{} << QByteArrayList{"hel", "lo"} << QByteArray("hello");
    QTest::newRow("up to the end, nothing") << QByteArrayList{} << QByteArrayList{} << QByteArray();
    QTest::newRow("chunked") << QByteArrayList{"Transfer-Encoding: chunked"}
                             << QByteArrayList{"3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n"}
                             << QByteArray("hello");
    QTest::newRow("chunked, cut everywhere")
        << QByteArrayList{"Transfer-Encoding: chunked"}
        << QByteArrayList{"3",      "\r",    "\nh",  "el", "\r", "\n2",
                          "\r\nlo", "\r\n0", "\r\n", "\r", "\n"}
        << QByteArray("hello");
    QTest::newRow("chunked, with extensions and trailers")
        << QByteArrayList{"Transfer-Encoding: chunked"}
        << QByteArrayList{"A;x=y\r\n0123456789\r\n0;z\r\nX-Sum: 1\r\n\r\n"}
        << QByteArray("0123456789");
}

void HttpClientTests::aWholeBodyArrives() {
    QFETCH(QByteArrayList, fields);
    QFETCH(QByteArrayList, pieces);
    Script script;
    script.head(200, fields);
    for (const QByteArray& piece : pieces)
        script.gate().send(piece);
    m_server->enqueue(script);
    for (qsizetype i = 0; i < pieces.size(); ++i)
        m_server->release();
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QCOMPARE(outcome.errorText(), QString());
    QTEST(outcome.value->body, "body");
    QCOMPARE(outcome.value->status(), 200);
}

void HttpClientTests::theHeadIsHandedOver() {
    m_server->enqueue(Script().head(
        200, {"Content-Type: text/plain", "X-Two:  a ", "x-two: b", "Content-Length: 0"}));
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QVERIFY(outcome.value);
    const HttpHead& head = outcome.value->head;
    QCOMPARE(head.header("content-TYPE"), QByteArray("text/plain"));
    QCOMPARE(head.header("X-Two"), QByteArray("a"));
    QVERIFY(head.header("absent").isNull());
    QCOMPARE(head.headers.size(), 4);
}

void HttpClientTests::aPostSendsItsHeadersAndBody() {
    m_server->enqueue(Script::reply(200, "{}"));
    const auto outcome = runTask(*m_main, client().data(post("/api/chat", R"({"a":"é"})")));
    QVERIFY(outcome.value);
    const auto request = m_server->request();
    QCOMPARE(request.head,
             "POST /api/chat HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port()) +
                 "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: "
                 "10\r\n\r\n");
    QCOMPARE(request.body, QByteArray(R"({"a":"é"})"));
}

void HttpClientTests::aGetSendsNoBodyAndNoLength() {
    m_server->enqueue(Script::reply(200, "{}"));
    HttpRequest request;
    request.target = "/api/tags";
    QVERIFY(runTask(*m_main, client().data(request)).value);
    QCOMPARE(m_server->request().head,
             "GET /api/tags HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port()) +
                 "\r\nConnection: close\r\n\r\n");
    QCOMPARE(m_server->request().body, QByteArray());
}

void HttpClientTests::anyStatusIsAnOrdinaryResponse_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("204 without a body") << 204 << QByteArray();
    QTest::newRow("304 without a body") << 304 << QByteArray();
    QTest::newRow("404 with JSON") << 404 << QByteArray(R"({"error":"no such model"})");
    QTest::newRow("500 with HTML") << 500 << QByteArray("<html>oops</html>");
    QTest::newRow("599") << 599 << QByteArray("x");
}

void HttpClientTests::anyStatusIsAnOrdinaryResponse() {
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    if (body.isEmpty())
        m_server->enqueue(Script().head(status));
    else
        m_server->enqueue(Script::reply(status, body));
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QVERIFY2(outcome.value, qPrintable(outcome.errorText()));
    QCOMPARE(outcome.value->status(), status);
    QCOMPARE(outcome.value->body, body);
}

void HttpClientTests::anInterimResponseIsPassedOver() {
    m_server->enqueue(Script()
                          .send("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nX: 1\r\n")
                          .send("\r\n")
                          .head(200, {"Content-Length: 2"})
                          .send("ok"));
    const auto outcome = runTask(*m_main, client().data(HttpRequest()));
    QVERIFY2(outcome.value, qPrintable(outcome.errorText()));
    QCOMPARE(outcome.value->status(), 200);
    QCOMPARE(outcome.value->body, QByteArray("ok"));
    QVERIFY(outcome.value->head.header("X").isNull());
}

void HttpClientTests::theResponseIsThereAsSoonAsItsHeadIs() {
    m_server->enqueue(Script().gate().head(200).hold());
    TaskScope scope(*m_main);
    const auto outcome = startTask(scope, statusOnly(client()));
    QTRY_COMPARE(m_server->requestCount(), 1);
    QVERIFY(!outcome->hasEnded());
    m_server->release();
    QTRY_VERIFY(outcome->hasEnded());
    QCOMPARE(outcome->value, 200);
}

void HttpClientTests::aLineIsThereAsSoonAsItIsComplete() {
    m_server->enqueue(Script()
                          .head(200, {"Transfer-Encoding: chunked"})
                          .chunk("one\ntw")
                          .gate()
                          .chunk("o\r")
                          .gate()
                          .chunk("\nthree")
                          .gate()
                          .chunk({}));
    TaskScope scope(*m_main);
    const auto seen = std::make_shared<QByteArrayList>();
    const auto outcome = startTask(scope, watchLines(client(), seen));
    QTRY_COMPARE(*seen, QByteArrayList{"one"});
    m_server->release();
    QTRY_COMPARE(*seen, (QByteArrayList{"one", "two"}));
    m_server->release();
    QVERIFY(!outcome->hasEnded());
    m_server->release();
    QTRY_VERIFY(outcome->hasEnded());
    QCOMPARE(*seen, (QByteArrayList{"one", "two", "three"}));
    QCOMPARE(outcome->value, 200);
}

void HttpClientTests::linesComeWholeHoweverTheyAreCut_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::newRow("a character of four bytes")
        << QByteArray("a🙂b\nc\n") << QByteArrayList{"a🙂b", "c"};
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QByteArrayList{"a", "b"};
    QTest::newRow("empty lines") << QByteArray("\n\r\n\rx") << QByteArrayList{"", "", "", "x"};
    QTest::newRow("NUL and U+2028") << QByteArray("a\0b\xE2\x80\xA8z\n", 8)
                                    << QByteArrayList{QByteArray("a\0b\xE2\x80\xA8z", 7)};
}

void HttpClientTests::linesComeWholeHoweverTheyAreCut() {
    QFETCH(QByteArray, body);
    QFETCH(QByteArrayList, lines);
    // One byte a chunk, each let go by itself: the reads cut the body everywhere.
    Script script;
    script.head(200, {"Transfer-Encoding: chunked"});
    for (const char byte : body)
        script.gate().chunk({&byte, 1});
    script.chunk({});
    m_server->enqueue(script);
    TaskScope scope(*m_main);
    const auto outcome = startTask(scope, readLines(client(), HttpRequest()));
    for (qsizetype i = 0; i < body.size(); ++i) {
        m_server->release();
        QTest::qWait(0);
    }
    QTRY_VERIFY(outcome->hasEnded());
    QCOMPARE(outcome->value, lines);
}

void HttpClientTests::linesAreReadOnTheNetworkThreadToo() {
    m_server->enqueue(Script::streamed("a\nb\n"));
    const auto outcome =
        runTask(*m_main, there(m_network->scope(), readLines(client(), HttpRequest())));
    QCOMPARE(outcome.value, (QByteArrayList{"a", "b"}));
}

void HttpClientTests::aUnixSocketServesAsWell() {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a socket.sock"));
    ScriptedServer server;
    QVERIFY2(server.listen(path), qPrintable(server.errorString()));
    server.enqueue(Script::reply(200, R"({"status":"ok"})"));
    server.enqueue(Script::streamed("data: 1\n\ndata: 2\n"));
    const HttpClient client(*m_network, HttpEndpoint::unixSocket(path));
    HttpRequest request;
    request.target = "/health";
    const auto health = runTask(*m_main, client.data(request));
    QVERIFY2(health.value, qPrintable(health.errorText()));
    QCOMPARE(health.value->body, QByteArray(R"({"status":"ok"})"));
    QCOMPARE(server.request(0).header("Host"), QByteArray("localhost"));
    const auto lines = runTask(*m_main, readLines(client, post("/v1/chat/completions", "{}")));
    QCOMPARE(lines.value, (QByteArrayList{"data: 1", "", "data: 2"}));
    QCOMPARE(server.request(1).body, QByteArray("{}"));
}

void HttpClientTests::aHundredThousandLinesInChunksOfTheirOwnNeedNoDeepStack() {
    QByteArray body;
    for (int i = 0; i < 100'000; ++i)
        body += "B\r\n0123456789\n\r\n";
    m_server->enqueue(Script().head(200, {"Transfer-Encoding: chunked"}).send(body).chunk({}));
    m_server->enqueue(Script().head(200, {"Transfer-Encoding: chunked"}).send(body).chunk({}));
    QCOMPARE(runTask(*m_main, countLines(client())).value, 100'000);
    QCOMPARE(runTask(*m_main, there(m_network->scope(), countLines(client()))).value, 100'000);
}

void HttpClientTests::aLineOf8MegabytesComesWhole() {
    m_server->enqueue(Script::streamed(QByteArray(8'000'000, 'x') + "\nnext\n"));
    const auto outcome = runTask(*m_main, readLines(client(), HttpRequest()));
    QVERIFY2(outcome.value, qPrintable(outcome.errorText()));
    QCOMPARE(outcome.value->size(), 2);
    QCOMPARE(outcome.value->first().size(), 8'000'000);
    QCOMPARE(outcome.value->last(), QByteArray("next"));
}

void HttpClientTests::severalRequestsRunAtTheSameTime() {
    m_server->enqueue(Script().head(200).send("first\n").gate());
    m_server->enqueue(Script().head(200).send("second\n").gate());
    TaskScope scope(*m_main);
    const auto first = std::make_shared<QByteArrayList>();
    const auto second = std::make_shared<QByteArrayList>();
    const auto firstOutcome = startTask(scope, watchLines(client(), first));
    QTRY_COMPARE(*first, QByteArrayList{"first"});
    const auto secondOutcome = startTask(scope, watchLines(client(), second));
    QTRY_COMPARE(*second, QByteArrayList{"second"});
    m_server->release(1);
    QTRY_VERIFY(secondOutcome->hasEnded());
    QVERIFY(!firstOutcome->hasEnded());
    m_server->release(0);
    QTRY_VERIFY(firstOutcome->hasEnded());
}

void HttpClientTests::droppingTheBodyClosesTheConnection() {
    m_server->enqueue(Script().head(200).send("a\n").hold());
    QCOMPARE(runTask(*m_main, statusOnly(client())).value, 200);
    QTRY_VERIFY(m_server->clientClosed());
}

void HttpClientTests::aLargeRequestBodyIsSentWhole() {
    m_server->enqueue(Script::reply(200, "ok"));
    const QByteArray body(20'000'000, 'y');
    QVERIFY(runTask(*m_main, client().data(post("/", body))).value);
    QCOMPARE(m_server->request().body.size(), body.size());
}

TELLWICK_TEST(HttpClientTests, EventLoop)
#include "HttpClientTests.moc"
