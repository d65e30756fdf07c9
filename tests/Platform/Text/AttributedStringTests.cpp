// SPDX-License-Identifier: MIT
#include "Platform/Text/AttributedString.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::AttributedString;
using platform::firstDifference;

namespace {

AttributedString sample() {
    AttributedString text;
    text.append(u"plain ");
    text.append(u"bold", AttributedString::Strong);
    text.append(u" and ");
    text.append(u"link", AttributedString::Link, u"http://a"_s);
    text.append(u" end");
    return text;
}

} // namespace

class AttributedStringTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void piecesOfOneStyleJoin() {
        AttributedString text;
        text.append(u"a", AttributedString::Code);
        text.append(u"b", AttributedString::Code);
        text.append(u"", AttributedString::Strong);
        text.append(u"c", AttributedString::Code | AttributedString::Strong);
        QCOMPARE(text.ranges.size(), 2u);
        QCOMPARE(text.ranges[0].length, 2);
        QCOMPARE(text.text, u"abc"_s);
    }

    void linksToDifferentPlacesDoNotJoin() {
        AttributedString text;
        text.append(u"a", AttributedString::Link, u"x"_s);
        text.append(u"b", AttributedString::Link, u"y"_s);
        QCOMPARE(text.ranges.size(), 2u);
    }

    void anAppendedTextBringsItsRanges() {
        AttributedString text = sample();
        const qsizetype length = text.text.size();
        text.append(sample());
        QCOMPARE(text.ranges.size(), 4u);
        QVERIFY(text.mid(0, length) == sample());
        QVERIFY(text.mid(length, length) == sample());
    }

    void cuttingInsideARangeShortensIt() {
        for (qsizetype length = 0; length <= sample().text.size() + 2; ++length) {
            AttributedString text = sample();
            text.truncate(length);
            QVERIFY(text == sample().mid(0, length));
            for (const AttributedString::Range& range : text.ranges)
                QVERIFY(range.length > 0 && range.end() <= text.text.size());
        }
    }

    void aPartHasTheRangesInsideIt() {
        const AttributedString part = sample().mid(8, 10);
        QCOMPARE(part.text, u"ld and lin"_s);
        QCOMPARE(part.ranges.size(), 2u);
        QCOMPARE(part.ranges[0], (AttributedString::Range{0, 2, AttributedString::Strong, {}}));
        QCOMPARE(part.ranges[1],
                 (AttributedString::Range{7, 3, AttributedString::Link, u"http://a"_s}));
    }

    void theFirstDifferenceIsThatOfCharactersOrOfStyles_data() {
        QTest::addColumn<AttributedString>("other");
        QTest::addColumn<qsizetype>("position");
        const auto row = [](const char* name, qsizetype position, auto change) {
            AttributedString other = sample();
            change(other);
            QTest::newRow(name) << other << position;
        };
        using Text = AttributedString;
        row(
            "the same", -1, [](Text&) {});
        row(
            "nothing", 0, [](Text& other) { other = {}; });
        row(
            "longer", sample().text.size(), [](Text& other) { other.append(u"!"); });
        row(
            "another character", 2, [](Text& other) { other.text[2] = u'X'; });
        row(
            "a shorter range", 8, [](Text& other) { other.ranges[0].length = 2; });
        row(
            "another style", 6, [](Text& other) { other.ranges[0].styles |= Text::Emphasis; });
        row(
            "another target", 15, [](Text& other) { other.ranges[1].target = u"http://b"_s; });
        row(
            "no styles", 6, [](Text& other) { other.ranges.clear(); });
        row("cut in a range", 17, [](Text& other) { other.truncate(17); });
    }
    void theFirstDifferenceIsThatOfCharactersOrOfStyles() {
        QFETCH(AttributedString, other);
        QFETCH(qsizetype, position);
        QCOMPARE(firstDifference(sample(), other), position);
        QCOMPARE(firstDifference(other, sample()), position);
    }
};

TELLWICK_TEST(AttributedStringTests, Nothing)
#include "AttributedStringTests.moc"
