// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "Platform/Widgets/Text/TextFlow.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace platform;

namespace {

TextLook look() {
    TextLook look;
    look.font = QFont(u"DejaVu Sans"_s);
    look.font.setPixelSize(13);
    look.codeFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    look.codeFont.setPixelSize(13);
    look.text = Qt::black;
    look.link = Qt::blue;
    look.codeGround = Qt::lightGray;
    look.selection = Qt::yellow;
    return look;
}

AttributedString plain(const QString& text) {
    AttributedString styled;
    styled.append(text);
    return styled;
}

void fill(TextFlow& flow, const AttributedString& text, qreal width) {
    flow.setLook(look());
    flow.setWidth(width);
    flow.replaceTail(0, text);
}

/// What a flow looks like, as far as geometry tells: where each character stands.
QList<QRectF> geometry(const TextFlow& flow) {
    QList<QRectF> rects;
    for (qsizetype i = 0; i <= flow.content().text.size(); ++i)
        rects.append(flow.characterRect(i));
    rects.append(QRectF(0, 0, flow.usedWidth(), flow.height()));
    return rects;
}

QImage picture(TextFlow& flow, TextSpan selection = {}) {
    QImage image(static_cast<int>(std::ceil(flow.width())),
                 static_cast<int>(std::ceil(flow.height())), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    flow.draw(painter, {0, 0}, image.rect(), selection);
    return image;
}

QString variedText() {
    return u"A first paragraph of several words that needs more than one line.\n\nShort\r\n"
           "\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd, \u05de\u05d4 "
           "\u05e7\u05d5\u05e8\u05d4"
           "?\rtab\there \U0001f600 emoji\u2028and aVeryLongWordThatDoesNotFitIntoOneLineAtAll\n"_s;
}

} // namespace

class TextFlowTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEmptyTextIsOneLineHigh();
    void everyLineBreakStartsALine_data();
    void everyLineBreakStartsALine();
    void aShortTextIsAsWideAsItsLine();
    void aLongWordIsBroken();
    void noLineIsWiderThanTheFlow();
    void linesStayWhenTheFlowIsMadeAsWideAsItsWidestLine();
    void aTextThatGrowsLooksLikeTheWhole();
    void aTextThatChangesAtItsEndLooksLikeTheWhole();
    void aTextMadeNarrowerAndWiderLooksLikeTheWhole();
    void anEqualTextChangesNothing();
    void growthLaysOutTheLastParagraphOnly();
    void growthOfOneLongParagraphLaysOutItsEndOnly();
    void aWiderFlowLeavesShortParagraphsAlone();
    void onlyWhatIsShownKeepsItsGlyphs();
    void aPointLeadsToTheCharacterThatStandsThere();
    void aPointBesideTheTextIsOnNoCharacter();
    void rightToLeftParagraphsLieRight();
    void aSelectionIsDrawn();
    void onlyOpenableLinksLookLikeLinks();
    void oddCharactersAreDrawnWithoutHarm();
};

void TextFlowTests::anEmptyTextIsOneLineHigh() {
    TextFlow flow;
    fill(flow, {}, 300);
    QCOMPARE(flow.height(), look().lineHeight());
    fill(flow, plain(u" "_s), 300);
    QCOMPARE(flow.height(), look().lineHeight());
    QCOMPARE(flow.usedWidth() < 10, true);
}

void TextFlowTests::everyLineBreakStartsALine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("lines");
    QTest::newRow("none") << u"a"_s << 1;
    QTest::newRow("LF") << u"a\nb"_s << 2;
    QTest::newRow("CR LF") << u"a\r\nb"_s << 2;
    QTest::newRow("CR") << u"a\rb"_s << 2;
    QTest::newRow("line separator") << u"a\u2028b"_s << 2;
    QTest::newRow("paragraph separator") << u"a\u2029b"_s << 2;
    QTest::newRow("LF CR") << u"a\n\rb"_s << 3;
    QTest::newRow("at the end") << u"a\n"_s << 2;
    QTest::newRow("at the beginning") << u"\n\na"_s << 3;
    QTest::newRow("only") << u"\n"_s << 2;
}

void TextFlowTests::everyLineBreakStartsALine() {
    QFETCH(QString, text);
    QFETCH(int, lines);
    TextFlow flow;
    fill(flow, plain(text), 300);
    QCOMPARE(flow.height(), lines * look().lineHeight());
    // Also when it comes one character after the other.
    TextFlow grown;
    fill(grown, {}, 300);
    for (qsizetype i = 0; i < text.size(); ++i)
        grown.replaceTail(i, plain(text.mid(i, 1)));
    QCOMPARE(grown.height(), flow.height());
}

void TextFlowTests::aShortTextIsAsWideAsItsLine() {
    TextFlow flow;
    fill(flow, plain(u"Hello\nHi"_s), 400);
    const qreal advance = QFontMetricsF(look().font).horizontalAdvance(u"Hello"_s);
    QVERIFY(std::abs(flow.usedWidth() - advance) < 1.5);
}

