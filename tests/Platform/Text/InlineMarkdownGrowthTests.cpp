// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "tests/support/TestMain.h"

#include <algorithm>
#include <ctime>

using namespace Qt::StringLiterals;
using platform::AttributedString;
using platform::InlineMarkdown;

namespace {

/// A text that uses everything the parser knows, with blocks of many lengths.
QString variedText() {
    return u"# Title with `code`\n\nA **bold\nword** and *em*, ~~gone~~ \\* &amp; &#233; text.  \n"
           "Second\\\nline <http://example.org/~me> [a *b*](/u \"t\")\r\n\r\n- item `a\n b` **x\n\n"
           "not closed** ` ~5 ~6 ![alt](x) ![](y.png)\r\r   \n\n\n***both*** __q__\n***\n"
           "| a | b |\n|---|---|\n```cpp\nint *a, *b;\n```\n\t tab \u05e9\u05dc\u05d5\u05dd "
           "**\U0001f600\u200d\U0001f4bb** [open\n[a](<b\nc>) <b title='*x*'>*y*</b>\n   \n\nend*"_s;
}

} // namespace

/// How Markdown is read piece by piece, in long blocks and at what cost.
class InlineMarkdownGrowthTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatGrowsStepByStepEqualsTheWhole_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<int>("step");
        for (const int step : {1, 2, 3, 7})
            QTest::addRow("varied, by %d", step) << variedText() << step;
        // Blocks longer than the limit, with and without places to cut.
        QTest::newRow("long blocks")
            << QString(u"some *words* in\r\n a line "_s.repeated(1500) + QString(40000, u'x') +
                       u" **\U0001f600"_s + QString(20000, u' ') + QString(10000, QChar(0x4e2d)) +
                       u"\n\n*end*"_s)
            << 611;
    }
    void whatGrowsStepByStepEqualsTheWhole() {
        QFETCH(QString, source);
        QFETCH(int, step);
        AttributedString grown;
        InlineMarkdown::Position position;
        for (qsizetype length = 0; length <= source.size(); length += step) {
            const QStringView beginning = QStringView(source).left(length);
            grown.truncate(position.result);
            grown.append(InlineMarkdown::parseOn(beginning, position));
            QVERIFY(position.result <= grown.text.size());
            QVERIFY(length - position.source <= 2 * InlineMarkdown::maximumBlockLength);
            QVERIFY2(grown == InlineMarkdown::parse(beginning),
                     qPrintable(QString::number(length)));
        }
    }

    void aCutFallsOnALineStartOrABlankOrBetweenCharacters() {
        const qsizetype limit = InlineMarkdown::maximumBlockLength;
        // A construct that lies across a cut may be literal, the next one is read.
        for (const QString& across : {u"aa\n*b\nc* *d*"_s, u"aaaa *b c* *d*"_s}) {
            const QString source = QString(limit - 7, u'a') + across;
            const AttributedString parsed = InlineMarkdown::parse(source);
            const AttributedString::Range last{
                parsed.text.size() - 1, 1, AttributedString::Emphasis, {}};
            QVERIFY(parsed.text.endsWith(u'd') && parsed.ranges.back() == last);
        }
        const QString pairs = u"x"_s + QString(u"\U0001f600"_s).repeated(limit);
        QCOMPARE(InlineMarkdown::parse(pairs).text, pairs);
    }

    void hostileTextCostsNoMoreThanItsLength_data() {
        QTest::addColumn<QString>("piece");
        constexpr const char* pieces[] = {"[",        "*",       "`",
                                          "![",       "[a](",    "*a_",
                                          "**a ",     "<",       "<!--",
                                          "<a ",      "~~a",     "~",
                                          "_",        "a_",      "*a**b",
                                          "[]",       "]",       "[a](b)",
                                          "\\",       "&",       "&a;",
                                          "`a``",     "<?",      "<![CDATA[",
                                          "a*a_ ",    "[[a](b)", "![a](b)",
                                          "*_~",      "](<",     "[a](<b",
                                          "[a](b (",  "((((",    "<a@b",
                                          "<a:",      "\n",      "*\n",
                                          " ",        "a",       "&NotExistingName;",
                                          "[a](b \"", "\\\n"};
        for (const char* piece : pieces)
            QTest::newRow(piece) << QString::fromLatin1(piece);
    }
    void hostileTextCostsNoMoreThanItsLength() {
        QFETCH(QString, piece);
        // Processor time, for other programs may run beside the test.
        const auto cost = [&](qsizetype size) {
            const QString source = piece.repeated(size / piece.size());
            const std::clock_t begin = std::clock();
            const AttributedString parsed = InlineMarkdown::parse(source);
            const std::clock_t spent = std::clock() - begin;
            if (parsed.text.size() > source.size() + 1)
                qFatal("more text than there was");
            return static_cast<double>(spent) / CLOCKS_PER_SEC;
        };
        double small = cost(1 << 15);
        double large = cost(1 << 17);
        for (int again = 0; again < 2; ++again) {
            small = std::min(small, cost(1 << 15));
            large = std::min(large, cost(1 << 17));
        }
        // Four times the text: anything quadratic would cost 16 times as much.
        QVERIFY2(large < 9 * small + 0.01, qPrintable(u"%1 and %2 s"_s.arg(small).arg(large)));
    }

    void rangesAreSortedAndDoNotOverlap() {
        const AttributedString parsed = InlineMarkdown::parse(variedText());
        qsizetype end = 0;
        QVERIFY(!parsed.ranges.empty());
        for (const AttributedString::Range& range : parsed.ranges) {
            QVERIFY(range.start >= end);
            QVERIFY(range.length > 0);
            QVERIFY(range.styles);
            end = range.end();
        }
        QVERIFY(end <= parsed.text.size());
    }
};

TELLWICK_TEST(InlineMarkdownGrowthTests, Nothing)
#include "InlineMarkdownGrowthTests.moc"
