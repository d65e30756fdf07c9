// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpError.h"
#include "Platform/Json/Json.h"
#include "Tellwick/Backends/OllamaError.h"
#include "tests/Tellwick/Backends/OllamaFixture.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>

#include <thread>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::chatLine;
using tests::OllamaFixture;
using tests::runTask;
using tests::Script;
using tests::ScriptedServer;

namespace {

/// The value of a line like "VmRSS:  123 kB" in the process's status, in bytes.
qint64 residentMemory() {
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& row : file.readAll().split('\n'))
        if (row.startsWith("VmRSS:"))
            return row.mid(6).simplified().split(' ').value(0).toLongLong() * 1024;
    return -1;
}

} // namespace

class OllamaReplyTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_fixture.reset(); }

    void everyLineYieldsTheTextSoFar();
    void aReplyEnds_data();
    void aReplyEnds();
    void linesAreShownAsTheyCome();
    void aStatusOtherThan200EndsTheStream_data();
    void aStatusOtherThan200EndsTheStream();
    void aRedirectContactsNobodyElse();
    void aBodyOfAnotherStatusIsNotWaitedFor();
    void aStoppedServerShowsAsAnErrorOfTheTransport();
    void aResetMidLineKeepsTheTextBefore();
    void silenceEndsTheReplyAsATimeout();
    void theReplyIsReadToItsEndWithoutAReader_data();
    void theReplyIsReadToItsEndWithoutAReader();
    void linesAreDecodedOnTheNetworkThread();
    void aReplyMayBeAskedForOnAnyThread();
    void aReplyOutlivesItsBackend();
    void repliesRunAtTheSameTime();
    void aHundredThousandLinesThatNobodyReadsCostMemoryInProportion();
    void endingTheNetworkThreadEndsRepliesAtOnce();

private:
    std::unique_ptr<OllamaFixture> m_fixture;
};

