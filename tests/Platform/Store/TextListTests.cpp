// SPDX-License-Identifier: MIT
#include "Platform/Store/TextList.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;

class TextListTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyListComesBackExactly_data() {
        QTest::addColumn<QStringList>("list");
        QTest::newRow("empty") << QStringList{};
        QTest::newRow("one empty text") << QStringList{QString()};
        QTest::newRow("empty texts between others") << QStringList{u"a"_s, {}, u"b"_s, {}, {}};
        QTest::newRow("duplicates in order") << QStringList{u"b"_s, u"a"_s, u"b"_s, u"b"_s};
        QTest::newRow("line breaks") << QStringList{u"a\r\nb\nc\rd\u0085e\u2028f\u2029g"_s};
        QTest::newRow("quotes and backslashes") << QStringList{u"\"\\\"\\\\u0041\\n\""_s};
        QTest::newRow("NUL") << QStringList{QString(u'\0'), u"a"_s + QChar(u'\0') + u"b"_s};
        QTest::newRow("emoji") << QStringList{u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s};
        QTest::newRow("surrogates without a partner")
            << QStringList{QString(QChar(0xd83d)), QString(QChar(0xde00)),
                           QString(QChar(0xde00)) + QChar(0xd83d), u"x"_s + QChar(0xd83d) + u"y"_s};
        QTest::newRow("byte order marks")
            << QStringList{u"\uFEFF"_s, u"\uFEFFa"_s, u"a\uFEFF\uFEFF"_s, u"\uFFFE"_s, u"\uFFFF"_s};
        QTest::newRow("right to left") << QStringList{u"שלום \u202Eabc\u202C"_s};
        QTest::newRow("blanks at the ends") << QStringList{u"  a\t\n "_s, u"\u3000"_s};
    }

    void everyListComesBackExactly() {
        QFETCH(QStringList, list);
        QCOMPARE(textListFromJson(textListToJson(list)), std::optional(list));
    }

    void everyCodeUnitComesBackAtEveryPlace() {
        QStringList list;
        for (int unit = 0; unit <= 0xffff; ++unit) {
            const QChar c{char16_t(unit)};
            list << QString(c) << c + u"a"_s << u"a"_s + c << u"\n"_s + c + u"é"_s << u"é"_s + c;
        }
        const auto back = textListFromJson(textListToJson(list));
        QVERIFY(back);
        QVERIFY(*back == list);
    }

    void theJsonIsReadableAndHoldsNoControlCharacters() {
        QCOMPARE(textListToJson({u"Grüße"_s, u"a\nb"_s}), QByteArray("[\"Grüße\",\"a\\nb\"]"));
        QString controls;
        for (char16_t c = 0; c < 0x20; ++c)
            controls.append(QChar(c));
        for (const char byte : textListToJson({controls}))
            QVERIFY(byte >= 0x20);
    }

    void aTextOfTenMillionCharactersComesBack() {
        QString text(10'000'000, u'x');
        for (qsizetype i = 0; i < text.size(); i += 77)
            text[i] = u'ß';
        QVERIFY(textListFromJson(textListToJson({text, u"b"_s})) ==
                std::optional(QStringList{text, u"b"_s}));
    }

    void whatIsNoListOfTextsIsNone_data() {
        QTest::addColumn<QByteArray>("json");
        for (const char* json : {"", "null", "\"a\"", "{}", "[1]", "[null]", "[\"a\",[]]", "[\"a\"",
                                 "[\"a\"]x", "[\"\xff\"]", "a,b"})
            QTest::addRow("%s", json) << QByteArray(json);
        QTest::newRow("nested deeply") << QByteArray(100'000, '[');
        QTest::newRow("bytes behind a NUL") << QByteArray("[\"a\"]\0[]", 8);
    }

    void whatIsNoListOfTextsIsNone() {
        QFETCH(QByteArray, json);
        QVERIFY(!textListFromJson(json));
    }
};

TELLWICK_TEST(TextListTests, EventLoop)
#include "TextListTests.moc"