void TextFlowTests::aLongWordIsBroken() {
    TextFlow flow;
    fill(flow, plain(QString(10000, u'x')), 300);
    QVERIFY(flow.usedWidth() <= 300);
    const qreal advance = QFontMetricsF(look().font).horizontalAdvance(u'x') * 10000;
    QVERIFY(flow.height() >= advance / 300 * look().lineHeight());
    QVERIFY(flow.height() <= (advance / 280 + 2) * look().lineHeight());
}

void TextFlowTests::noLineIsWiderThanTheFlow() {
    for (const int width : {40, 77, 120, 300, 700}) {
        TextFlow flow;
        fill(flow, plain(variedText().repeated(3)), width);
        QVERIFY2(flow.usedWidth() <= width, qPrintable(QString::number(width)));
    }
}

void TextFlowTests::linesStayWhenTheFlowIsMadeAsWideAsItsWidestLine() {
    for (int width = 60; width < 500; width += 13) {
        TextFlow flow;
        fill(flow, plain(variedText()), width);
        const qreal height = flow.height();
        flow.setWidth(std::ceil(flow.usedWidth()));
        QCOMPARE(flow.height(), height);
    }
}

void TextFlowTests::aTextThatGrowsLooksLikeTheWhole() {
    const QString text = variedText().repeated(2) + QString(4000, u'y') + u' ' +
                         u"word and "_s.repeated(900) + u"\nend"_s;
    TextFlow grown;
    fill(grown, {}, 260);
    QRandomGenerator random(3);
    qsizetype length = 0;
    while (length < text.size()) {
        const qsizetype step = length < 300 ? 1 : 1 + random.bounded(900);
        grown.replaceTail(length, plain(text.mid(length, step)));
        length = std::min(length + step, text.size());
        TextFlow whole;
        fill(whole, plain(text.left(length)), 260);
        QCOMPARE(grown.height(), whole.height());
        QCOMPARE(grown.usedWidth(), whole.usedWidth());
    }
    TextFlow whole;
    fill(whole, plain(text), 260);
    QCOMPARE(geometry(grown), geometry(whole));
}

void TextFlowTests::aTextThatChangesAtItsEndLooksLikeTheWhole() {
    // As while a reply streams: markers vanish when they are closed, and styles come.
    const QString text = u"Plain first line.\nSome **bold and `code` and *more** words* to come "
                         "with [a link](http://example.org/) in it.\n\nAnother ~~one~~ **ends"_s;
    TextFlow grown;
    fill(grown, {}, 150);
    InlineMarkdown::Position position;
    for (qsizetype length = 0; length <= text.size(); ++length) {
        const qsizetype from = position.result;
        grown.replaceTail(from, InlineMarkdown::parseOn(QStringView(text).left(length), position));
        TextFlow whole;
        const AttributedString parsed = InlineMarkdown::parse(QStringView(text).left(length));
        QCOMPARE(grown.content(), parsed);
        fill(whole, parsed, 150);
        QCOMPARE(geometry(grown), geometry(whole));
    }
}

void TextFlowTests::aTextMadeNarrowerAndWiderLooksLikeTheWhole() {
    const QString text = variedText() + u"many words "_s.repeated(800) + u"\n"_s + variedText();
    TextFlow flow;
    fill(flow, plain(text), 300);
    for (const int width : {500, 120, 301, 60, 1000, 300}) {
        flow.setWidth(width);
        TextFlow whole;
        fill(whole, plain(text), width);
        QCOMPARE(flow.height(), whole.height());
        QCOMPARE(flow.usedWidth(), whole.usedWidth());
        for (qsizetype i = 0; i < text.size(); i += 97)
            QCOMPARE(flow.characterRect(i), whole.characterRect(i));
        // And it still grows as it should.
        flow.replaceTail(text.size(), plain(u"more"_s));
        whole.replaceTail(text.size(), plain(u"more"_s));
        QCOMPARE(flow.height(), whole.height());
        flow.replaceTail(text.size(), {});
        QCOMPARE(flow.content().text, text);
    }
}

void TextFlowTests::anEqualTextChangesNothing() {
    TextFlow flow;
    fill(flow, plain(variedText()), 300);
    const std::size_t before = flow.laidOut();
    QCOMPARE(flow.replaceTail(0, plain(variedText())), -1.0);
    QCOMPARE(flow.laidOut(), before);
    // A difference is reported from the paragraph on where it is.
    const qreal changed = flow.replaceTail(variedText().size(), plain(u"x"_s));
    QVERIFY(changed > 0);
    QCOMPARE(changed, flow.height() - look().lineHeight());
}

void TextFlowTests::growthLaysOutTheLastParagraphOnly() {
    TextFlow flow;
    fill(flow, plain(u"a line of words\n"_s.repeated(20000)), 300);
    const std::size_t before = flow.laidOut();
    for (int i = 0; i < 100; ++i)
        flow.replaceTail(flow.content().text.size(), plain(u"token "_s));
    QVERIFY(flow.laidOut() - before <= 100);
}

