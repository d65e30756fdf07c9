// SPDX-License-Identifier: MIT
#include "tests/support/HttpFixture.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

#include <atomic>

using namespace platform;
using tests::HttpFixture;
using tests::Script;
using tests::ScriptedServer;
using Kind = HttpError::Kind;
using namespace std::chrono_literals;

namespace {

HttpRequest impatient(std::chrono::milliseconds idleTimeout) {
    HttpRequest request;
    request.idleTimeout = idleTimeout;
    return request;
}

std::optional<Kind> faultOf(const tests::Ending& ended) {
    const auto error = ended.errorAs<HttpError>();
    return error ? std::optional(error->kind()) : std::nullopt;
}

Task<void> fetch(HttpClient client, std::shared_ptr<std::atomic<bool>> wasCancelled) {
    try {
        (void)co_await client.data(HttpRequest());
    } catch (const CancellationError&) {
        *wasCancelled = true;
    }
}

} // namespace

Q_DECLARE_METATYPE(std::optional<Kind>)

class HttpFaultTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void errorsAreSentences_data() {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("refused") << Kind::CouldNotConnect
                                 << QStringLiteral("Could not connect to the server.");
        QTest::newRow("lost") << Kind::ConnectionLost
                              << QStringLiteral("The connection to the server was lost.");
        QTest::newRow("silent") << Kind::TimedOut << QStringLiteral("The request timed out.");
        QTest::newRow("not HTTP")
            << Kind::BadResponse
            << QStringLiteral("The server sent a response that could not be understood.");
        QTest::newRow("too large")
            << Kind::TooLarge << QStringLiteral("The server sent a response that is too large.");
    }

    void errorsAreSentences() {
        QFETCH(Kind, kind);
        QTEST(localizedDescription(std::make_exception_ptr(HttpError(kind))), "sentence");
    }

    void nobodyListensOnThePort() {
        m->server.stop();
        QCOMPARE(faultOf(m->data()), Kind::CouldNotConnect);
        QCOMPARE(faultOf(*m->read(m->client())), Kind::CouldNotConnect);
    }

    void nobodyListensOnTheSocket_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("absent") << QStringLiteral("absent.sock");
        QTest::newRow("a file") << QStringLiteral("file");
        QTest::newRow("longer than such a path may be") << QString(200, u'x');
    }

    void nobodyListensOnTheSocket() {
        QFETCH(QString, name);
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const HttpClient client(*m->network, HttpEndpoint::unixSocket(folder.filePath(name)));
        QCOMPARE(faultOf(*m->read(client)), Kind::CouldNotConnect);
    }

    void aBrokenResponseFails_data() {
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

    void aBrokenResponseFails() {
        QFETCH(QByteArray, bytes);
        QFETCH(std::optional<Kind>, fault);
        m->server.setFallback(Script().send(bytes));
        const auto seen = m->read(m->client());
        QTEST(QByteArrayList(seen->elements), "lines");
        QCOMPARE(faultOf(*seen), fault);
        QCOMPARE(faultOf(m->data()), fault);
    }

    void aResetMidLineFailsBehindTheLinesBefore() {
        m->server.enqueue(Script().head(200).send("one\ntwo").gate().reset());
        const auto seen = m->watch();
        QTRY_COMPARE(seen->elements, QByteArrayList{"one"});
        m->server.release();
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, QByteArrayList{"one"});
        QCOMPARE(faultOf(*seen), Kind::ConnectionLost);
    }

    void aResetInTheHeadFails() {
        const auto seen = m->read(Script().send("HTTP/1.1 200 OK\r\nX: ").reset());
        QCOMPARE(faultOf(*seen), Kind::ConnectionLost);
    }

    void aFaultInTheFramingComesBehindTheLinesBefore() {
        const auto seen = m->read(Script()
                                      .head(200, {"Transfer-Encoding: chunked"})
                                      .send("4\r\na\nb\n\r\nzzz\r\n")
                                      .hold());
        QCOMPARE(seen->elements, (QByteArrayList{"a", "b"}));
        QCOMPARE(faultOf(*seen), Kind::BadResponse);
        QTRY_VERIFY(m->server.clientClosed());
    }

    void whatIsTooLargeFails_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isWhole"); // asked for with data(), not line by line
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        QTest::newRow("a field without end") << ok + "X: " + QByteArray(200'000, 'x') << false;
        QTest::newRow("a head without end")
            << ok + QByteArray("X: y\r\n").repeated(50'000) << false;
        QTest::newRow("a body") << ok + "\r\n" + QByteArray(HttpClient::maximumBodySize + 1, 'x')
                                << true;
        QTest::newRow("a line without end")
            << ok + "\r\na\n" + QByteArray(HttpBody::maximumLineLength + 100'000, 'x') << false;
        QTest::newRow("a chunk's line without end")
            << ok + "Transfer-Encoding: chunked\r\n\r\n1;" + QByteArray(200'000, 'x') << false;
    }

    void whatIsTooLargeFails() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, isWhole);
        m->server.enqueue(Script().send(bytes).hold());
        QCOMPARE(isWhole ? faultOf(m->data()) : faultOf(*m->read(m->client())), Kind::TooLarge);
        QTRY_VERIFY(m->server.clientClosed());
    }

    void aRedirectIsNotFollowed() {
        ScriptedServer other;
        QVERIFY(other.listen());
        m->server.enqueue(Script().head(
            301, {"Location: http://127.0.0.1:" + QByteArray::number(other.port()) + "/api/chat",
                  "Content-Length: 0"}));
        QCOMPARE(m->data().value->status, 301);
        QCOMPARE(m->server.requestCount(), 1);
        QCOMPARE(other.requestCount(), 0);
    }

    void proxiesOfTheEnvironmentAreNotUsed() {
        ScriptedServer proxy;
        QVERIFY(proxy.listen());
        const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.port());
        const QByteArrayList names = {"http_proxy",  "HTTP_PROXY", "https_proxy",
                                      "HTTPS_PROXY", "all_proxy",  "ALL_PROXY"};
        for (const QByteArray& name : names)
            qputenv(name, address);
        m->server.enqueue(Script::reply(200, "direct"));
        const auto outcome = m->data();
        for (const QByteArray& name : names)
            qunsetenv(name);
        QCOMPARE(outcome.value->body, QByteArray("direct"));
        QCOMPARE(proxy.requestCount(), 0);
    }

    void silenceTimesOutBehindTheLinesBefore_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArrayList>("lines");
        QTest::newRow("before the head") << QByteArray() << QByteArrayList();
        QTest::newRow("in the head") << QByteArray("HTTP/1.1 200 OK\r\nX") << QByteArrayList();
        QTest::newRow("in the body")
            << QByteArray("HTTP/1.1 200 OK\r\n\r\na\nb") << QByteArrayList{"a"};
    }

    void silenceTimesOutBehindTheLinesBefore() {
        QFETCH(QByteArray, bytes);
        const auto seen = m->read(Script().send(bytes).hold(), impatient(50ms));
        QTEST(QByteArrayList(seen->elements), "lines");
        QCOMPARE(faultOf(*seen), Kind::TimedOut);
        QTRY_VERIFY(m->server.clientClosed());
    }

    void aCancelledTaskClosesItsConnection_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("before the head") << QByteArray();
        QTest::newRow("in the head") << QByteArray("HTTP/1.1 200 OK\r\nX");
        QTest::newRow("in the body") << QByteArray("HTTP/1.1 200 OK\r\n\r\na\nb");
    }

    void aCancelledTaskClosesItsConnection() {
        QFETCH(QByteArray, bytes);
        const auto wasCancelled = std::make_shared<std::atomic<bool>>(false);
        m->server.enqueue(Script().send(bytes).gate().hold());
        TaskHandle task = m->network->scope().start(fetch(m->client(), wasCancelled));
        QTRY_COMPARE(m->server.gatesReached(), 1);
        QVERIFY(!*wasCancelled);
        task.cancel();
        QTRY_VERIFY(*wasCancelled);
        m->server.release();
        QTRY_VERIFY(m->server.clientClosed());
    }

    void aTaskThatIsCancelledBeforeItAsksGetsNoAnswer() {
        const auto wasCancelled = std::make_shared<std::atomic<bool>>(false);
        m->server.enqueue(Script().hold());
        m->network->scope().start(fetch(m->client(), wasCancelled)).cancel();
        QTRY_VERIFY(*wasCancelled);
    }

    void eachByteStartsTheIdleTimeAnew() {
        // Sent byte by byte with pauses, head and body: twice the limit in all, but never so much
        // at once. The limit is generous, so that a slow machine does not make a pause of it.
        constexpr auto limit = 1000ms;
        const QByteArray bytes = "HTTP/1.1 200 OK\r\nA: b\r\n\r\nab\ncd\n";
        Script script;
        for (const char byte : bytes)
            script.pause(limit * 2 / static_cast<int>(bytes.size())).send(QByteArray(1, byte));
        QElapsedTimer timer;
        timer.start();
        const auto seen = m->read(script, impatient(limit));
        QVERIFY(!seen->error);
        QCOMPARE(seen->elements, (QByteArrayList{"ab", "cd"}));
        QVERIFY(timer.elapsed() > limit.count());
    }

    void aServerThatReadsNothingTimesOut() {
        // A listening socket whose connections nobody accepts: the kernel takes what its buffers
        // hold.
        m->server.hang();
        HttpRequest request = impatient(200ms);
        request.method = "POST";
        request.body = QByteArray(50'000'000, 'x');
        QCOMPARE(faultOf(m->data(request)), Kind::TimedOut);
    }

    void aHugeLengthIsNotTrusted() {
        // A length that promises more than any machine holds costs no memory.
        const auto seen =
            m->read(Script().head(200, {"Content-Length: 9000000000000000000"}).send("a\nb\n"));
        QCOMPARE(seen->elements, (QByteArrayList{"a", "b"}));
        QCOMPARE(faultOf(*seen), Kind::ConnectionLost);
    }

private:
    std::optional<HttpFixture> m;
};

TELLWICK_TEST(HttpFaultTests, EventLoop)
#include "HttpFaultTests.moc"
