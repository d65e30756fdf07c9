// SPDX-License-Identifier: MIT
#include "Platform/Json/Json.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

template <class Read>
bool reads(Read read) {
    try {
        read();
        return true;
    } catch (const JsonReadingError&) {
        return false;
    }
}

void texts() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("text");
    QTest::newRow("a byte order mark first") << QByteArray("\"\xEF\xBB\xBFx\"") << u"\uFEFFx"_s;
    QTest::newRow("that as an escape") << QByteArray(R"("\ufeffx")") << u"\uFEFFx"_s;
    QTest::newRow("nothing but that") << QByteArray("\"\xEF\xBB\xBF\"") << u"\uFEFF"_s;
    QTest::newRow("NUL") << QByteArray(R"("a\u0000b")") << u"a"_s + QChar(0) + u"b"_s;
    QTest::newRow("U+2028") << QByteArray("\"\xE2\x80\xA8\"") << u"\u2028"_s;
    QTest::newRow("a pair of surrogates") << QByteArray(R"("\uD83E\udd8a")") << u"\U0001F98A"_s;
    QTest::newRow("empty") << QByteArray(R"("")") << QString();
}

void unheldValues() {
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("past a double") << QByteArray("1e999");
    QTest::newRow("below a double") << QByteArray("-1.5E+99999");
    QTest::newRow("of many digits") << QByteArray(400, '9');
    QTest::newRow("first half of a pair") << QByteArray(R"("a\ud800")");
    QTest::newRow("second half of a pair") << QByteArray(R"("\uDC00 b")");
    QTest::newRow("halves the wrong way round") << QByteArray(R"("\udc00\ud800")");
    QTest::newRow("among other escapes") << QByteArray(R"("\\\"\ud83d\ude42\ud800")");
}

void noDocuments() {
    QTest::addColumn<QByteArray>("document");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("blanks") << QByteArray("  ");
    QTest::newRow("two documents") << QByteArray("{}{}");
    QTest::newRow("something behind it") << QByteArray("{} x");
    QTest::newRow("NUL behind it") << QByteArray("{}\0", 3);
    QTest::newRow("NUL in a text") << QByteArray("\"a\0b\"", 5);
    QTest::newRow("cut off") << QByteArray(R"({"a":)");
    QTest::newRow("cut off in a text") << QByteArray(R"({"a":"\)");
    QTest::newRow("comma at the end") << QByteArray(R"({"a":1,})");
    QTest::newRow("comment") << QByteArray("{} // x");
    QTest::newRow("bare word") << QByteArray("yes");
    QTest::newRow("not UTF-8") << QByteArray("\"\xFF\"");
    QTest::newRow("cut character") << QByteArray("\"\xE2\x82\"");
    QTest::newRow("control character") << QByteArray("\"\x01\"");
    QTest::newRow("cut escape") << QByteArray(R"("\ud80")");
    QTest::newRow("no such escape, by a lone surrogate") << QByteArray(R"("\q\ud800")");
    QTest::newRow("a zero first") << QByteArray("01e999");
    QTest::newRow("no exponent") << QByteArray("1e");
    QTest::newRow("two fractions") << QByteArray("1.234.567");
    QTest::newRow("HTML") << QByteArray("<html></html>");
}

} // namespace

class JsonTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aValueIsWhatItIsAndNothingElse_data() {
        QTest::addColumn<QByteArray>("kinds"); // of text, integer, boolean, array, object
        const std::pair<const char*, const char*> rows[] = {
            {"\"1\"", "t"}, {"1", "i"},  {"0.5", ""},       {"true", "b"},
            {"null", ""},   {"[]", "a"}, {"{\"\":1}", "oo"}};
        for (const auto& [document, kinds] : rows)
            QTest::newRow(document) << QByteArray(kinds);
    }
    void aValueIsWhatItIsAndNothingElse() {
        const Json value = Json::read(QTest::currentDataTag());
        QByteArray kinds;
        kinds += reads([&] { value.text(); }) ? "t" : "";
        kinds += reads([&] { value.integer(); }) ? "i" : "";
        kinds += reads([&] { value.boolean(); }) ? "b" : "";
        kinds += reads([&] { value.elements(); }) ? "a" : "";
        kinds += reads([&] { value.find("x"); }) ? "o" : "";
        kinds += reads([&] { value[""]; }) ? "o" : "";
        QTEST(kinds, "kinds");
    }

    void membersAreFoundByTheirKeys() {
        const Json value =
            Json::read(R"({"a":{"b":[{"c":1},2]},"a ":0,"n":null,"t":1,"t":"last"})");
        QCOMPARE(value["a"]["b"].elements()[0]["c"].integer(), 1);
        QCOMPARE(value["a"]["b"].elements().size(), 2);
        QCOMPARE(value["t"].text(), u"last"_s);
        QCOMPARE(value.find("t")->text(), u"last"_s);
        QVERIFY(!value.find("n"));
        QVERIFY(!value.find("absent"));
        QVERIFY(!reads([&] { value["absent"]; }));
        QVERIFY(!reads([&] { value["n"].text(); }));
    }

    void aValueOutlivesItsDocument() {
        const QList<Json> elements = Json::read(R"([{"a":"x"}])").elements();
        QCOMPARE(elements[0]["a"].text(), u"x"_s);
    }

    void wholeNumbersOf64BitsAreExact_data() {
        QTest::addColumn<std::optional<qint64>>("integer");
        const auto row = [](const char* document, std::optional<qint64> integer) {
            QTest::newRow(document) << integer;
        };
        row("0", 0);
        row("-0", 0);
        row("4661224676", 4661224676);
        row("9223372036854775807", std::numeric_limits<qint64>::max());
        row("-9223372036854775808", std::numeric_limits<qint64>::min());
        row("9223372036854775808", std::nullopt);
        row("-9223372036854775809", std::nullopt);
        row("18446744073709551616", std::nullopt);
        row("1.0", std::nullopt);
        row("1e3", std::nullopt);
        row("1e999", std::nullopt);
    }
    void wholeNumbersOf64BitsAreExact() {
        QFETCH(std::optional<qint64>, integer);
        const Json value = Json::read(QTest::currentDataTag());
        std::optional<qint64> read;
        reads([&] { read = value.integer(); });
        QCOMPARE(read, integer);
    }

    void aTextIsKeptWhole_data() { texts(); }
    void aTextIsKeptWhole() {
        QFETCH(QByteArray, document);
        QTEST(Json::read(document).text(), "text");
    }

    void onlyWholeDocumentsOfJsonRead_data() { noDocuments(); }
    void onlyWholeDocumentsOfJsonRead() {
        QFETCH(QByteArray, document);
        QVERIFY(!reads([&] { Json::read(document); }));
        QVERIFY(reads([] { Json::read(" \t{ } "); }));
    }

    void whatCannotBeHeldIsReadUnlessItIsAskedFor_data() { unheldValues(); }
    void whatCannotBeHeldIsReadUnlessItIsAskedFor() {
        QFETCH(QByteArray, value);
        const Json document = Json::read(R"({"x":[)" + value + R"( ],"\ud800" :1,"y":)" + value +
                                         R"(,"a":"\ud83d\ude42:1e999","size":7})");
        QCOMPARE(document["a"].text(), u"🙂:1e999"_s);
        QCOMPARE(document["size"].integer(), 7);
        QVERIFY(!reads([&] { document["y"].text(); }));
        QVERIFY(!reads([&] { document["y"].integer(); }));
        QVERIFY(!reads([&] { Json::read("[" + value); }));
    }

    void aHundredThousandLevelsOfNestingAreRead() {
        const QByteArray open(100'000, '[');
        QVERIFY(reads([&] { Json::read(open + QByteArray(100'000, ']')); }));
        QVERIFY(!reads([&] { Json::read(open); }));
    }

    void theErrorHasASentenceForTheUser() {
        QCOMPARE(
            JsonReadingError().errorDescription(),
            QStringLiteral("The data could not be read because it is not in the expected format."));
    }
};

TELLWICK_TEST(JsonTests, EventLoop)
#include "JsonTests.moc"
