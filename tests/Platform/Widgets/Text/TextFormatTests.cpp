// SPDX-License-Identifier: MIT
// How lines stand, and what lies behind code.
#include "Platform/Text/InlineMarkdown.h"
#include "tests/Platform/Widgets/Text/TextFlowFixture.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tests;

class TextFormatTests : public QObject {
    Q_OBJECT

    static bool isCodeAt(const QImage& picture, const QPointF& point) {
        return picture.pixelColor(point.toPoint()) == textFormat().codeBackground;
    }

private Q_SLOTS:
    void aLineIsAThirdHigherThanItsEm() {
        for (const int em : {10, 13, 26}) {
            TextFormat format = textFormat();
            format.font.setPixelSize(em);
            const qreal spacing = QFontMetricsF(format.font).lineSpacing();
            QCOMPARE(format.lineHeight(), std::ceil(std::max(spacing, 1.35 * em)));
        }
    }

    void lettersStandInTheMiddleOfTheirLine() {
        TextFormat format = textFormat();
        format.font.setPixelSize(40);
        const auto layout = format.layout(plain(u"x"_s), false);
        TextLines::make(*layout, format, 100, false, 1);
        const QTextLine line = layout->lineAt(0);
        const qreal added = format.lineHeight() - line.height();
        QVERIFY(std::abs(line.y() - added / 2) <= 1);
    }

    void noBackgroundLiesUnderBlanksWhereCodeWraps() {
        AttributedString code;
        code.append(u"ab          "_s + QString(12, u'w'), AttributedString::Code);
        const qreal blank = QFontMetricsF(textFormat().codeFont).horizontalAdvance(u' ');
        Filled flow(code, std::ceil(18 * blank));
        QCOMPARE(flow.height(), 2 * flow.lineHeight());
        const QImage picture = flow.picture();
        const qreal y = flow.lineHeight() / 2;
        const QPointF behind(flow.characterRect(2).left(), y);
        QVERIFY(isCodeAt(picture, behind + QPointF(1, 0))); // a little room beside the letters
        QVERIFY(!isCodeAt(picture, behind + QPointF(4, 0)));
    }

    void aBlockOfCodeHasOneBackground() {
        Filled flow(InlineMarkdown::parse(u"text\n```\na\n```\ntext"), 200);
        const QImage picture = flow.picture();
        const qreal line = flow.lineHeight();
        QVERIFY(!isCodeAt(picture, {100, line / 2}));
        for (qreal y = line + 5; y < 4 * line - 5; ++y)
            for (const qreal x : {100.0, 199.0})
                QVERIFY2(isCodeAt(picture, {x, y}), qPrintable(QString::number(y)));
        QVERIFY(!isCodeAt(picture, {0, line})); // round
        QVERIFY(!isCodeAt(picture, {199, 4 * line - 1}));
        QVERIFY(!isCodeAt(picture, {100, 4 * line + line / 2}));
        // And no other one beside the letters.
        TextFormat translucent = textFormat();
        translucent.codeBackground = QColor(0, 0, 0, 100);
        flow.setFormat(translucent);
        const QImage once = flow.picture();
        const QPoint beside((flow.characterRect(7).topRight() + QPointF(1, line / 2)).toPoint());
        QCOMPARE(once.pixelColor(beside), once.pixelColor(100, beside.y()));
    }

    void codeHasRoomAtItsSidesInTheMargin() {
        constexpr qreal margin = 6;
        TextFormat format = textFormat();
        format.margin = margin;
        Filled flow(InlineMarkdown::parse(u"text\n```\na\n```\n`b`"), 200);
        flow.setFormat(format);
        const QImage picture = flow.picture();
        const qreal line = flow.lineHeight();
        // A block's lines are as wide as the frame, a span has a little less.
        for (const qreal x : {1.0, margin - 1, 198.0})
            QVERIFY2(isCodeAt(picture, {x, line * 2.5}), qPrintable(QString::number(x)));
        QVERIFY(isCodeAt(picture, {margin - 2, line * 4.5}));
        QVERIFY(!isCodeAt(picture, {margin - 4, line * 4.5}));
        // And the letters of all lines begin at the margin.
        for (const qsizetype lineStart : {0, 5, 9, 11, 15})
            QCOMPARE(flow.characterRect(lineStart).left(), margin);
    }

    void aMarginChangesNoLine() {
        constexpr qreal margin = 6;
        TextFormat format = textFormat();
        format.margin = margin;
        for (int width = 40; width < 400; width += 37) {
            Filled plainly(plain(variedText()), width);
            Filled flow(plain(variedText()), width + 2 * margin);
            flow.setFormat(format);
            QCOMPARE(flow.height(), plainly.height());
            QCOMPARE(flow.usedWidth(), plainly.usedWidth() + 2 * margin);
            for (qsizetype i = 0; i <= variedText().size(); ++i) {
                const QRectF rect = plainly.characterRect(i);
                QCOMPARE(flow.characterRect(i), rect.translated(margin, 0));
                QCOMPARE(flow.positionAt(rect.center() + QPointF(margin, 0)),
                         plainly.positionAt(rect.center()));
            }
            flow.resize(flow.usedWidth());
            QCOMPARE(flow.height(), plainly.height());
        }
    }

    void emojiOfATextTakeTheFontForEmoji() {
        const Theme theme;
        const QString text = u"a \U0001f600 b"_s;
        QList<QTextLayout::FormatRange> expected;
        theme.emojiFont().addFormats(text, expected);
        if (expected.isEmpty())
            QSKIP("no font for emoji is installed");
        for (const bool isOnAccent : {false, true}) {
            const auto layout = TextFormat::of(theme, isOnAccent).layout(plain(text), false);
            QCOMPARE(layout->formats(), expected);
        }
    }
};

TELLWICK_TEST(TextFormatTests, Widgets)
#include "TextFormatTests.moc"