void TextFlowTests::growthOfOneLongParagraphLaysOutItsEndOnly() {
    TextFlow flow;
    fill(flow, plain(u"word "_s.repeated(20000)), 300);
    const std::size_t before = flow.laidOut();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
        flow.replaceTail(flow.content().text.size(), plain(u"token "_s));
    if (qEnvironmentVariableIsSet("TELLWICK_MEASURE"))
        qInfo("%lld us an append at 100 KB", timer.nsecsElapsed() / 100'000);
    QVERIFY2(flow.laidOut() - before <= 102, qPrintable(QString::number(flow.laidOut() - before)));
}

void TextFlowTests::aWiderFlowLeavesShortParagraphsAlone() {
    TextFlow flow;
    fill(flow, plain(u"short\n"_s.repeated(1000) + u"long "_s.repeated(200)), 300);
    const std::size_t before = flow.laidOut();
    flow.setWidth(500);
    QVERIFY(flow.laidOut() - before < 5);
}

void TextFlowTests::onlyWhatIsShownKeepsItsGlyphs() {
    TextFlow flow;
    fill(flow, plain(u"a line of words\n"_s.repeated(20000)), 300);
    QVERIFY(flow.liveChunks() <= 64);
    QImage image(300, 400, QImage::Format_RGB32);
    QPainter painter(&image);
    for (qreal y = 0; y < flow.height(); y += flow.height() / 7)
        flow.draw(painter, {0, -y}, image.rect(), {});
    QVERIFY(flow.liveChunks() < 700);
}

void TextFlowTests::aPointLeadsToTheCharacterThatStandsThere() {
    TextFlow flow;
    fill(flow, plain(u"Latin text only, in several lines. "_s.repeated(200) + u"\n\nend"_s), 222);
    for (qsizetype i = 0; i < flow.content().text.size(); i += 7) {
        const QRectF rect = flow.characterRect(i);
        if (flow.content().text[i].isSpace())
            continue;
        QCOMPARE(flow.characterAt(rect.center()), i);
        const qsizetype position = flow.positionAt(rect.center());
        QVERIFY(position == i || position == i + 1);
    }
    QCOMPARE(flow.positionAt({-10, -10}), 0);
    QCOMPARE(flow.positionAt({0, flow.height() + 50}), flow.content().text.size());
}

void TextFlowTests::aPointBesideTheTextIsOnNoCharacter() {
    TextFlow flow;
    fill(flow, plain(u"ab\n\ncd"_s), 300);
    QCOMPARE(flow.characterAt({200, 5}), -1);
    QCOMPARE(flow.characterAt({2, look().lineHeight() * 1.5}), -1);
    QCOMPARE(flow.characterAt({2, -3}), -1);
    QCOMPARE(flow.characterAt({2, 1000}), -1);
    QCOMPARE(flow.characterAt({2, 5}), 0);
}

void TextFlowTests::rightToLeftParagraphsLieRight() {
    TextFlow flow;
    fill(flow, plain(u"\u05e9\u05dc\u05d5\u05dd\nleft"_s), 400);
    flow.setFrameWidth(200);
    QVERIFY(std::abs(flow.characterRect(0).right() - 200) < 2);
    QCOMPARE(flow.characterRect(5).left(), 0.0);
    const auto rects = flow.rects(0, 4);
    QCOMPARE(rects.size(), 1u);
    QVERIFY(rects[0].right() <= 200.5 && rects[0].left() > 100);
}

void TextFlowTests::aSelectionIsDrawn() {
    TextFlow flow;
    fill(flow, plain(u"some words"_s), 300);
    const auto coloured = [&](TextSpan selection) {
        const QImage image = picture(flow, selection);
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == QColor(Qt::yellow);
        return count;
    };
    QCOMPARE(coloured({}), 0);
    QVERIFY(coloured({0, 4}) > 100);
    QVERIFY(coloured({0, 10}) > coloured({0, 4}));
}

void TextFlowTests::onlyOpenableLinksLookLikeLinks() {
    AttributedString text;
    text.append(u"link", AttributedString::Link, u"http://example.org"_s);
    QVERIFY(look().formats(text, 0, 4).at(0).format.fontUnderline());
    text = {};
    text.append(u"link", AttributedString::Link, u"file:///etc/passwd"_s);
    QVERIFY(!look().formats(text, 0, 4).at(0).format.fontUnderline());
}

void TextFlowTests::oddCharactersAreDrawnWithoutHarm() {
    QString odd;
    for (char16_t c = 0; c < 0x20; ++c)
        odd += QChar(c);
    odd += u"\u200b\u200d\u202e\u2066\ufeff\ufffe\ufffc"_s;
    odd += QChar(0xd800);
    odd += QChar(0xdc00);
    odd += QChar(0xdc00);
    odd += u"a\u0301\u0301\u0301"_s.repeated(50);
    TextFlow flow;
    fill(flow, plain(odd.repeated(20)), 200);
    QVERIFY(!picture(flow, {3, 400}).isNull());
    for (qsizetype i = 0; i < flow.content().text.size(); i += 3)
        QVERIFY(flow.characterRect(i).height() > 0);
    QVERIFY(flow.usedWidth() <= 200);
}

TELLWICK_TEST(TextFlowTests, Widgets)
#include "TextFlowTests.moc"