void OllamaReplyTests::init() {
    m_fixture = std::make_unique<OllamaFixture>();
    const QString fault = m_fixture->start();
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void OllamaReplyTests::everyLineYieldsTheTextSoFar() {
    const auto reply = m_fixture->askAndWait(
        Script::streamed(chatLine(u"Hel"_s) + chatLine(u"lo"_s) + chatLine(QString(), true)));
    QCOMPARE(reply->texts(), (QStringList{u"Hel"_s, u"Hello"_s, u"Hello"_s}));
    QVERIFY(!reply->error);
}

void OllamaReplyTests::aReplyEnds_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<bool>("isReadingError");
    const auto row = [](const char* name, QByteArray body, QStringList texts, bool fails = false) {
        QTest::newRow(name) << body << texts << fails;
    };
    const QByteArray a = chatLine(u"a"_s);
    row("without a done line", a + chatLine(u"b"_s), {u"a"_s, u"ab"_s});
    row("without anything", "", {});
    row("with empty lines between", a + "\n\r\n\r" + chatLine(u"b"_s, true), {u"a"_s, u"ab"_s});
    row("with a done line without a line end", a + chatLine(u"b"_s, true).chopped(1),
        {u"a"_s, u"ab"_s});
    row("at the done line", chatLine(u"a"_s, true) + chatLine(u"b"_s) + "rubbish\n", {u"a"_s});
    row("with CR LF",
        chatLine(u"a"_s).replace("\n", "\r\n") + chatLine(u"b"_s, true).replace("\n", "\r\n"),
        {u"a"_s, u"ab"_s});
    row("with CR",
        chatLine(u"a"_s).replace("\n", "\r") + chatLine(u"b"_s, true).replace("\n", "\r"),
        {u"a"_s, u"ab"_s});
    row("with an error line", a + "{\"error\":\"out of memory\"}\n" + chatLine(u"b"_s, true),
        {u"a"_s}, true);
    row("with rubbish", a + "oops\n" + chatLine(u"b"_s, true), {u"a"_s}, true);
    row("with a line of blanks", a + "  \n" + chatLine(u"b"_s, true), {u"a"_s}, true);
    row("with a line cut off", a + R"({"message":{"content":"b")", {u"a"_s}, true);
    row("with invalid UTF-8", a + "{\"message\":{\"content\":\"\xFF\"},\"done\":false}\n", {u"a"_s},
        true);
    row("with HTML", "<html>\n</html>\n", {}, true);
    row("with a thinking model's lines",
        R"({"message":{"role":"assistant","content":"","thinking":"hm"},"done":false})"
        "\n" +
            chatLine(u"b"_s, true),
        {QString(), u"b"_s});
    row("with NUL and U+2028", chatLine(u"x"_s + QChar(0) + u"y\u2028z"_s, true),
        {u"x"_s + QChar(0) + u"y\u2028z"_s});
    row("with a line of 8 MB", chatLine(QString(8'000'000, u'x'), true),
        {QString(8'000'000, u'x')});
    row("nested deep", R"({"message":)" + QByteArray(100'000, '[') + "\n", {}, true);
}

void OllamaReplyTests::aReplyEnds() {
    QFETCH(QByteArray, body);
    const auto reply = m_fixture->askAndWait(Script::streamed(body));
    QTEST(reply->texts(), "texts");
    QTEST(reply->errorAs<JsonReadingError>().has_value(), "isReadingError");
    QTEST(static_cast<bool>(reply->error), "isReadingError");
}

void OllamaReplyTests::linesAreShownAsTheyCome() {
    const QByteArray second = chatLine(u"é🙂"_s, true);
    const qsizetype cut = second.indexOf("\xF0\x9F") + 2; // in the middle of a character
    m_fixture->server->enqueue(Script()
                                   .head(200, {"Transfer-Encoding: chunked"})
                                   .chunk(chatLine(u"a"_s))
                                   .gate()
                                   .chunk(second.first(cut))
                                   .gate()
                                   .chunk(second.sliced(cut))
                                   .chunk({}));
    OllamaBackend asked = m_fixture->backend();
    const auto reply = m_fixture->ask(asked);
    QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
    m_fixture->server->release();
    m_fixture->server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), (QStringList{u"a"_s, u"aé🙂"_s}));
}

void OllamaReplyTests::aStatusOtherThan200EndsTheStream_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("201") << 201 << chatLine(u"a"_s, true);
    QTest::newRow("204") << 204 << QByteArray();
    QTest::newRow("301") << 301 << QByteArray("moved");
    QTest::newRow("404 with JSON") << 404 << QByteArray(R"({"error":"model 'x' not found"})");
    QTest::newRow("500 with HTML") << 500 << QByteArray("<html>oops</html>");
    QTest::newRow("503") << 503 << QByteArray("busy");
}

void OllamaReplyTests::aStatusOtherThan200EndsTheStream() {
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    const auto reply = m_fixture->askAndWait(
        status == 204 ? Script().head(204) : Script::reply(status, body, "text/html"));
    QVERIFY(reply->texts().isEmpty());
    QVERIFY(reply->errorAs<OllamaError>().has_value());
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (%1)."_s.arg(status));
}

void OllamaReplyTests::aRedirectContactsNobodyElse() {
    ScriptedServer other;
    QVERIFY(other.listen());
    const auto reply = m_fixture->askAndWait(Script().head(
        301, {"Location: http://127.0.0.1:" + QByteArray::number(other.port()) + "/api/chat",
              "Content-Length: 0"}));
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (301)."_s);
    QCOMPARE(m_fixture->server->requestCount(), 1);
    QCOMPARE(other.requestCount(), 0);
}

void OllamaReplyTests::aBodyOfAnotherStatusIsNotWaitedFor() {
    const auto reply = m_fixture->askAndWait(Script().head(500, {"Content-Length: 100"}).hold());
    QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (500)."_s);
    QTRY_VERIFY(m_fixture->server->clientClosed());
}

void OllamaReplyTests::aStoppedServerShowsAsAnErrorOfTheTransport() {
    m_fixture->server->stop();
    OllamaBackend asked = m_fixture->backend();
    QVERIFY(asked.isAvailable());
    const auto reply = m_fixture->ask(asked);
    QTRY_VERIFY(reply->hasEnded);
    QVERIFY(reply->errorAs<HttpError>().has_value());
    QCOMPARE(reply->errorText(), u"Could not connect to the server."_s);
    QVERIFY(reply->texts().isEmpty());
}

