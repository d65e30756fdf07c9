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
        const auto row = [](const char* name, const AttributedString& other, qsizetype position) {
            QTest::newRow(name) << other << position;
        };
        row("the same", sample(), -1);
        row("nothing", {}, 0);
        AttributedString other = sample();
        other.append(u"!");
        row("longer", other, sample().text.size());
        other = sample();
        other.text[2] = u'X';
        row("another character", other, 2);
        other = sample();
        other.ranges[0].length = 2;
        row("a shorter range", other, 8);
        other = sample();
        other.ranges[0].styles |= AttributedString::Emphasis;
        row("another style", other, 6);
        other = sample();
        other.ranges[1].target = u"http://b"_s;
        row("another target", other, 15);
        other = sample();
        other.ranges.clear();
        row("no styles", other, 6);
        other = sample();
        other.truncate(17);
        row("cut in a range", other, 17);
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
