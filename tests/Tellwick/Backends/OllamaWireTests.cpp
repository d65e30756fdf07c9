// SPDX-License-Identifier: MIT
// The shapes of the documents; what is JSON at all is tried in JsonTests.
#include "Platform/Json/Json.h"
#include "Tellwick/Backends/OllamaError.h"
#include "Tellwick/Backends/OllamaWire.h"
#include "tests/support/TestMain.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;
using namespace tellwick;
using platform::JsonReadingError;

using Entries = QList<OllamaModelEntry>;

namespace {

void chunks() {
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
    row("what cannot be held in other keys",
        R"({"a":1e999,"b":"\ud800","message":{"content":"a","c":-1E+400},"done":true})", u"a"_s,
        true);
}

void noChunks() {
    QTest::addColumn<QByteArray>("line");
    for (const char* line :
         {"", "data: hello", "{}", "[]", "null", R"({"error":"model not found"})",
          R"([{"message":{"content":"a"},"done":false}])", R"({"done":false})",
          R"({"message":{"content":"a"}})", R"({"message":{"content":"a"},"Done":true})",
          R"({"message":{},"content":"a","done":false})",
          R"({"message":{"x":{"content":"a"}},"done":false})",
          R"({"message":{"content":"a"},"done":true,"done":0})",
          R"({"message":{"content":"a"},"message":{},"done":true})"})
        QTest::addRow("%s", line) << QByteArray(line);
    for (const QByteArray message : {"null", "\"a\"", "[{\"content\":\"a\"}]", "{\"role\":\"a\"}"})
        QTest::addRow("message %s", message.constData())
            << R"({"message":)" + message + R"(,"done":false})";
    for (const QByteArray content : {"null", "1", "true", "[\"a\"]", "{}", R"("\ud800")"})
        QTest::addRow("content %s", content.constData())
            << R"({"message":{"content":)" + content + R"(},"done":false})";
    for (const QByteArray done : {"null", "\"true\"", "1"})
        QTest::addRow("done %s", done.constData())
            << R"({"message":{"content":"a"},"done":)" + done + "}";
}

void modelLists() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<Entries>("entries");
    const auto row = [](const char* name, QByteArray document, const Entries& entries) {
        QTest::newRow(name) << document << entries;
    };
    row("empty", R"({"models":[]})", {});
    row("one", R"({"models":[{"name":"llama3:8b","size":4661224676}]})",
        {{u"llama3:8b"_s, 4661224676}});
    row("in the server's order, one name twice",
        R"({"models":[{"name":"b","size":2},{"name":"a","size":1},{"name":"b","size":3}]})",
        {{u"b"_s, 2}, {u"a"_s, 1}, {u"b"_s, 3}});
    row("many other keys",
        R"({"x":[{"name":1}],"models":[{"model":"a","name":"a","digest":"f0","size":1,"details":)"
        R"({"name":7,"size":"big","families":["llama"]}}],"models2":{"name":3}})",
        {{u"a"_s, 1}});
    row("names of all kinds",
        R"({"models":[{"name":"hf.co/a/b-GGUF:Q4","size":1},{"name":"two words","size":2},)"
        R"({"name":"","size":3},{"name":"modèle🙂","size":4}]})",
        {{u"hf.co/a/b-GGUF:Q4"_s, 1}, {u"two words"_s, 2}, {QString(), 3}, {u"modèle🙂"_s, 4}});
    row("the largest and the smallest size",
        R"({"models":[{"name":"a","size":9223372036854775807},{"name":"b","size":-9223372036854775808}]})",
        {{u"a"_s, std::numeric_limits<qint64>::max()},
         {u"b"_s, std::numeric_limits<qint64>::min()}});
    row("a list twice", R"({"models":[{"name":"x"}],"models":[{"name":"a","size":1}]})",
        {{u"a"_s, 1}});
}

