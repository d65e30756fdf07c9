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