void OllamaReplyTests::aResetMidLineKeepsTheTextBefore() {
    m_fixture->server->enqueue(
        Script().head(200).send(chatLine(u"a"_s) + R"({"message":{"con)").gate().reset());
    OllamaBackend asked = m_fixture->backend();
    const auto reply = m_fixture->ask(asked);
    QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
    m_fixture->server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), QStringList{u"a"_s});
    QCOMPARE(reply->errorText(), u"The connection to the server was lost."_s);
}

void OllamaReplyTests::silenceEndsTheReplyAsATimeout() {
    m_fixture->server->enqueue(Script().head(200).send(chatLine(u"a"_s)).hold());
    OllamaBackend asked({u"m"_s, 1}, *m_fixture->network, std::chrono::milliseconds(100));
    const auto reply = m_fixture->ask(asked);
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), QStringList{u"a"_s});
    QCOMPARE(reply->errorText(), u"The request timed out."_s);
}

void OllamaReplyTests::theReplyIsReadToItsEndWithoutAReader_data() {
    QTest::addColumn<bool>("isBegun"); // whether somebody has read the reply's beginning
    QTest::newRow("stopped early") << true;
    QTest::newRow("never read") << false;
}

void OllamaReplyTests::theReplyIsReadToItsEndWithoutAReader() {
    QFETCH(bool, isBegun);
    // More than the connection holds on its way: only who reads it lets the server send it all.
    // Then the done line makes the client close; the script itself keeps the connection open.
    m_fixture->server->enqueue(Script()
                                   .head(200)
                                   .send(chatLine(u"a"_s))
                                   .gate()
                                   .send(chatLine(QString(4'000, u'b')).repeated(2'000))
                                   .gate()
                                   .send(chatLine(u"c"_s, true))
                                   .hold());
    OllamaBackend asked = m_fixture->backend();
    auto stream = asked.streamResponse(u"Hi"_s, {}, QString());
    std::shared_ptr<tests::SeenReply> reply;
    if (isBegun) {
        reply = m_fixture->watchReply(std::move(stream));
        QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
        m_fixture->task.cancel();
        QTRY_VERIFY(reply->hasEnded);
        QVERIFY(!reply->error);
    } else {
        const ReplyStream dropped = std::move(stream);
    }
    m_fixture->server->release();
    const ScriptedServer& server = *m_fixture->server;
    QTRY_VERIFY_WITH_TIMEOUT(server.gatesReached() == 2 || server.isFinished(), 30'000);
    QVERIFY2(!server.isFinished(), "the reply was given up");
    m_fixture->server->release();
    QTRY_VERIFY(m_fixture->server->clientClosed());
    if (reply)
        QCOMPARE(reply->texts(), QStringList{u"a"_s});
}

void OllamaReplyTests::linesAreDecodedOnTheNetworkThread() {
    // A line that does not read ends the request. This thread's loop stands still until the server
    // has seen it.
    m_fixture->server->enqueue(Script().head(200).send(chatLine(u"a"_s) + "oops\n").hold());
    OllamaBackend asked = m_fixture->backend();
    const auto reply = m_fixture->ask(asked);
    QDeadlineTimer deadline(30'000);
    while (!m_fixture->server->clientClosed() && !deadline.hasExpired())
        std::this_thread::yield();
    QVERIFY(m_fixture->server->clientClosed());
    QVERIFY(!reply->hasEnded);
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), QStringList{u"a"_s});
}

void OllamaReplyTests::aReplyMayBeAskedForOnAnyThread() {
    m_fixture->server->enqueue(Script::streamed(chatLine(u"a"_s, true)));
    OllamaBackend asked = m_fixture->backend();
    std::optional<ReplyStream> stream;
    std::thread([&] { stream.emplace(asked.streamResponse(u"Hi"_s, {}, QString())); }).join();
    const auto reply = m_fixture->watchReply(std::move(*stream));
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), QStringList{u"a"_s});
}

