// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpError.h"
#include "Platform/Http/HttpResponseParser.h"
#include "tests/support/TestMain.h"

using namespace platform;
using Kind = HttpError::Kind;

namespace {

/// What a response reads as, given in these pieces.
struct Result {
    int status = 0;
    QByteArray body;
    bool isCompleteBeforeTheEnd = false;
    std::optional<Kind> fault;
};

Result parse(const QByteArrayList& pieces) {
    HttpResponseParser parser;
    Result result;
    try {
        for (const QByteArray& piece : pieces) {
            parser.append(piece);
            result.body += parser.takeBody();
            result.isCompleteBeforeTheEnd = parser.isComplete();
        }
        parser.finish();
    } catch (const HttpError& error) {
        result.body += parser.takeBody();
        result.fault = error.kind();
    }
    result.status = parser.status().value_or(0);
    return result;
}

} // namespace

Q_DECLARE_METATYPE(std::optional<Kind>)

class HttpResponseParserTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aResponseReadsTheSameHoweverItIsCut_data() {
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("isCompleteBeforeTheEnd"); // of the connection
        QTest::addColumn<std::optional<Kind>>("fault");
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
        const auto row = [](const char* name, QByteArray response, QByteArray body, bool isComplete,
                            int status = 200) {
            QTest::newRow(name) << response << body << status << isComplete
                                << std::optional<Kind>();
        };
        row("length given", ok + "content-length: 5\r\n\r\nhello", "hello", true);
        row("more than the length", ok + "Content-Length: 5\r\n\r\nhello, world", "hello", true);
        row("of no length", ok + "Content-Length: 0\r\n\r\n", "", true);
        row("without a body", "HTTP/1.1 204 Nothing\r\n\r\n", "", true, 204);
        row("up to the end", ok + "\r\nhello", "hello", false);
        row("up to the end, nothing", ok + "\r\n", "", false);
        row("of no chunk", chunked + "0\r\n\r\n", "", true);
        row("of no chunk, with a trailer", chunked + "0\r\nA: b\r\n\r\n", "", true);
        row("of no chunk, with an extension", chunked + "0;x\r\n\r\n", "", true);
        row("of no chunk, by many zeros", chunked + "000\r\n\r\n", "", true);
        row("in chunks", chunked + "3\r\n0\r\n\r\n2\r\nlo\r\n0\r\n\r\n", "0\r\nlo", true);
        row("in chunks of one zero", chunked + "1\r\n0\r\n1\r\n0\r\n0\r\n\r\n", "00", true);
        row("in chunks with extensions and trailers",
            chunked + "A;x=y\r\n0123456789\r\n0;z\r\nX-Sum: 1\r\n\r\n", "0123456789", true);
        row("behind interim responses",
            "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nX: 1\r\n\r\n" + chunked +
                "2\r\nok\r\n0\r\n\r\n",
            "ok", true);
        const auto fault = [](const char* name, QByteArray response, QByteArray body, int status,
                              Kind kind) {
            QTest::newRow(name) << response << body << status << false << std::optional<Kind>(kind);
        };
        fault("nothing", "", "", 0, Kind::ConnectionLost);
        fault("a head cut short", ok + "A: b\r\n", "", 0, Kind::ConnectionLost);
        fault("no HTTP", "hello there\r\n\r\n", "", 0, Kind::BadResponse);
        fault("a length cut short", ok + "Content-Length: 9\r\n\r\nhello", "hello", 200,
              Kind::ConnectionLost);
        fault("no chunk, cut short", chunked + "0\r\n\r", "", 200, Kind::ConnectionLost);
        fault("a chunk cut short", chunked + "9\r\nhello", "hello", 200, Kind::ConnectionLost);
        fault("the last chunk missing", chunked + "2\r\nhe\r\n", "he", 200, Kind::ConnectionLost);
        fault("a chunk without a size", chunked + "2\r\nhe\r\nzz\r\n", "he", 200,
              Kind::BadResponse);
    }

    void aResponseReadsTheSameHoweverItIsCut() {
        QFETCH(QByteArray, response);
        const auto check = [](const QByteArrayList& pieces) {
            const Result result = parse(pieces);
            QTEST(result.body, "body");
            QTEST(result.status, "status");
            QTEST(result.isCompleteBeforeTheEnd, "isCompleteBeforeTheEnd");
            QTEST(result.fault, "fault");
        };
        QByteArrayList bytes;
        for (const char byte : response)
            bytes.append(QByteArray(1, byte));
        check(bytes);
        for (qsizetype i = 0; i <= response.size(); ++i) {
            for (qsizetype j = i; j <= response.size(); ++j) {
                check({response.first(i), response.mid(i, j - i), response.mid(j)});
                if (QTest::currentTestFailed())
                    QFAIL(qPrintable(QStringLiteral("cut at %1 and %2").arg(i).arg(j)));
            }
            // From here on byte by byte.
            check(QByteArrayList{response.first(i)} + bytes.mid(i));
        }
    }

    void bytesAreThereAsSoonAsTheyCome() {
        HttpResponseParser parser;
        parser.append("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\na");
        QCOMPARE(parser.status(), 200);
        QCOMPARE(parser.takeBody(), QByteArray("a"));
        parser.append("b\r\n2\r\n0");
        QCOMPARE(parser.takeBody(), QByteArray("b0"));
        parser.append("1");
        QCOMPARE(parser.takeBody(), QByteArray("1"));
    }
};

TELLWICK_TEST(HttpResponseParserTests, Nothing)
#include "HttpResponseParserTests.moc"
