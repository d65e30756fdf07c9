// SPDX-License-Identifier: MIT
#include "Platform/Json/Json.h"
#include "Tellwick/Backends/OllamaError.h"
#include "tests/Tellwick/Backends/OllamaFixture.h"
#include "tests/support/TestMain.h"

#include <QFile>

#include <thread>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tellwick;
using tests::chatLine;
using tests::OllamaFixture;
using tests::runTask;
using tests::Script;

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

/// How many elements the stream gives, and the last of them.
Task<std::pair<int, TextSnapshot>> drain(ReplyStream stream) {
    std::pair<int, TextSnapshot> seen;
    while (const auto text = co_await stream.next())
        seen = {seen.first + 1, *text};
    co_return seen;
}

} // namespace

class OllamaReplyTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void aReplyYieldsTheTextSoFarAfterEachLineAndEnds_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("isReadingError");
        const auto row = [](const char* name, QByteArray body, QStringList texts,
                            bool fails = false) { QTest::newRow(name) << body << texts << fails; };
        const QByteArray a = chatLine(u"a"_s);
        const QByteArray b = chatLine(u"b"_s, true);
        row("at a done line that adds nothing",
            chatLine(u"Hel"_s) + chatLine(u"lo"_s) + chatLine(QString(), true),
            {u"Hel"_s, u"Hello"_s, u"Hello"_s});
        row("without a done line", a + chatLine(u"b"_s), {u"a"_s, u"ab"_s});
        row("without anything", "", {});
        row("with empty lines between", a + "\n\r\n\r" + b, {u"a"_s, u"ab"_s});
        row("with a done line without a line end", a + b.chopped(1), {u"a"_s, u"ab"_s});
        row("at the done line", b + a + "rubbish\n", {u"b"_s});
        row("with CR LF", QByteArray(a + b).replace("\n", "\r\n"), {u"a"_s, u"ab"_s});
        row("with CR", QByteArray(a + b).replace("\n", "\r"), {u"a"_s, u"ab"_s});
        row("with an error line", a + "{\"error\":\"out of memory\"}\n" + b, {u"a"_s}, true);
        row("with rubbish", a + "oops\n" + b, {u"a"_s}, true);
        row("with a line of blanks", a + "  \n" + b, {u"a"_s}, true);
        row("with a line cut off", a + "{\"message\":{\"content\":\"b\"", {u"a"_s}, true);
        row("with invalid UTF-8", a + "{\"message\":{\"content\":\"\xFF\"},\"done\":false}\n",
            {u"a"_s}, true);
        row("with HTML", "<html>\n</html>\n", {}, true);
        row("with a thinking model's lines",
            "{\"message\":{\"content\":\"\",\"thinking\":\"hm\"},\"done\":false}\n" + b,
            {QString(), u"b"_s});
        row("with NUL and U+2028", chatLine(u"x"_s + QChar(0) + u"y\u2028z"_s, true),
            {u"x"_s + QChar(0) + u"y\u2028z"_s});
        row("with a line of 8 MB", chatLine(QString(8'000'000, u'x'), true),
            {QString(8'000'000, u'x')});
        row("nested deep", "{\"message\":" + QByteArray(100'000, '[') + "\n", {}, true);
    }

    void aReplyYieldsTheTextSoFarAfterEachLineAndEnds() {
        QFETCH(QByteArray, body);
        const auto reply = m->askAndWait(Script::streamed(body));
        QTEST(reply->texts(), "texts");
        QTEST(reply->errorAs<JsonReadingError>().has_value(), "isReadingError");
        QTEST(static_cast<bool>(reply->error), "isReadingError");
    }

    void linesAreShownAsTheyCome() {
        const QByteArray second = chatLine(u"é🙂"_s, true);
        const qsizetype cut = second.indexOf("\xF0\x9F") + 2; // in the middle of a character
        m->server.enqueue(Script()
                              .head(200, {"Transfer-Encoding: chunked"})
                              .chunk(chatLine(u"a"_s))
                              .gate()
                              .chunk(second.first(cut))
                              .gate()
                              .chunk(second.sliced(cut))
                              .chunk({}));
        const auto reply = m->ask();
        QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
        m->server.release();
        m->server.release();
        QTRY_VERIFY(reply->hasEnded);
        QCOMPARE(reply->texts(), (QStringList{u"a"_s, u"aé🙂"_s}));
    }

    void aStatusOtherThan200EndsTheStream_data() {
        QTest::addColumn<int>("status");
        for (const int status : {201, 204, 301, 404, 500, 503})
            QTest::addRow("%d", status) << status;
    }

    void aStatusOtherThan200EndsTheStream() {
        QFETCH(int, status);
        // Its body is not waited for.
        const auto reply = m->askAndWait(
            status == 204 ? Script().head(204)
                          : Script().head(status, {"Content-Length: 100"}).send("{").hold());
        QVERIFY(reply->texts().isEmpty());
        QVERIFY(reply->errorAs<OllamaError>().has_value());
        QCOMPARE(reply->errorText(), u"Ollama returned an unexpected status (%1)."_s.arg(status));
        QTRY_VERIFY(m->server.isFinished());
        QCOMPARE(m->server.requestCount(), 1);
    }

    void aStoppedServerShowsAsAnErrorOfTheTransport() {
        m->server.stop();
        const auto reply = m->whole(m->ask());
        QVERIFY(reply->errorAs<HttpError>().has_value());
        QCOMPARE(reply->errorText(), u"Could not connect to the server."_s);
        QVERIFY(reply->texts().isEmpty());
    }

    void aResetMidLineKeepsTheTextBefore() {
        m->server.enqueue(
            Script().head(200).send(chatLine(u"a"_s) + "{\"message\":").gate().reset());
        const auto reply = m->ask();
        QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
        m->server.release();
        QTRY_VERIFY(reply->hasEnded);
        QCOMPARE(reply->texts(), QStringList{u"a"_s});
        QCOMPARE(reply->errorText(), u"The connection to the server was lost."_s);
    }

    void silenceEndsTheReplyAsATimeout() {
        m->server.enqueue(Script().head(200).send(chatLine(u"a"_s)).hold());
        OllamaBackend asked({u"m"_s, 1}, *m->network, std::chrono::milliseconds(100));
        const auto reply = m->whole(m->watchReply(asked.streamResponse(u"Hi"_s, {}, QString())));
        QCOMPARE(reply->texts(), QStringList{u"a"_s});
        QCOMPARE(reply->errorText(), u"The request timed out."_s);
    }

    void theReplyIsReadToItsEndWithoutAReader_data() {
        QTest::addColumn<bool>("isBegun"); // whether somebody has read the reply's beginning
        QTest::newRow("stopped early") << true;
        QTest::newRow("never read") << false;
    }

    void theReplyIsReadToItsEndWithoutAReader() {
        QFETCH(bool, isBegun);
        // More than the connection holds on its way: only who reads it lets the server send it all.
        // Then the done line makes the client close; the script itself keeps the connection open.
        m->server.enqueue(Script()
                              .head(200)
                              .send(chatLine(u"a"_s))
                              .gate()
                              .send(chatLine(QString(4'000, u'b')).repeated(2'000))
                              .gate()
                              .send(chatLine(u"c"_s, true))
                              .hold());
        std::shared_ptr<tests::SeenReply> reply;
        if (isBegun) {
            reply = m->ask();
            QTRY_COMPARE(reply->texts(), QStringList{u"a"_s});
            m->task.cancel();
            QTRY_VERIFY(reply->hasEnded);
            QVERIFY(!reply->error);
        } else {
            const ReplyStream dropped = m->stream();
        }
        m->server.release();
        QTRY_VERIFY_WITH_TIMEOUT(m->server.gatesReached() == 2 || m->server.isFinished(), 30'000);
        QVERIFY2(!m->server.isFinished(), "the reply was given up");
        m->server.release();
        QTRY_VERIFY_WITH_TIMEOUT(m->server.clientClosed(), 30'000);
        if (reply)
            QCOMPARE(reply->texts(), QStringList{u"a"_s});
    }

    void linesAreDecodedOnTheNetworkThread() {
        // A line that does not read ends the request. This thread's loop stands still until the
        // server has seen it.
        m->server.enqueue(Script().head(200).send(chatLine(u"a"_s) + "oops\n").hold());
        const auto reply = m->ask();
        QDeadlineTimer deadline(30'000);
        while (!m->server.clientClosed() && !deadline.hasExpired())
            std::this_thread::yield();
        QVERIFY(m->server.clientClosed());
        QVERIFY(!reply->hasEnded);
        QTRY_VERIFY(reply->hasEnded);
        QCOMPARE(reply->texts(), QStringList{u"a"_s});
    }

    void aReplyMayBeAskedForOnAnyThread() {
        m->server.enqueue(Script::streamed(chatLine(u"a"_s, true)));
        std::optional<ReplyStream> stream;
        std::thread([&] { stream.emplace(m->stream()); }).join();
        const auto reply = m->whole(m->watchReply(std::move(*stream)));
        QCOMPARE(reply->texts(), QStringList{u"a"_s});
    }

    void repliesRunAtTheSameTime() {
        m->server.enqueue(
            Script().head(200).send(chatLine(u"1"_s)).gate().send(chatLine(u"!"_s, true)));
        m->server.enqueue(
            Script().head(200).send(chatLine(u"2"_s)).gate().send(chatLine(u"?"_s, true)));
        const auto first = m->ask();
        QTRY_COMPARE(first->texts(), QStringList{u"1"_s});
        const auto second = m->ask();
        QTRY_COMPARE(second->texts(), QStringList{u"2"_s});
        m->server.release(1);
        QTRY_VERIFY(second->hasEnded);
        QVERIFY(!first->hasEnded);
        m->server.release(0);
        QTRY_VERIFY(first->hasEnded);
        QCOMPARE(first->texts(), (QStringList{u"1"_s, u"1!"_s}));
        QCOMPARE(second->texts(), (QStringList{u"2"_s, u"2?"_s}));
    }

    void aHundredThousandLinesThatNobodyReadsCostMemoryInProportion() {
        constexpr int lines = 100'000;
        // The script's end is seen by the server when the client closes after the done line.
        m->server.enqueue(Script()
                              .head(200)
                              .send(chatLine(u"0123456789"_s).repeated(lines))
                              .send(chatLine(QString(), true))
                              .hold());
        const qint64 before = residentMemory();
        QVERIFY(before > 0);
        auto stream = m->stream();
        QTRY_VERIFY_WITH_TIMEOUT(m->server.isFinished(), 60'000);
        // A copy a snapshot would be 100 GB.
        QVERIFY2(residentMemory() - before < 200'000'000, "the queue of snapshots holds copies");
        const auto seen = runTask(m->main, drain(std::move(stream)));
        QCOMPARE(seen.value->first, lines + 1);
        QCOMPARE(seen.value->second.size(), lines * 10);
    }

private:
    std::optional<OllamaFixture> m;
};

TELLWICK_TEST(OllamaReplyTests, EventLoop)
#include "OllamaReplyTests.moc"
