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
    void init() {
        m_fixture = std::make_unique<HttpFixture>();
        QVERIFY2(m_fixture->server->listen(), qPrintable(m_fixture->server->errorString()));
    }

    void cleanup() { m_fixture.reset(); }

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
        m_fixture->server->enqueue(Script::reply(200, "{}"));
        HttpRequest request("/api/x");
        request.method = method;
        if (fields.startsWith("A: b"))
            request.headers = {{"A", "b"}};
        request.body = body;
        QVERIFY(m_fixture->data(request).value);
        QCOMPARE(m_fixture->server->request().head,
                 method + " /api/x HTTP/1.1\r\nHost: 127.0.0.1:" +
                     QByteArray::number(m_fixture->server->port()) + "\r\nConnection: close\r\n" +
                     fields + "\r\n");
        QCOMPARE(m_fixture->server->request().body, body);
    }

    void anyStatusIsAnOrdinaryResponse_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("200") << 200 << QByteArray("{}");
        QTest::newRow("204 without a body") << 204 << QByteArray();
        QTest::newRow("304 without a body") << 304 << QByteArray();
        QTest::newRow("404 with JSON") << 404 << QByteArray(R"({"error":"no such model"})");
        QTest::newRow("500 with HTML") << 500 << QByteArray("<html>oops</html>");
        QTest::newRow("599") << 599 << QByteArray("x");
    }

    void anyStatusIsAnOrdinaryResponse() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m_fixture->server->enqueue(body.isEmpty() ? Script().head(status)
                                                  : Script::reply(status, body));
        const auto outcome = m_fixture->data();
        QVERIFY2(outcome.value, qPrintable(outcome.errorText()));
        QCOMPARE(outcome.value->status(), status);
        QCOMPARE(outcome.value->body, body);
    }

    void theResponseIsThereAsSoonAsItsHeadIs() {
        m_fixture->server->enqueue(Script().gate().head(200).hold());
        const auto outcome =
            tests::startTask(*m_fixture->scope, tests::runThere(m_fixture->network->scope(),
                                                                statusOnly(m_fixture->client())));
        QTRY_COMPARE(m_fixture->server->requestCount(), 1);
        QVERIFY(!outcome->hasEnded());
        m_fixture->server->release();
        QTRY_VERIFY(outcome->hasEnded());
        QCOMPARE(outcome->value, 200);
    }

    void aLineIsThereAsSoonAsItIsComplete() {
        m_fixture->server->enqueue(Script()
                                       .head(200, {"Transfer-Encoding: chunked"})
                                       .chunk("one\ntw")
                                       .gate()
                                       .chunk("o\r")
                                       .gate()
                                       .chunk("\nthree")
                                       .gate()
                                       .chunk({}));
        const auto seen = m_fixture->watch();
        QTRY_COMPARE(seen->elements, QByteArrayList{"one"});
        m_fixture->server->release();
        QTRY_COMPARE(seen->elements, (QByteArrayList{"one", "two"}));
        m_fixture->server->release();
        QVERIFY(!seen->hasEnded);
        m_fixture->server->release();
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, (QByteArrayList{"one", "two", "three"}));
    }

    void linesComeWholeHoweverTheyAreCut_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArrayList>("lines");
        QTest::newRow("a character of four bytes")
            << QByteArray("a🙂b\nc\n") << QByteArrayList{"a🙂b", "c"};
        QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QByteArrayList{"a", "b"};
        QTest::newRow("empty lines") << QByteArray("\n\r\n\rx") << QByteArrayList{"", "", "", "x"};
        QTest::newRow("NUL and U+2028") << QByteArray("a\0b\xE2\x80\xA8z\n", 8)
                                        << QByteArrayList{QByteArray("a\0b\xE2\x80\xA8z", 7)};
    }

    void linesComeWholeHoweverTheyAreCut() {
        QFETCH(QByteArray, body);
        QFETCH(QByteArrayList, lines);
        // One byte a chunk, and one a packet: the reads cut the body everywhere.
        Script script;
        script.head(200, {"Transfer-Encoding: chunked"});
        for (const char& byte : body)
            script.chunk({&byte, 1});
        const auto seen = m_fixture->read(script.chunk({}));
        QCOMPARE(seen->errorText(), QString());
        QCOMPARE(seen->elements, lines);
    }

    void aUnixSocketServesAsWell() {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a socket.sock"));
        ScriptedServer server;
        QVERIFY2(server.listen(path), qPrintable(server.errorString()));
        server.enqueue(Script::reply(200, R"({"status":"ok"})"));
        server.enqueue(Script::streamed("data: 1\n\ndata: 2\n"));
        const HttpClient client(*m_fixture->network, HttpEndpoint::unixSocket(path));
        const auto health = m_fixture->run(client.data(HttpRequest("/health")));
        QVERIFY2(health.value, qPrintable(health.errorText()));
        QCOMPARE(health.value->body, QByteArray(R"({"status":"ok"})"));
        QCOMPARE(server.request(0).header("Host"), QByteArray("localhost"));
        const auto lines = m_fixture->read(client, post("/v1/chat/completions", "{}"));
        QCOMPARE(lines->elements, (QByteArrayList{"data: 1", "", "data: 2"}));
        QCOMPARE(server.request(1).body, QByteArray("{}"));
    }

    void aHundredThousandLinesInChunksOfTheirOwnNeedNoDeepStack() {
        const QByteArray body = QByteArray("B\r\n0123456789\n\r\n").repeated(100'000);
        const auto seen = m_fixture->read(
            Script().head(200, {"Transfer-Encoding: chunked"}).send(body).chunk({}));
        QCOMPARE(seen->elements.size(), 100'000);
    }

    void aLineOf8MegabytesComesWhole() {
        const auto seen =
            m_fixture->read(Script::streamed(QByteArray(8'000'000, 'x') + "\nnext\n"));
        QCOMPARE(seen->elements, (QByteArrayList{QByteArray(8'000'000, 'x'), "next"}));
    }

    void severalRequestsRunAtTheSameTime() {
        m_fixture->server->enqueue(Script().head(200).send("first\n").gate());
        m_fixture->server->enqueue(Script().head(200).send("second\n").gate());
        const auto first = m_fixture->watch();
        QTRY_COMPARE(first->elements, QByteArrayList{"first"});
        const auto second = m_fixture->watch();
        QTRY_COMPARE(second->elements, QByteArrayList{"second"});
        m_fixture->server->release(1);
        QTRY_VERIFY(second->hasEnded);
        QVERIFY(!first->hasEnded);
        m_fixture->server->release(0);
        QTRY_VERIFY(first->hasEnded);
    }

    void droppingTheBodyClosesTheConnection() {
        m_fixture->server->enqueue(Script().head(200).send("a\n").hold());
        QCOMPARE(m_fixture->run(statusOnly(m_fixture->client())).value, 200);
        QTRY_VERIFY(m_fixture->server->clientClosed());
    }

    void aLargeRequestBodyIsSentWhole() {
        m_fixture->server->enqueue(Script::reply(200, "ok"));
        const QByteArray body(20'000'000, 'y');
        QVERIFY(m_fixture->data(post("/", body)).value);
        QCOMPARE(m_fixture->server->request().body.size(), body.size());
    }

private:
    std::unique_ptr<HttpFixture> m_fixture;
};

TELLWICK_TEST(HttpClientTests, EventLoop)
#include "HttpClientTests.moc"
