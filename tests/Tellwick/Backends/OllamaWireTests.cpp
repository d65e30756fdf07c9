// SPDX-License-Identifier: MIT
#include "Platform/Json/Json.h"
#include "Tellwick/Backends/OllamaError.h"
#include "Tellwick/Backends/OllamaWire.h"
#include "tests/support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

using namespace Qt::StringLiterals;
using namespace tellwick;
using platform::JsonReadingError;

namespace {

std::optional<OllamaChatChunk> readChunk(const QByteArray& line) {
    try {
        return OllamaChatChunk::fromJson(line);
    } catch (const JsonReadingError&) {
        return std::nullopt;
    }
}

std::optional<QList<OllamaModelEntry>> readModels(const QByteArray& document) {
    try {
        return OllamaTagsResponse::fromJson(document).models;
    } catch (const JsonReadingError&) {
        return std::nullopt;
    }
}

} // namespace

class OllamaWireTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRequestHasItsThreeFieldsAndNoMore();
    void aRequestKeepsEveryTextUnchanged_data();
    void aRequestKeepsEveryTextUnchanged();
    void aChunkReads_data();
    void aChunkReads();
    void aChunkFails_data();
    void aChunkFails();
    void aModelListReads_data();
    void aModelListReads();
    void aModelListFails_data();
    void aModelListFails();
    void theErrorsDescribeThemselves();
};

void OllamaWireTests::aRequestHasItsThreeFieldsAndNoMore() {
    const OllamaChatRequest request(u"llama3:8b"_s,
                                    {{u"system"_s, QString()}, {u"user"_s, u"Hi"_s}});
    QCOMPARE(request.toJson(), R"({"model":"llama3:8b","messages":[{"role":"system","content":""},)"
                               R"({"role":"user","content":"Hi"}],"stream":true})");
}

void OllamaWireTests::aRequestKeepsEveryTextUnchanged_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << u"  \n\t "_s;
    QTest::newRow("quotes and backslashes") << uR"("a\b/c")"_s;
    QTest::newRow("line breaks") << u"a\r\nb\rc\nd\u2028e"_s;
    QTest::newRow("emoji") << u"naïve 🙂 日本語"_s;
    QTest::newRow("NUL") << QString(QChar(0)) + u"x"_s;
}

void OllamaWireTests::aRequestKeepsEveryTextUnchanged() {
    QFETCH(QString, text);
    const OllamaChatRequest request(text, {{u"user"_s, text}});
    const QByteArray json = request.toJson();
    QVERIFY(!json.contains('\n'));
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    QCOMPARE(object[u"model"].toString(), text);
    QCOMPARE(object[u"messages"][0][u"content"].toString(), text);
    QCOMPARE(object[u"stream"], QJsonValue(true));
}

void OllamaWireTests::aChunkReads_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("content");
    QTest::addColumn<bool>("done");
    const auto row = [](const char* name, QByteArray line, const QString& content, bool done) {
        QTest::newRow(name) << line << content << done;
    };
    row("plain", R"({"message":{"content":"Hel"},"done":false})", u"Hel"_s, false);
    row("the last line", R"({"message":{"content":""},"done":true})", QString(), true);
    row("the last line with content", R"({"done":true,"message":{"content":"."}})", u"."_s, true);
    row("with a role and other keys",
        R"({"model":"m","created_at":"2024","message":{"role":"assistant","content":"a","thinking":"h",)"
        R"("images":[]},"done":false,"context":[1,2,3],"total_duration":5191566416,"x":{"done":"y"}})",
        u"a"_s, false);
    row("other keys that look alike",
        R"({"x":{"message":{"content":1},"done":2},"Done":3,"message":{"content":"a","content2":4},)"
        R"("done":false})",
        u"a"_s, false);
    row("a key twice", R"({"done":"x","message":7,"message":{"content":"a"},"done":true})", u"a"_s,
        true);
    row("escapes", R"({"message":{"content":"\u00e9\ud83d\ude42\n\"\\\/"},"done":false})",
        u"é🙂\n\"\\/"_s, false);
    row("NUL", R"({"message":{"content":"a\u0000b"},"done":false})", u"a"_s + QChar(0) + u"b"_s,
        false);
    row("U+2028", "{\"message\":{\"content\":\"a\xE2\x80\xA8z\"},\"done\":false}", u"a\u2028z"_s,
        false);
    row("a byte order mark first", "{\"message\":{\"content\":\"\xEF\xBB\xBFx\"},\"done\":false}",
        u"\uFEFFx"_s, false);
    row("what cannot be held in other keys",
        R"({"a":1e999,"b":"\ud800","message":{"content":"a","c":-1E+400},"done":true})", u"a"_s,
        true);
    row("blanks between", " { \"message\" : { \"content\" : \"a\" } , \"done\" : true } ", u"a"_s,
        true);
    row("nested deep in another key",
        R"({"message":{"content":"a","x":)" + QByteArray(100000, '[') + QByteArray(100000, ']') +
            R"(},"done":true})",
        u"a"_s, true);
    row("8 MB", R"({"message":{"content":")" + QByteArray(8'000'000, 'a') + R"("},"done":false})",
        QString(8'000'000, u'a'), false);
}

