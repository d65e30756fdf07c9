// SPDX-License-Identifier: MIT
#include "tests/support/HttpFixture.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

using namespace platform;
using tests::HttpFixture;
using tests::Script;
using tests::ScriptedServer;

namespace {

/// Reads no more than the head.
Task<int> statusOnly(HttpClient client) {
    const HttpBody body = co_await client.bytes(HttpRequest());
    co_return body.status();
}

HttpRequest post(const QByteArray& target, const QByteArray& body) {
    HttpRequest request(target);
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = body;
    return request;
}

} // namespace

class HttpClientTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void aRequestIsSentAsItIsAndNoMore_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("fields");
        QTest::newRow("GET") << QByteArray("GET") << QByteArray() << QByteArray();
        QTest::newRow("POST") << QByteArray("POST") << QByteArray(R"({"a":"é"})")
                              << QByteArray("A: b\r\nContent-Length: 10\r\n");
        QTest::newRow("POST of nothing")
            << QByteArray("POST") << QByteArray() << QByteArray("A: b\r\nContent-Length: 0\r\n");
    }

    void aRequestIsSentAsItIsAndNoMore() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, fields);
        m->server.enqueue(Script::reply(200, "{}"));
        HttpRequest request("/api/x");
        request.method = method;
        if (method == "POST")
            request.headers = {{"A", "b"}};
        request.body = body;
        QVERIFY(m->data(request).value);
        QCOMPARE(m->server.request().head, method + " /api/x HTTP/1.1\r\nHost: 127.0.0.1:" +
                                               QByteArray::number(m->server.port()) +
                                               "\r\nConnection: close\r\n" + fields + "\r\n");
        QCOMPARE(m->server.request().body, body);
    }

    void anyStatusIsAnOrdinaryResponse_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("200") << 200 << QByteArray("{}");
        QTest::newRow("304 without a body") << 304 << QByteArray();
        QTest::newRow("404 with JSON") << 404 << QByteArray(R"({"error":"no such model"})");
        QTest::newRow("500 with HTML") << 500 << QByteArray("<html>oops</html>");
    }

    void anyStatusIsAnOrdinaryResponse() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m->server.enqueue(body.isEmpty() ? Script().head(status) : Script::reply(status, body));
        const auto outcome = m->data();
        QVERIFY2(outcome.value, qPrintable(outcome.errorText()));
        QCOMPARE(outcome.value->status, status);
        QCOMPARE(outcome.value->body, body);
    }

    void theResponseIsThereAsSoonAsItsHeadIs() {
        m->server.enqueue(Script().gate().head(200).hold());
        const auto outcome = tests::startTask(
            m->scope, tests::runThere(m->network->scope(), statusOnly(m->client())));
        QTRY_COMPARE(m->server.requestCount(), 1);
        QVERIFY(!outcome->hasEnded());
        m->server.release();
        QTRY_VERIFY(outcome->hasEnded());
        QCOMPARE(outcome->value, 200);
    }

    void aLineIsThereAsSoonAsItIsComplete() {
        m->server.enqueue(Script()
                              .head(200, {"Transfer-Encoding: chunked"})
                              .chunk("one\ntw")
                              .gate()
                              .chunk("o\r")
                              .gate()
                              .chunk("\nthree")
                              .gate()
                              .chunk({}));
        const auto seen = m->watch();
        QTRY_COMPARE(seen->elements, QByteArrayList{"one"});
        m->server.release();
        QTRY_COMPARE(seen->elements, (QByteArrayList{"one", "two"}));
        m->server.release();
        QVERIFY(!seen->hasEnded);
        m->server.release();
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, (QByteArrayList{"one", "two", "three"}));
    }

    void linesComeWholeHoweverTheyAreCut() {
        // One byte a chunk, and one a packet: the reads cut the body everywhere.
        Script script;
        script.head(200, {"Transfer-Encoding: chunked"});
        for (const char& byte : QByteArray("a🙂b\r\n\n\rc\0d\xE2\x80\xA8z", 17))
            script.chunk({&byte, 1});
        const auto seen = m->read(script.chunk({}));
        QCOMPARE(seen->errorText(), QString());
        QCOMPARE(seen->elements,
                 (QByteArrayList{"a🙂b", "", "", QByteArray("c\0d\xE2\x80\xA8z", 7)}));
    }

    void aUnixSocketServesAsWell() {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a socket.sock"));
        ScriptedServer server;
        QVERIFY2(server.listen(path), qPrintable(server.errorString()));
        server.enqueue(Script::reply(200, R"({"status":"ok"})"));
        server.enqueue(Script::streamed("data: 1\n\ndata: 2\n"));
        const HttpClient client(*m->network, HttpEndpoint::unixSocket(path));
        const auto health = m->run(client.data(HttpRequest("/health")));
        QVERIFY2(health.value, qPrintable(health.errorText()));
        QCOMPARE(health.value->body, QByteArray(R"({"status":"ok"})"));
        QCOMPARE(server.request(0).header("Host"), QByteArray("localhost"));
        const auto lines = m->read(client, post("/v1/chat/completions", "{}"));
        QCOMPARE(lines->elements, (QByteArrayList{"data: 1", "", "data: 2"}));
        QCOMPARE(server.request(1).body, QByteArray("{}"));
    }

    void aHundredThousandLinesInChunksOfTheirOwnNeedNoDeepStack() {
        const QByteArray body = QByteArray("B\r\n0123456789\n\r\n").repeated(100'000);
        const auto seen =
            m->read(Script().head(200, {"Transfer-Encoding: chunked"}).send(body).chunk({}));
        QCOMPARE(seen->elements.size(), 100'000);
    }

    void droppingTheBodyClosesTheConnection() {
        m->server.enqueue(Script().head(200).send("a\n").hold());
        QCOMPARE(m->run(statusOnly(m->client())).value, 200);
        QTRY_VERIFY(m->server.clientClosed());
    }

    void aLargeRequestBodyIsSentWhole() {
        m->server.enqueue(Script::reply(200, "ok"));
        const QByteArray body(20'000'000, 'y');
        QVERIFY(m->data(post("/", body)).value);
        QCOMPARE(m->server.request().body.size(), body.size());
    }

private:
    std::optional<HttpFixture> m;
};

TELLWICK_TEST(HttpClientTests, EventLoop)
#include "HttpClientTests.moc"