void OllamaReplyTests::aReplyOutlivesItsBackend() {
    m_fixture->server->enqueue(
        Script().head(200).send(chatLine(u"a"_s)).gate().send(chatLine(u"b"_s, true)));
    auto asked = std::make_unique<OllamaBackend>(OllamaModelEntry{u"m"_s, 1}, *m_fixture->network);
    const auto reply = m_fixture->ask(*asked);
    QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
    asked.reset();
    m_fixture->server->release();
    QTRY_VERIFY(reply->hasEnded);
    QCOMPARE(reply->texts(), (QStringList{u"a"_s, u"ab"_s}));
}

void OllamaReplyTests::repliesRunAtTheSameTime() {
    m_fixture->server->enqueue(
        Script().head(200).send(chatLine(u"1"_s)).gate().send(chatLine(u"!"_s, true)));
    m_fixture->server->enqueue(
        Script().head(200).send(chatLine(u"2"_s)).gate().send(chatLine(u"?"_s, true)));
    OllamaBackend asked = m_fixture->backend();
    const auto first = m_fixture->ask(asked);
    QTRY_COMPARE(first->texts(), QStringList{u"1"_s});
    const auto second = m_fixture->ask(asked);
    QTRY_COMPARE(second->texts(), QStringList{u"2"_s});
    m_fixture->server->release(1);
    QTRY_VERIFY(second->hasEnded);
    QVERIFY(!first->hasEnded);
    m_fixture->server->release(0);
    QTRY_VERIFY(first->hasEnded);
    QCOMPARE(first->texts(), (QStringList{u"1"_s, u"1!"_s}));
    QCOMPARE(second->texts(), (QStringList{u"2"_s, u"2?"_s}));
}

void OllamaReplyTests::aHundredThousandLinesThatNobodyReadsCostMemoryInProportion() {
    constexpr int lines = 100'000;
    // The script's end is seen by the server when the client closes after the done line.
    m_fixture->server->enqueue(Script()
                                   .head(200)
                                   .send(chatLine(u"0123456789"_s).repeated(lines))
                                   .send(chatLine(QString(), true))
                                   .hold());
    const qint64 before = residentMemory();
    QVERIFY(before > 0);
    OllamaBackend asked = m_fixture->backend();
    auto stream = asked.streamResponse(u"Hi"_s, {}, QString());
    QTRY_VERIFY_WITH_TIMEOUT(m_fixture->server->isFinished(), 60'000);
    // A copy a snapshot would be 100 GB.
    QVERIFY2(residentMemory() - before < 200'000'000, "the queue of snapshots holds copies");

    struct Count {
        int elements = 0;
        TextSnapshot last;
    };
    const auto count = std::make_shared<Count>();
    constexpr auto drain = [](ReplyStream all, std::shared_ptr<Count> seen) -> Task<int> {
        while (const auto text = co_await all.next()) {
            ++seen->elements;
            seen->last = *text;
        }
        co_return seen->elements;
    };
    QCOMPARE(runTask(m_fixture->main, drain(std::move(stream), count)).value, lines + 1);
    QCOMPARE(count->last.size(), lines * 10);
}

void OllamaReplyTests::endingTheNetworkThreadEndsRepliesAtOnce() {
    m_fixture->server->setFallback(Script().head(200).send(chatLine(u"a"_s)).hold());
    OllamaBackend asked = m_fixture->backend();
    const auto reply = m_fixture->ask(asked);
    { const auto abandoned = asked.streamResponse(u"Hi"_s, {}, QString()); }
    QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
    QTRY_COMPARE(m_fixture->server->requestCount(), 2);
    QElapsedTimer timer;
    timer.start();
    m_fixture->network.reset();
    QVERIFY2(timer.elapsed() < 1000, "ending the network thread waits for a reply");
    QTRY_VERIFY(m_fixture->server->clientClosed(0) && m_fixture->server->clientClosed(1));
}

TELLWICK_TEST(OllamaReplyTests, EventLoop)
#include "OllamaReplyTests.moc"