void noModelLists() {
    QTest::addColumn<QByteArray>("document");
    for (const char* document :
         {"", "Ollama is running", "{}", R"([{"name":"a","size":1}])", R"({"models":null})",
          R"({"models":{"":{"name":"a","size":1}}})", R"({"models":"a"})",
          R"({"models":[{"name":"a","size":1},{"name":"b"}]})",
          R"({"models":[{"name":"b"},{"name":"a","size":1}]})",
          R"({"models":[{"name":"a","size":1}],"models":7})"})
        QTest::addRow("%s", document) << QByteArray(document);
    for (const QByteArray entry :
         {"null", "{}", "\"a\"", R"([{"name":"a","size":1}])", R"({"size":1})",
          R"({"name":null,"size":1})", R"({"name":5,"size":1})"})
        QTest::addRow("entry %s", entry.constData()) << R"({"models":[)" + entry + "]}";
    for (const QByteArray size :
         {"null", "\"1\"", "true", "4.5", "4.0", "1e9", "1e999", "9223372036854775808",
          "99999999999999999999999", "-9223372036854775809"})
        QTest::addRow("size %s", size.constData())
            << R"({"models":[{"name":"a","size":)" + size + "}]}";
}

} // namespace

class OllamaWireTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRequestHasItsThreeFieldsAndNoMore() {
        const OllamaChatRequest request{u"llama3:8b"_s,
                                        {{u"system"_s, QString()}, {u"user"_s, u"Hi"_s}}};
        QCOMPARE(request.toJson(),
                 R"({"model":"llama3:8b","messages":[{"role":"system","content":""},)"
                 R"({"role":"user","content":"Hi"}],"stream":true})");
    }

    void aRequestKeepsEveryTextUnchanged_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("blanks") << u"  \n\t "_s;
        QTest::newRow("quotes and backslashes") << u"\"a\\b/c\""_s;
        QTest::newRow("line breaks") << u"a\r\nb\rc\nd\u2028e"_s;
        QTest::newRow("emoji") << u"naïve 🙂 日本語"_s;
        QTest::newRow("NUL") << QString(QChar(0)) + u"x"_s;
    }

    void aRequestKeepsEveryTextUnchanged() {
        QFETCH(QString, text);
        const QByteArray json = OllamaChatRequest{text, {{u"user"_s, text}}}.toJson();
        QVERIFY(!json.contains('\n'));
        const QJsonObject object = QJsonDocument::fromJson(json).object();
        QCOMPARE(object[u"model"].toString(), text);
        QCOMPARE(object[u"messages"][0][u"content"].toString(), text);
        QCOMPARE(object[u"stream"], QJsonValue(true));
    }

    void aChunkReads_data() { chunks(); }
    void aChunkReads() {
        QFETCH(QByteArray, line);
        const auto chunk = OllamaChatChunk::fromJson(line);
        QTEST(chunk.message.content, "content");
        QTEST(chunk.done, "done");
    }

    void aChunkFails_data() { noChunks(); }
    void aChunkFails() {
        QFETCH(QByteArray, line);
        QVERIFY_THROWS_EXCEPTION(JsonReadingError, OllamaChatChunk::fromJson(line));
    }

    void aModelListReads_data() { modelLists(); }
    void aModelListReads() {
        QFETCH(QByteArray, document);
        QTEST(OllamaTagsResponse::fromJson(document).models, "entries");
    }

    void aModelListFails_data() { noModelLists(); }
    void aModelListFails() {
        QFETCH(QByteArray, document);
        QVERIFY_THROWS_EXCEPTION(JsonReadingError, OllamaTagsResponse::fromJson(document));
    }

    void theErrorsDescribeThemselves() {
        QCOMPARE(OllamaError::badResponse(500).errorDescription(),
                 u"Ollama returned an unexpected status (500)."_s);
        QCOMPARE(OllamaError::badResponse(-1234567).errorDescription(),
                 u"Ollama returned an unexpected status (-1234567)."_s);
        QCOMPARE(OllamaError::notRunning().errorDescription(),
                 u"Ollama is not running. Launch Ollama to use local models."_s);
    }
};

TELLWICK_TEST(OllamaWireTests, EventLoop)
#include "OllamaWireTests.moc"
