// SPDX-License-Identifier: MIT
#include "Platform/Text/StyledText.h"

#include <QTest>

using namespace Qt::StringLiterals;
using platform::firstDifference;
using platform::StyledText;

namespace {

StyledText sample() {
    StyledText text;
    text.append(u"plain ");
    text.append(u"bold", StyledText::Strong);
    text.append(u" and ");
    text.append(u"link", StyledText::Link, u"http://a"_s);
    text.append(u" end");
    return text;
}

} // namespace

class StyledTextTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void piecesOfOneStyleJoin();
    void linksToDifferentPlacesDoNotJoin();
    void anAppendedTextBringsItsRanges();
    void cuttingInsideARangeShortensIt();
    void aPartHasTheRangesInsideIt();
    void theFirstDifferenceIsThatOfCharactersOrOfStyles_data();
    void theFirstDifferenceIsThatOfCharactersOrOfStyles();
};

void StyledTextTests::piecesOfOneStyleJoin() {
    StyledText text;
    text.append(u"a", StyledText::Code);
    text.append(u"b", StyledText::Code);
    text.append(u"", StyledText::Strong);
    text.append(u"c", StyledText::Code | StyledText::Strong);
    QCOMPARE(text.ranges.size(), 2u);
    QCOMPARE(text.ranges[0].length, 2);
    QCOMPARE(text.text, u"abc"_s);
}

void StyledTextTests::linksToDifferentPlacesDoNotJoin() {
    StyledText text;
    text.append(u"a", StyledText::Link, u"x"_s);
    text.append(u"b", StyledText::Link, u"y"_s);
    QCOMPARE(text.ranges.size(), 2u);
}

void StyledTextTests::anAppendedTextBringsItsRanges() {
    StyledText text = sample();
    const qsizetype length = text.text.size();
    text.append(sample());
    QCOMPARE(text.ranges.size(), 4u);
    QVERIFY(text.mid(0, length) == sample());
    QVERIFY(text.mid(length, length) == sample());
}

void StyledTextTests::cuttingInsideARangeShortensIt() {
    for (qsizetype length = 0; length <= sample().text.size() + 2; ++length) {
        StyledText text = sample();
        text.truncate(length);
        QVERIFY(text == sample().mid(0, length));
        for (const StyledText::Range& range : text.ranges)
            QVERIFY(range.length > 0 && range.end() <= text.text.size());
    }
}

void StyledTextTests::aPartHasTheRangesInsideIt() {
    const StyledText part = sample().mid(8, 10);
    QCOMPARE(part.text, u"ld and lin"_s);
    QCOMPARE(part.ranges.size(), 2u);
    QCOMPARE(part.ranges[0], (StyledText::Range{0, 2, StyledText::Strong, {}}));
    QCOMPARE(part.ranges[1], (StyledText::Range{7, 3, StyledText::Link, u"http://a"_s}));
}

void StyledTextTests::theFirstDifferenceIsThatOfCharactersOrOfStyles_data() {
    QTest::addColumn<StyledText>("other");
    QTest::addColumn<qsizetype>("position");
    const auto row = [](const char* name, const StyledText& other, qsizetype position) {
        QTest::newRow(name) << other << position;
    };
    row("the same", sample(), -1);
    row("nothing", {}, 0);
    StyledText other = sample();
    other.append(u"!");
    row("longer", other, sample().text.size());
    other = sample();
    other.text[2] = u'X';
    row("another character", other, 2);
    other = sample();
    other.ranges[0].length = 2;
    row("a shorter range", other, 8);
    other = sample();
    other.ranges[0].styles |= StyledText::Emphasis;
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

void StyledTextTests::theFirstDifferenceIsThatOfCharactersOrOfStyles() {
    QFETCH(StyledText, other);
    QFETCH(qsizetype, position);
    QCOMPARE(firstDifference(sample(), other), position);
    QCOMPARE(firstDifference(other, sample()), position);
}

QTEST_APPLESS_MAIN(StyledTextTests)
#include "StyledTextTests.moc"
