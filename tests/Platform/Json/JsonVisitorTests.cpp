// SPDX-License-Identifier: MIT
#include "Platform/Json/JsonVisitor.h"
#include "tests/support/TestMain.h"

using namespace platform;

namespace {

/// Writes down what it is told, one word a value.
struct Recorder final : JsonVisitor {
    void visit(const JsonPath& path, const JsonValue& value) override {
        static const char* const names[] = {"null", "boolean", "integer", "number",
                                            "text", "object",  "array"};
        words.append(QByteArray(names[static_cast<int>(value.kind)]) + '@' +
                     QByteArray::number(path.depth()));
        if (path.is("a", "", "b"))
            found = QByteArray(value.text.data(), static_cast<qsizetype>(value.text.size()));
        integer = value.integer;
    }
    void endObject(const JsonPath& path) override {
        words.append("end@" + QByteArray::number(path.depth()));
    }
    QByteArrayList words;
    QByteArray found;
    qint64 integer = 0;
};

bool reads(const QByteArray& document) {
    Recorder recorder;
    try {
        visitJson(document, recorder);
        return true;
    } catch (const JsonReadingError&) {
        return false;
    }
}

} // namespace

class JsonVisitorTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachValueIsVisitedInOrderWithItsKindAndDepth();
    void aValueIsFoundByItsPath();
    void wholeNumbersOf64BitsAreExact_data();
    void wholeNumbersOf64BitsAreExact();
    void onlyWholeDocumentsOfJsonRead_data();
    void onlyWholeDocumentsOfJsonRead();
    void aMillionLevelsOfNestingAreRead();
    void theErrorHasASentenceForTheUser();
};

void JsonVisitorTests::eachValueIsVisitedInOrderWithItsKindAndDepth() {
    Recorder recorder;
    visitJson(R"({"a":[1,"x",null,true,0.5],"b":{}})", recorder);
    QCOMPARE(recorder.words.join(' '),
             "object@0 array@1 integer@2 text@2 null@2 boolean@2 number@2 "
             "object@1 end@1 end@0");
}

void JsonVisitorTests::aValueIsFoundByItsPath() {
    Recorder recorder;
    visitJson(R"({"b":"no","a":{"b":"no"},"a":[{"c":[{"b":"no"}],"b":"yes"},["b"]],"a":7})",
              recorder);
    QCOMPARE(recorder.found, "yes");
}

void JsonVisitorTests::wholeNumbersOf64BitsAreExact_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<qint64>("integer");
    QTest::newRow("zero") << QByteArray("0") << QByteArray("integer@0") << qint64(0);
    QTest::newRow("past 32 bits") << QByteArray("4661224676") << QByteArray("integer@0")
                                  << qint64(4661224676);
    QTest::newRow("largest") << QByteArray("9223372036854775807") << QByteArray("integer@0")
                             << std::numeric_limits<qint64>::max();
    QTest::newRow("smallest") << QByteArray("-9223372036854775808") << QByteArray("integer@0")
                              << std::numeric_limits<qint64>::min();
    QTest::newRow("one too many") << QByteArray("9223372036854775808") << QByteArray("number@0")
                                  << qint64(0);
    QTest::newRow("past 64 bits") << QByteArray("18446744073709551616") << QByteArray("number@0")
                                  << qint64(0);
    QTest::newRow("fraction") << QByteArray("1.0") << QByteArray("number@0") << qint64(0);
    QTest::newRow("exponent") << QByteArray("1e3") << QByteArray("number@0") << qint64(0);
}

void JsonVisitorTests::wholeNumbersOf64BitsAreExact() {
    QFETCH(QByteArray, document);
    Recorder recorder;
    visitJson(document, recorder);
    QTEST(recorder.words.join(), "kind");
    QTEST(recorder.integer, "integer");
}

void JsonVisitorTests::onlyWholeDocumentsOfJsonRead_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("object") << QByteArray("{}") << true;
    QTest::newRow("blanks around") << QByteArray(" \t{ } ") << true;
    QTest::newRow("escaped NUL") << QByteArray(R"("a\u0000b")") << true;
    QTest::newRow("U+2028") << QByteArray("\"\xE2\x80\xA8\"") << true;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("blanks") << QByteArray("  ") << false;
    QTest::newRow("two documents") << QByteArray("{}{}") << false;
    QTest::newRow("something behind it") << QByteArray("{} x") << false;
    QTest::newRow("NUL behind it") << QByteArray("{}\0", 3) << false;
    QTest::newRow("NUL in a text") << QByteArray("\"a\0b\"", 5) << false;
    QTest::newRow("cut off") << QByteArray(R"({"a":)") << false;
    QTest::newRow("comma at the end") << QByteArray(R"({"a":1,})") << false;
    QTest::newRow("comment") << QByteArray("{} // x") << false;
    QTest::newRow("bare word") << QByteArray("yes") << false;
    QTest::newRow("not UTF-8") << QByteArray("\"\xFF\"") << false;
    QTest::newRow("cut character") << QByteArray("\"\xE2\x82\"") << false;
    QTest::newRow("lone surrogate") << QByteArray(R"("\ud800")") << false;
    QTest::newRow("control character") << QByteArray("\"\x01\"") << false;
    QTest::newRow("HTML") << QByteArray("<html></html>") << false;
}

void JsonVisitorTests::onlyWholeDocumentsOfJsonRead() {
    QFETCH(QByteArray, document);
    QTEST(reads(document), "isRead");
}

void JsonVisitorTests::aMillionLevelsOfNestingAreRead() {
    const QByteArray open(1'000'000, '[');
    const QByteArray close(1'000'000, ']');
    struct : JsonVisitor {
        void visit(const JsonPath& path, const JsonValue&) override {
            deepest = std::max(deepest, path.depth());
        }
        int deepest = 0;
    } visitor;
    visitJson(open + close, visitor);
    QCOMPARE(visitor.deepest, 999'999);
    QVERIFY(!reads(open));
}

void JsonVisitorTests::theErrorHasASentenceForTheUser() {
    QCOMPARE(
        JsonReadingError().errorDescription(),
        QStringLiteral("The data could not be read because it is not in the expected format."));
}

TELLWICK_TEST(JsonVisitorTests, EventLoop)
#include "JsonVisitorTests.moc"
