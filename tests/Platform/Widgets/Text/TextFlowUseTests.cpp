// SPDX-License-Identifier: MIT
#include "tests/Platform/Widgets/Text/TextFlowFixture.h"
#include "tests/support/TestMain.h"

#include <ctime>
#include <malloc.h>

#ifdef __SANITIZE_ADDRESS__
/// Of the sanitizer's run-time library; not every compiler brings the header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace Qt::StringLiterals;
using namespace platform;
using namespace tests;

namespace {

/// Seconds of processor time, for other programs may run beside the test.
double cost(const auto& work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

std::size_t allocatedBytes() {
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto allocated = mallinfo2();
    return allocated.uordblks + allocated.hblkhd;
#endif
}

} // namespace

/// What a flow tells of its text, draws of it and costs.
class TextFlowUseTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEqualTextChangesNothing() {
        Filled flow(plain(variedText()), 300);
        QCOMPARE(flow.replaceTail(0, plain(variedText())), -1.0);
        // A difference is reported from the paragraph on where it is.
        const qreal changed = flow.replaceTail(variedText().size(), plain(u"x"_s));
        QVERIFY(changed > 0);
        QCOMPARE(changed, flow.height() - flow.lineHeight());
    }

    void growthCostsWhatItAdds_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("behind many paragraphs") << u"a line of words\n"_s.repeated(20000);
        QTest::newRow("in one long paragraph") << u"word "_s.repeated(20000);
        QTest::newRow("in one long word") << u"word"_s.repeated(20000);
    }
    void growthCostsWhatItAdds() {
        QFETCH(QString, text);
        Filled flow({}, 300);
        const double whole = cost([&] { flow.replaceTail(0, plain(text)); });
        const double added = cost([&] {
            for (int i = 0; i < 20; ++i)
                flow.replaceTail(flow.content().text.size(), plain(u"token "_s));
        });
        // Laid out anew each time, the text would cost 20 times the whole.
        QVERIFY2(added < 5 * whole, qPrintable(u"%1 and %2 s"_s.arg(added).arg(whole)));
    }

    void aWiderFlowLeavesShortParagraphsAlone() {
        Filled flow({}, 300);
        const QString text = u"short\n"_s.repeated(20000) + u"long "_s.repeated(200);
        const double whole = cost([&] { flow.replaceTail(0, plain(text)); });
        const double wider = cost([&] { flow.setWidth(500); });
        QVERIFY2(wider < whole / 5, qPrintable(u"%1 and %2 s"_s.arg(wider).arg(whole)));
    }

    void onlyWhatIsShownKeepsItsGlyphs() {
        Filled flow(plain(u"a line of words\n"_s.repeated(20000)), 300);
        const std::size_t before = allocatedBytes();
        QImage image(300, 400, QImage::Format_RGB32);
        QPainter painter(&image);
        for (qreal y = 0; y < flow.height(); y += 400)
            flow.draw(painter, {0, -y}, image.rect(), {});
        const std::size_t after = allocatedBytes();
        // The glyphs of all the lines take more than a kilobyte each.
        QVERIFY2(after < before + 5'000'000, qPrintable(QString::number(after - before)));
    }

    void aPointLeadsToTheCharacterThatStandsThere() {
        const Filled flow(
            plain(u"Latin text only, in several lines. "_s.repeated(200) + u"\n\nend"_s), 222);
        const QString& text = flow.content().text;
        for (qsizetype i = 0; i < text.size(); i += 7) {
            if (text[i].isSpace())
                continue;
            const QPointF middle = flow.characterRect(i).center();
            QCOMPARE(flow.characterAt(middle), i);
            const qsizetype position = flow.positionAt(middle);
            QVERIFY(position == i || position == i + 1);
        }
        QCOMPARE(flow.positionAt({-10, -10}), 0);
        QCOMPARE(flow.positionAt({0, flow.height() + 50}), text.size());
    }

    /// Each line that goes on below ends before its blank, also the last one of a chunk.
    void aPointBehindALineLeadsToItsEnd() {
        const QString text = u"words "_s.repeated(100);
        const Filled flow(plain(text), 100, 50);
        for (qreal y = flow.lineHeight() / 2; y < flow.height() - flow.lineHeight();
             y += flow.lineHeight()) {
            const qsizetype end = flow.positionAt({1000, y});
            QCOMPARE(text[end], u' ');
            QVERIFY(std::abs(flow.characterRect(end).center().y() - y) < flow.lineHeight() / 2);
        }
        QCOMPARE(flow.positionAt({1000, flow.height() - 1}), text.size());
    }

    void aPointBesideTheTextIsOnNoCharacter() {
        const Filled flow(plain(u"ab\n\ncd"_s), 300);
        QCOMPARE(flow.characterAt({200, 5}), -1);
        QCOMPARE(flow.characterAt({2, flow.lineHeight() * 1.5}), -1);
        QCOMPARE(flow.characterAt({2, -3}), -1);
        QCOMPARE(flow.characterAt({2, 1000}), -1);
        QCOMPARE(flow.characterAt({2, 5}), 0);
    }

    void rightToLeftParagraphsLieRight() {
        Filled flow(plain(u"\u05e9\u05dc\u05d5\u05dd\nleft"_s), 400);
        flow.setFrameWidth(200);
        QVERIFY(std::abs(flow.characterRect(0).right() - 200) < 2);
        QCOMPARE(flow.characterRect(5).left(), 0.0);
        const auto rects = flow.rects(0, 4);
        QCOMPARE(rects.size(), 1u);
        QVERIFY(rects[0].right() <= 200.5 && rects[0].left() > 100);
    }

    void aSelectionIsDrawn() {
        Filled flow(plain(u"some words"_s), 300);
        const auto coloured = [&](TextSpan selection) {
            const QImage image = flow.picture(selection);
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

    void onlyOpenableLinksLookLikeLinks() {
        const auto isUnderlined = [](const QString& target) {
            AttributedString text;
            text.append(u"link", AttributedString::Link, target);
            return textFormat().layout(text, false)->formats().at(0).format.fontUnderline();
        };
        QVERIFY(isUnderlined(u"http://example.org"_s));
        QVERIFY(!isUnderlined(u"file:///etc/passwd"_s));
    }
};

TELLWICK_TEST(TextFlowUseTests, Widgets)
#include "TextFlowUseTests.moc"
