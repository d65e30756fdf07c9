// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"
#include "tests/Platform/Widgets/Text/TextFlowFixture.h"
#include "tests/support/TestMain.h"

#include <QLoggingCategory>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tests;

namespace {

/// What a flow looks like, as far as geometry tells: where its characters stand.
QList<QRectF> geometry(const TextFlow& flow, qsizetype step = 1) {
    QList<QRectF> rects{QRectF(0, 0, flow.usedWidth(), flow.height())};
    for (qsizetype i = 0; i <= flow.content().text.size(); i += step)
        rects.append(flow.characterRect(i));
    return rects;
}

/// The first character whose line does not follow from the one before it, or none (-1): where a
/// line is left out, drawn twice or outside of the flow.
qsizetype misplaced(const Filled& flow) {
    const qreal half = flow.lineHeight() / 2;
    qreal bottom = 0;
    const qsizetype size = flow.content().text.size();
    for (qsizetype i = 0; i <= size; ++i) {
        const QRectF rect = flow.characterRect(i);
        if (rect.height() < half || rect.top() > bottom + half || rect.bottom() < bottom - half ||
            rect.bottom() > flow.height() + half)
            return i;
        bottom = std::max(bottom, rect.bottom());
    }
    return bottom < flow.height() - half ? size : -1;
}

/// Characters of an alphabet at random.
QString random(QRandomGenerator& generator, const QString& alphabet, qsizetype length) {
    QString text;
    while (text.size() < length)
        text += alphabet[generator.bounded(int(alphabet.size()))];
    return text;
}

const QString base64 = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"_s;
const QString devanagari = u"\u0915\u0916\u0917\u0924\u0930\u094d\u094d\u093f\u0940\u0947\u0902"_s;
const QString arabic = u"\u0627\u0644\u0628\u062a\u062d\u064a\u0645\u0646\u064e\u0651"_s;

} // namespace

class TextFlowTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Qt warns of each font that does not know a script; any text is a test here.
        QLoggingCategory::setFilterRules(u"default.warning=false"_s);
    }

    void anEmptyTextIsOneLineHigh() {
        const Filled empty({}, 300);
        QCOMPARE(empty.height(), empty.lineHeight());
        const Filled blank(plain(u" "_s), 300);
        QCOMPARE(blank.height(), blank.lineHeight());
        QVERIFY(blank.usedWidth() < 10);
    }

    void everyLineBreakStartsALine_data() {
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
    void everyLineBreakStartsALine() {
        QFETCH(QString, text);
        QFETCH(int, lines);
        const Filled whole(plain(text), 300);
        QCOMPARE(whole.height(), lines * whole.lineHeight());
        // Also when it comes one character after the other.
        Filled grown({}, 300);
        for (qsizetype i = 0; i < text.size(); ++i)
            grown.replaceTail(i, plain(text.mid(i, 1)));
        QCOMPARE(grown.height(), whole.height());
    }

    void aShortTextIsAsWideAsItsLine() {
        const qreal advance = QFontMetricsF(textFormat().font).horizontalAdvance(u"Hello"_s);
        QVERIFY(std::abs(Filled(plain(u"Hello\nHi"_s), 400).usedWidth() - advance) < 1.5);
    }

    void aLongWordIsBroken() {
        const Filled flow(plain(QString(10000, u'x')), 300);
        QVERIFY(flow.usedWidth() <= 300);
        const qreal advance = QFontMetricsF(textFormat().font).horizontalAdvance(u'x') * 10000;
        QVERIFY(flow.height() >= advance / 300 * flow.lineHeight());
        QVERIFY(flow.height() <= (advance / 280 + 2) * flow.lineHeight());
    }

    void noLineIsWiderThanTheFlow() {
        for (const int width : {40, 77, 120, 300, 700})
            QVERIFY(Filled(plain(variedText().repeated(3)), width).usedWidth() <= width);
    }

    void linesStayWhenTheFlowIsMadeAsWideAsItsWidestLine() {
        for (int width = 60; width < 500; width += 13) {
            Filled flow(plain(variedText()), width);
            const qreal height = flow.height();
            flow.setWidth(std::ceil(flow.usedWidth()));
            QCOMPARE(flow.height(), height);
        }
    }

    /// A line ends in a word that is longer than it where the character behind it tells, so a part
    /// of a paragraph that is laid out alone can have other lines than it has in the paragraph.
    void aLongWordHasTheSameLinesInAnyChunks_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qreal>("width");
        QTest::addColumn<int>("chunkSize");
        // A slash stands alone before a word of two lines and on the line of a shorter one: a chunk
        // that sees all of the word keeps half of it.
        const QFontMetricsF metrics(textFormat().font);
        for (const int n : {3, 10, 1000}) {
            const qreal width = metrics.horizontalAdvance(QString(n, u'W') + u'/');
            QVERIFY(metrics.horizontalAdvance(QString(n + 1, u'W')) > width);
            for (int between = 0; between < (n > 100 ? 1 : 16); ++between)
                QTest::addRow("%d letters, %d between", n, between)
                    << QString(QString(2 * n, u'W') + QString(between, u'i') + u'/' +
                               QString(2 * n, u'W') + u'/')
                    << width << 4 * n + 1 + between;
        }
        QRandomGenerator generator(11);
        for (const QString& alphabet : {base64, devanagari, arabic})
            for (const int chunkSize : {1, 40, 3000})
                QTest::addRow("U+%04x in chunks of %d", alphabet[0].unicode(), chunkSize)
                    << random(generator, alphabet, 3500) << 90.0 << chunkSize;
    }
    void aLongWordHasTheSameLinesInAnyChunks() {
        QFETCH(QString, text);
        QFETCH(qreal, width);
        QFETCH(int, chunkSize);
        Filled flow(plain(text), width, chunkSize);
        QCOMPARE(misplaced(flow), -1);
        // Pointed at, selected and drawn, too.
        for (qreal y = 1; y < flow.height(); y += flow.lineHeight())
            QVERIFY(flow.positionAt({width, y}) <= text.size());
        const auto lines = flow.rects(0, text.size());
        QVERIFY(std::abs(lines.back().bottom() - flow.height()) < flow.lineHeight() / 2);
        QVERIFY(!flow.picture({1, text.size() - 1}).isNull());
    }

    void aTextThatGrowsLooksLikeTheWhole() {
        const QString text = variedText().repeated(2) + QString(4000, u'y') + u' ' +
                             u"word and "_s.repeated(900) + u"\nend"_s;
        Filled grown({}, 260);
        QRandomGenerator generator(3);
        qsizetype length = 0;
        while (length < text.size()) {
            const qsizetype step = length < 300 ? 1 : 1 + generator.bounded(900);
            grown.replaceTail(length, plain(text.mid(length, step)));
            length = std::min(length + step, text.size());
            const Filled whole(plain(text.left(length)), 260);
            QCOMPARE(grown.height(), whole.height());
            QCOMPARE(grown.usedWidth(), whole.usedWidth());
        }
        QCOMPARE(geometry(grown), geometry(Filled(plain(text), 260)));
    }

    void aTextThatChangesAtItsEndLooksLikeTheWhole() {
        // As while a reply streams: markers vanish when they are closed, and styles come.
        const QString text =
            u"Plain first line.\nSome **bold and `code` and *more** words* to come "
            "with [a link](http://example.org/) in it.\n\nAnother ~~one~~ **ends"_s;
        Filled grown({}, 150);
        InlineMarkdown::Position position;
        for (qsizetype length = 0; length <= text.size(); ++length) {
            const QStringView beginning = QStringView(text).left(length);
            const qsizetype from = position.result;
            grown.replaceTail(from, InlineMarkdown::parseOn(beginning, position));
            const AttributedString parsed = InlineMarkdown::parse(beginning);
            QCOMPARE(grown.content(), parsed);
            QCOMPARE(geometry(grown), geometry(Filled(parsed, 150)));
        }
    }

    /// Line breaks of two characters and markup that vanishes about them, in every way that such a
    /// text can come in two pieces.
    void everySplitLooksLikeTheWhole() {
        const QString alphabet = u"b\r\n`"_s;
        for (int number = 0; number < 4 * 4 * 4 * 4 * 4; ++number) {
            QString text;
            for (int i = 0, rest = number; i < 5; ++i, rest /= 4)
                text += alphabet[rest % 4];
            const AttributedString parsed = InlineMarkdown::parse(text);
            const Filled whole(parsed, 200);
            for (qsizetype split = 0; split < text.size(); ++split) {
                InlineMarkdown::Position position;
                Filled grown(InlineMarkdown::parseOn(text.left(split), position), 200);
                const qsizetype from = position.result;
                grown.replaceTail(from, InlineMarkdown::parseOn(text, position));
                QCOMPARE(grown.content(), parsed);
                QVERIFY2(geometry(grown) == geometry(whole),
                         qPrintable(QString::fromLatin1(text.toLatin1().toPercentEncoding())));
            }
        }
    }

    /// Any text, in chunks of any size, changed and made narrower and wider.
    void whateverIsDoneItLooksLikeTheWhole() {
        QRandomGenerator generator(20240711);
        const auto upTo = [&](qsizetype maximum) { return generator.bounded(int(maximum) + 1); };
        QString odd =
            u"W/ i\u2028-\u00ad\u200b\u200d\u202e\u2066\ufeff\ufffe\ufffc\u0301\u05e9\u05dc\u4e2d"_s;
        for (char16_t control = 0; control < 0x20; ++control)
            odd += QChar(control);
        odd += QString(u"\U0001f600"_s).repeated(3); // its halves come alone, too
        const QStringList alphabets{u"some words "_s, base64, devanagari, arabic, odd, u"W/i"_s};
        for (int round = 0; round < 100; ++round) {
            const bool isReal = round % 50 == 0;
            const qsizetype chunkSize = isReal ? 3000 : 1 + upTo(80);
            qreal width = 20 + upTo(300);
            Filled flow({}, width, chunkSize);
            AttributedString text;
            for (int step = 0; step < 6; ++step) {
                text.truncate(text.text.size() - std::min<qsizetype>(text.text.size(), upTo(10)));
                const qsizetype from = upTo(text.text.size());
                text.append(random(generator, alphabets[upTo(5)], upTo(isReal ? 1500 : 100)),
                            AttributedString::Styles(upTo(7)));
                flow.replaceTail(from, text.mid(from, text.text.size() - from));
                if (upTo(2) == 0)
                    flow.resize(width = 20 + upTo(300));
            }
            QCOMPARE(flow.content(), text);
            QCOMPARE(misplaced(flow), -1);
            QCOMPARE(geometry(flow), geometry(Filled(text, width, chunkSize)));
            QVERIFY(!flow.picture({upTo(50), upTo(500)}).isNull());
        }
    }
};

TELLWICK_TEST(TextFlowTests, Widgets)
#include "TextFlowTests.moc"
