// SPDX-License-Identifier: MIT
#include "tests/Platform/Widgets/Text/TextWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using namespace platform;
using tests::TextWindow;

namespace {

/// Counts the painting of a widget and how much of it.
struct PaintWatch : QObject {
    int count = 0;
    QRect painted;
    explicit PaintWatch(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++count;
            painted |= static_cast<QPaintEvent*>(event)->rect();
        }
        return false;
    }
};

} // namespace

/// What a text view shows, paints and tells assistive technology.
class TextViewTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aTextIsShownPlainOrStyledAlsoWhileItGrows() {
        TextWindow f;
        TextBuilder builder;
        const QString whole =
            u"One **two\nthree** four.\n\n`five` [six](http://x.example)\n\nseven"_s;
        for (const QChar c : whole) {
            builder.append(QStringView(&c, 1));
            f.view.setMarkdown(builder.text());
            QCOMPARE(f.view.content(), InlineMarkdown::parse(builder.text().view()));
        }
        f.view.setPlainText(builder.text());
        QCOMPARE(f.view.content().text, whole);
        builder.append(u" more");
        f.view.setPlainText(builder.text());
        QCOMPARE(f.view.content(), (AttributedString{whole + u" more"_s, {}}));
        f.view.setMarkdown(builder.text());
        QCOMPARE(f.view.content(), InlineMarkdown::parse(builder.text().view()));
    }

    void anotherTextReplacesTheFirst() {
        TextWindow f(u"a **b** c\n\nd");
        f.view.setMarkdown(TextSnapshot(u"a **b** d"));
        QCOMPARE(f.view.content(), InlineMarkdown::parse(u"a **b** d"));
        f.view.setMarkdown(TextSnapshot(u""));
        QVERIFY(f.view.content().text.isEmpty());
    }

    void aShortTextTakesNoMoreWidthThanItNeeds() {
        TextWindow f(u"Hi");
        const QSize small = f.view.sizeWithin(400);
        QVERIFY(small.width() < 40);
        f.view.setPlainText(TextSnapshot(QString(u"many words "_s.repeated(50))));
        const QSize large = f.view.sizeWithin(400);
        QVERIFY(large.width() > 300 && large.width() <= 400);
        QVERIFY(large.height() > 3 * small.height());
    }

    void aViewMadeAsWideAsItsLinesKeepsItsHeight() {
        TextWindow f;
        f.view.setPlainText(TextSnapshot(QString(u"many words of any length "_s.repeated(50))));
        for (int width = 50; width < 480; width += 17) {
            const QSize size = f.view.sizeWithin(width);
            f.view.resize(size);
            QCOMPARE(f.view.heightForWidth(size.width()), size.height());
            QCOMPARE(int(f.view.flow().height()), size.height());
        }
        QCOMPARE(f.view.heightForWidth(200), f.view.sizeWithin(200).height());
    }

    void growthRepaintsOnlyWhatChanged() {
        TextWindow f;
        TextBuilder builder;
        builder.append(u"first\nsecond\nthird\n");
        f.view.setPlainText(builder.text());
        f.view.repaint();
        QCoreApplication::processEvents();
        PaintWatch watch(&f.view);
        for (int i = 0; i < 100; ++i) {
            builder.append(u"x");
            f.view.setPlainText(builder.text());
        }
        QTRY_VERIFY(watch.count > 0);
        QCOMPARE(watch.count, 1);
        QVERIFY(watch.painted.top() >= int(f.view.flow().characterRect(20).top()));
    }

    void aTextWithoutChangeIsNotPaintedAgain() {
        TextWindow f(u"some **words**");
        f.view.repaint();
        QCoreApplication::processEvents();
        PaintWatch watch(&f.view);
        f.view.setMarkdown(TextSnapshot(u"some **words**"));
        QCoreApplication::processEvents();
        QCOMPARE(watch.count, 0);
    }

    void theThemeIsFollowed() {
        TextWindow f(u"some words");
        const QColor light = f.view.flow().format().text;
        const qreal height = f.view.flow().height();
        f.theme.setDark(true);
        QTRY_VERIFY(f.view.flow().format().text != light);
        QFont large = f.theme.font(TextStyle::Body);
        if (large.pixelSize() > 0)
            large.setPixelSize(large.pixelSize() * 2);
        else
            large.setPointSizeF(large.pointSizeF() * 2);
        f.theme.setBodyFont(large);
        QTRY_VERIFY(f.view.flow().height() > 1.7 * height);
    }

    void whatIsLookedForIsLit() {
        TextWindow f(u"A fish, and **fish**\n\nno");
        f.view.setFound(u"FISH"_s, 12);
        const auto isLit = [&](qsizetype at, ColorRole role) {
            const QRectF place =
                f.view.flow().characterRect(at).united(f.view.flow().characterRect(at + 3));
            return tests::PaintRecorder(f.view).hasColor(f.theme.color(role), place);
        };
        QVERIFY(isLit(2, ColorRole::Found));
        QVERIFY(!isLit(2, ColorRole::FoundCurrent));
        QVERIFY(isLit(12, ColorRole::FoundCurrent));
        QVERIFY(!isLit(7, ColorRole::Found));
        QVERIFY(!isLit(18, ColorRole::Found));
        f.view.repaint();
        QCoreApplication::processEvents();
        PaintWatch watch(&f.view);
        f.view.setFound({}, {});
        QTRY_COMPARE(watch.count, 1);
        QVERIFY(!isLit(2, ColorRole::Found));
    }

    void assistiveTechnologyReadsTextSelectionAndPlace() {
        TextWindow f(u"some **bold** words");
        f.view.select({5, 9});
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&f.view);
        QVERIFY(accessible);
        QCOMPARE(accessible->role(), QAccessible::StaticText);
        QCOMPARE(accessible->text(QAccessible::Name), u"some bold words"_s);
        f.view.setAccessibleName(u"You: some bold words"_s);
        QCOMPARE(accessible->text(QAccessible::Name), u"You: some bold words"_s);
        QAccessibleTextInterface* text = accessible->textInterface();
        QVERIFY(text);
        QCOMPARE(text->characterCount(), 15);
        QCOMPARE(text->text(5, 9), u"bold"_s);
        int start = 0;
        int end = 0;
        text->selection(0, &start, &end);
        QCOMPARE(start, 5);
        QCOMPARE(end, 9);
        QVERIFY(text->attributes(6, &start, &end).contains(u"bold"_s));
        QCOMPARE(start, 5);
        QCOMPARE(end, 9);
        QCOMPARE(text->attributes(1, &start, &end), QString());
        QCOMPARE(end, 5);
        const QRect rect = text->characterRect(3);
        QCOMPARE(text->offsetAtPoint(rect.center()), 3);
        text->setSelection(0, 0, 4);
        QCOMPARE(f.view.selectedText(), u"some"_s);
    }

    void assistiveTechnologyMayAskOutsideOfTheText() {
        for (const QStringView content : {u"", u"some\nwords"}) {
            TextWindow f(content);
            QAccessibleTextInterface* text =
                QAccessible::queryAccessibleInterface(&f.view)->textInterface();
            int start = 0;
            int end = 0;
            for (const int offset : {-1000, -1, 0, 10, 11, 1000}) {
                QVERIFY(text->characterRect(offset).height() > 0);
                QCOMPARE(text->text(offset, offset), QString());
                text->attributes(offset, &start, &end);
                text->setSelection(0, offset, 3);
                QVERIFY(f.view.selection().end <= content.size());
            }
            QCOMPARE(text->offsetAtPoint({-10000, -10000}), -1);
        }
    }

    /// The accessibility bus ends a text at a NUL.
    void assistiveTechnologyReadsBeyondANul() {
        TextWindow f;
        f.view.setPlainText(TextSnapshot(QStringView(u"a\0b", 3)));
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&f.view);
        QCOMPARE(accessible->text(QAccessible::Name), u"a\ufffdb"_s);
        QCOMPARE(accessible->textInterface()->text(0, 3), u"a\ufffdb"_s);
        QCOMPARE(accessible->textInterface()->characterCount(), 3);
    }
};

TELLWICK_TEST(TextViewTests, Widgets)
#include "TextViewTests.moc"