void OllamaWireTests::aChunkReads() {
    QFETCH(QByteArray, line);
    const auto chunk = readChunk(line);
    QVERIFY(chunk);
    QTEST(chunk->message.content, "content");
    QTEST(chunk->done, "done");
}

void OllamaWireTests::aChunkFails_data() {
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char* name, QByteArray line) { QTest::newRow(name) << line; };
    row("empty", "");
    row("blanks", "  ");
    row("not JSON", "data: hello");
    row("HTML", "<html><body>502</body></html>");
    row("empty object", "{}");
    row("an array", "[]");
    row("an array of a chunk", R"([{"message":{"content":"a"},"done":false}])");
    row("a text", R"("message")");
    row("null", "null");
    row("an error alone", R"({"error":"model not found"})");
    row("no message", R"({"done":false})");
    row("no done", R"({"message":{"content":"a"}})");
    row("no content", R"({"message":{"role":"assistant"},"done":false})");
    row("content beside the message", R"({"message":{},"content":"a","done":false})");
    row("content too deep", R"({"message":{"x":{"content":"a"}},"done":false})");
    row("message null", R"({"message":null,"done":false})");
    row("message a text", R"({"message":"a","done":false})");
    row("message an array", R"({"message":[{"content":"a"}],"done":false})");
    row("content null", R"({"message":{"content":null},"done":false})");
    row("content a number", R"({"message":{"content":1},"done":false})");
    row("content a boolean", R"({"message":{"content":true},"done":false})");
    row("content an array", R"({"message":{"content":["a"]},"done":false})");
    row("content an object", R"({"message":{"content":{"text":"a"}},"done":false})");
    row("done null", R"({"message":{"content":"a"},"done":null})");
    row("done a text", R"({"message":{"content":"a"},"done":"true"})");
    row("done a number", R"({"message":{"content":"a"},"done":1})");
    row("done of another case", R"({"message":{"content":"a"},"Done":true})");
    row("a key twice, last wrong", R"({"message":{"content":"a"},"done":true,"done":0})");
    row("message twice, last empty", R"({"message":{"content":"a"},"message":{},"done":true})");
    row("cut off", R"({"message":{"content":"a"},"done":tr)");
    row("two objects",
        R"({"message":{"content":"a"},"done":false}{"message":{"content":"b"},"done":true})");
    row("something behind it", R"({"message":{"content":"a"},"done":false},)");
    row("content half of a pair", R"({"message":{"content":"\ud800"},"done":false})");
    row("not UTF-8", "{\"message\":{\"content\":\"\xFF\xFE\"},\"done\":false}");
    row("not UTF-8 in a foreign key",
        "{\"message\":{\"content\":\"a\"},\"done\":false,\"x\":\"\xC3\"}");
    row("NUL in the text", QByteArray("{\"message\":{\"content\":\"\0\"},\"done\":false}", 40));
    row("nested without end", R"({"message":)" + QByteArray(100'000, '['));
}

void OllamaWireTests::aChunkFails() {
    QFETCH(QByteArray, line);
    QVERIFY(!readChunk(line));
}

void OllamaWireTests::aModelListReads_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QList<qint64>>("sizes");
    const auto row = [](const char* name, QByteArray document, QStringList names,
                        QList<qint64> sizes) { QTest::newRow(name) << document << names << sizes; };
    row("empty", R"({"models":[]})", {}, {});
    row("one", R"({"models":[{"name":"llama3:8b","size":4661224676}]})", {u"llama3:8b"_s},
        {4661224676});
    row("in the server's order", R"({"models":[{"name":"b","size":2},{"name":"a","size":1}]})",
        {u"b"_s, u"a"_s}, {2, 1});
    row("one name twice", R"({"models":[{"name":"a","size":1},{"name":"a","size":2}]})",
        {u"a"_s, u"a"_s}, {1, 2});
    row("many other keys",
        R"({"x":[{"name":1}],"models":[{"model":"a","name":"a","digest":"f0","size":1,"details":)"
        R"({"name":7,"size":"big","families":["llama"]}}],"models2":{"name":3}})",
        {u"a"_s}, {1});
    row("names of all kinds",
        R"({"models":[{"name":"hf.co/a/b-GGUF:Q4","size":1},{"name":"two words","size":2},)"
        R"({"name":"","size":3},{"name":"modèle🙂","size":4}]})",
        {u"hf.co/a/b-GGUF:Q4"_s, u"two words"_s, QString(), u"modèle🙂"_s}, {1, 2, 3, 4});
    row("a name with a byte order mark first",
        "{\"models\":[{\"name\":\"\xEF\xBB\xBFm\",\"size\":1}]}", {u"\uFEFFm"_s}, {1});
    row("the largest and the smallest size",
        R"({"models":[{"name":"a","size":9223372036854775807},{"name":"b","size":-9223372036854775808}]})",
        {u"a"_s, u"b"_s}, {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()});
    row("a list twice", R"({"models":[{"name":"x"}],"models":[{"name":"a","size":1}]})", {u"a"_s},
        {1});
}

void OllamaWireTests::aModelListReads() {
    QFETCH(QByteArray, document);
    const auto models = readModels(document);
    QVERIFY(models);
    QStringList names;
    QList<qint64> sizes;
    for (const OllamaModelEntry& entry : *models) {
        names.append(entry.name);
        sizes.append(entry.size);
    }
    QTEST(names, "names");
    QTEST(sizes, "sizes");
}

void OllamaWireTests::aModelListFails_data() {
    QTest::addColumn<QByteArray>("document");
    const auto row = [](const char* name, QByteArray document) { QTest::newRow(name) << document; };
    row("nothing", "");
    row("not JSON", "Ollama is running");
    row("empty object", "{}");
    row("an array", R"([{"name":"a","size":1}])");
    row("models null", R"({"models":null})");
    row("models an object", R"({"models":{"":{"name":"a","size":1}}})");
    row("models a text", R"({"models":"a"})");
    row("an entry without size", R"({"models":[{"name":"a","size":1},{"name":"b"}]})");
    row("an entry without size first", R"({"models":[{"name":"b"},{"name":"a","size":1}]})");
    row("an entry without name", R"({"models":[{"size":1}]})");
    row("an empty entry", R"({"models":[{}]})");
    row("an entry null", R"({"models":[null]})");
    row("an entry a text", R"({"models":["a"]})");
    row("an entry an array", R"({"models":[[{"name":"a","size":1}]]})");
    row("name null", R"({"models":[{"name":null,"size":1}]})");
    row("name a number", R"({"models":[{"name":5,"size":1}]})");
    row("size null", R"({"models":[{"name":"a","size":null}]})");
    row("size a text", R"({"models":[{"name":"a","size":"1"}]})");
    row("size a boolean", R"({"models":[{"name":"a","size":true}]})");
    row("size fractional", R"({"models":[{"name":"a","size":4.5}]})");
    row("size with a fraction of nothing", R"({"models":[{"name":"a","size":4.0}]})");
    row("size with an exponent", R"({"models":[{"name":"a","size":1e9}]})");
    row("size past a double", R"({"models":[{"name":"a","size":1e999}]})");
    row("size past 64 bits", R"({"models":[{"name":"a","size":9223372036854775808}]})");
    row("size far past 64 bits", R"({"models":[{"name":"a","size":99999999999999999999999}]})");
    row("size below 64 bits", R"({"models":[{"name":"a","size":-9223372036854775809}]})");
    row("not UTF-8", "{\"models\":[{\"name\":\"\xC0\xAF\",\"size\":1}]}");
    row("cut off", R"({"models":[{"name":"a","size":1})");
    row("a list twice, last wrong", R"({"models":[{"name":"a","size":1}],"models":7})");
}

void OllamaWireTests::aModelListFails() {
    QFETCH(QByteArray, document);
    QVERIFY(!readModels(document));
}

void OllamaWireTests::theErrorsDescribeThemselves() {
    QCOMPARE(OllamaError::badResponse(500).errorDescription(),
             u"Ollama returned an unexpected status (500)."_s);
    QCOMPARE(OllamaError::badResponse(404).errorDescription(),
             u"Ollama returned an unexpected status (404)."_s);
    QCOMPARE(OllamaError::badResponse(-1234567).errorDescription(),
             u"Ollama returned an unexpected status (-1234567)."_s);
    QCOMPARE(OllamaError::notRunning().errorDescription(),
             u"Ollama is not running. Launch Ollama to use local models."_s);
    QCOMPARE(platform::localizedDescription(std::make_exception_ptr(OllamaError::badResponse(301))),
             u"Ollama returned an unexpected status (301)."_s);
}

TELLWICK_TEST(OllamaWireTests, EventLoop)
#include "OllamaWireTests.moc"
