// SPDX-License-Identifier: MIT
#include "tests/Platform/Widgets/Scrolling/ColumnWindow.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using tests::Box;
using tests::Boxes;
using tests::ColumnWindow;

class LazyColumnTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Which rows there are

    void rowsStandBelowEachOtherInACentredColumn() {
        ColumnWindow f(3, {1000, 400});
        QCOMPARE(f.column.offset(), 0);
        QCOMPARE(f.box(0)->geometry(), QRect(150 + 16, 16, 668, 50));
        QCOMPARE(f.box(1)->geometry(), QRect(166, 16 + 50 + 12, 668, 50));
        QCOMPARE(f.box(2)->geometry().top(), 16 + 2 * 62);
        QVERIFY(f.box(0)->isVisible());
        f.column.resize(360, 400);
        QCOMPARE(f.box(0)->x(), 16);
        QCOMPARE(f.box(0)->width(), 360 - 32);
    }

    void onlyRowsNearTheVisibleAreaAreWidgets() {
        ColumnWindow f(10000, {640, 800});
        QVERIFY(f.built() >= 13);
        QVERIFY(f.built() <= 30);
        QCOMPARE(f.boxesAlive(), f.built());
        const QPointer<QWidget> first = f.box(0);
        f.column.scrollToEnd(false);
        QVERIFY(f.boxesAlive() <= 45);
        QVERIFY(f.box(9999));
        QVERIFY(!f.box(5000));
        QVERIFY(!first);
        f.column.setOffset(0);
        QCOMPARE(f.top(0), 16);
    }

    void scrollingThroughAllRowsMeetsEachOnce() {
        ColumnWindow f(2000);
        int steps = 0;
        for (; !f.column.isAtEnd(); ++steps)
            f.notches(3);
        QCOMPARE(f.boxes.made, 2000);
        QCOMPARE(steps, (2000 * 62 - 12 + 32 - 400 + 179) / 180);
    }

    void aReloadOfTenThousandRowsComparesTheirKeysAndNoMore() {
        ColumnWindow f(10000);
        f.column.scrollToEnd(false);
        const int made = f.boxes.made;
        f.boxes.keysAsked = 0;
        f.boxes.guessesAsked = 0;
        for (int i = 0; i < 100; ++i) {
            f.boxes.items.last().height += 1;
            f.column.reload();
            f.column.scrollToEnd(false);
        }
        QCOMPARE(f.boxes.made, made);
        QCOMPARE(f.boxes.keysAsked, 100 * 10000);
        QCOMPARE(f.boxes.guessesAsked, 0);
    }

    void aReloadUpdatesTheWidgetsThatExist() {
        ColumnWindow f(100);
        const int before = f.box(3)->updates;
        f.column.reload();
        QCOMPARE(f.box(3)->updates, before + 1);
    }

    void movedRowsKeepTheirWidgetsAndRemovedOnesLoseThem() {
        ColumnWindow f(5);
        QWidget* first = f.box(0);
        QWidget* last = f.box(4);
        std::swap(f.boxes.items[0], f.boxes.items[4]);
        f.column.reload();
        QCOMPARE(f.box(4), first);
        QCOMPARE(f.box(0), last);
        QCOMPARE(last->y(), 16);
        QCOMPARE(f.boxes.made, 5);
        f.boxes.items.clear();
        f.column.reload();
        QCOMPARE(f.boxesAlive(), 0);
        QCOMPARE(f.column.offset(), 0);
    }

    void aRowWithTheFocusSurvivesScrollingAway() {
        ColumnWindow f(1000);
        const QPointer<Box> box = f.box(1);
        box->setFocus();
        f.column.scrollToEnd(false);
        QVERIFY(f.boxesAlive() > 0 && box);
        QVERIFY(box->hasFocus());
        QVERIFY(box->geometry().bottom() < 0);
        f.field.setFocus();
        f.notches(-1);
        QVERIFY(f.boxesAlive() > 0 && !box);
    }

    void aRowInUseSurvivesScrollingAway() {
        ColumnWindow f(1000);
        const QPointer<Box> box = f.box(1);
        box->isInUse = true;
        f.column.scrollToEnd(false);
        QVERIFY(f.boxesAlive() > 0 && box);
        f.column.setOffset(0);
        QCOMPARE(box->y(), 16 + 62);
    }

    void anEmptyColumnIsFine() {
        ColumnWindow f(0);
        QCOMPARE(f.column.maximum(), 0);
        f.column.scrollToEnd(true);
        f.column.scrollToEnd(false);
        f.notches(1);
        QTest::keyClick(&f.column, Qt::Key_End);
        QCOMPARE(f.column.offset(), 0);
        QCOMPARE(f.column.rowOf(&f.field), -1);
    }

    // Where they stand

    void anyOrderOfChangesLeavesTheRowsBelowEachOther() {
        QRandomGenerator random(11);
        ColumnWindow f(30);
        f.boxes.guess = 31;
        for (int round = 0; round < 300; ++round) {
            auto& items = f.boxes.items;
            switch (random.bounded(4)) {
            case 0:
                items.insert(random.bounded(items.size() + 1),
                             Boxes::Item{.height = random.bounded(200)});
                break;
            case 1:
                if (items.size() > 10)
                    items.removeAt(random.bounded(items.size()));
                break;
            case 2:
                items[random.bounded(items.size())].height = random.bounded(200);
                break;
            default:
                f.column.setOffset(random.bounded(f.column.maximum() + 1));
            }
            f.column.reload();
            int top = 16 - f.column.offset();
            for (qsizetype i = 0; i < items.size(); ++i) {
                const QRect rect = f.column.rowRect(i);
                QCOMPARE(rect.top(), top);
                if (const Box* box = f.box(i)) {
                    QCOMPARE(box->geometry(), rect);
                    QCOMPARE(box->height(), items[i].height);
                } else {
                    QVERIFY(rect.bottom() < 0 || rect.top() >= 400);
                }
                top += rect.height() + 12;
            }
            QCOMPARE(f.column.maximum(), top - 12 + 16 + f.column.offset() - 400);
        }
    }

    void whatIsVisibleStaysWhenARowAboveChangesItsHeight() {
        ColumnWindow f(1000);
        f.column.setOffset(3000);
        const qsizetype first = f.firstVisible();
        const int y = f.top(first);
        // A row with a widget, and one without.
        f.boxes.items[first - 2].height = 333;
        f.column.reload();
        QCOMPARE(f.top(first), y);
        f.box(first - 3)->setBoxHeight(99);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QCOMPARE(f.top(first), y);
        f.boxes.items[1].height = 777;
        f.column.reload();
        QCOMPARE(f.top(first), y);
    }

    void whatIsVisibleStaysWhenRowsComeAndGoAbove() {
        ColumnWindow f(1000);
        f.column.setOffset(3000);
        const qsizetype first = f.firstVisible();
        const QWidget* widget = f.box(first);
        const int y = f.top(first);
        for (int i = 0; i < 7; ++i)
            f.boxes.items.prepend(Boxes::Item{});
        f.column.reload();
        QCOMPARE(f.column.rowOf(widget), first + 7);
        QCOMPARE(widget->y(), y);
        f.boxes.items.remove(0, 20);
        f.column.reload();
        QCOMPARE(f.column.rowOf(widget), first - 13);
        QCOMPARE(widget->y(), y);
    }

    void whatIsVisibleMovesByTheWheelsDistanceThroughRowsThatWereGuessed() {
        const auto f = ColumnWindow::uneven(30);
        f->column.scrollToEnd(false);
        for (int i = 0; i < 200; ++i) {
            const qsizetype first = f->firstVisible();
            const int y = f->top(first);
            const QWidget* widget = f->box(first);
            f->notches(-0.5);
            if (f->column.offset() == 0)
                break;
            QCOMPARE(widget->y(), y + 30);
        }
        // A jump to where all is guessed.
        f->column.setOffset(f->column.maximum() / 3);
        const qsizetype first = f->firstVisible();
        QVERIFY(first > 0);
        for (qsizetype i = first; f->top(i) >= 0 && f->top(i) < 400; ++i)
            QCOMPARE(f->box(i)->height(), f->boxes.items[i].height);
    }

    void aGlideGoesItsWayThroughRowsThatWereGuessed() {
        const auto f = ColumnWindow::uneven(30);
        f->column.scrollToEnd(false);
        f->theme.motion().setEnabled(true);
        const qsizetype first = f->firstVisible();
        const int y = f->top(first);
        for (int i = 0; i < 5; ++i)
            f->notches(-1);
        QVERIFY(f->settle());
        QCOMPARE(f->top(first), y + 300);
    }

    void theEndStaysVisibleWhenTheColumnIsResized() {
        ColumnWindow f(100);
        f.column.scrollToEnd(false);
        f.column.resize(500, 300);
        QVERIFY(f.column.isAtEnd());
        QCOMPARE(f.endGap(), 16);
        f.column.resize(400, 350);
        QCOMPARE(f.endGap(), 16);
    }

    void theTopStaysWhenTheColumnIsResizedElsewhere() {
        ColumnWindow f(100);
        f.column.setOffset(1000);
        const qsizetype first = f.firstVisible();
        const int y = f.top(first);
        f.column.resize(400, 300);
        QCOMPARE(f.top(first), y);
    }

    void aRowThatGrowsByItselfGetsItsHeight() {
        ColumnWindow f(10);
        f.box(2)->setBoxHeight(200);
        QTRY_COMPARE(f.box(2)->height(), 200);
        QCOMPARE(f.top(3), f.top(2) + 212);
    }

    // The end

    void scrollToEndShowsTheLastRowsEnd_data() {
        QTest::addColumn<int>("guess");
        for (const int guess : {1, 20, 500})
            QTest::addRow("a guess of %d", guess) << guess;
    }
    void scrollToEndShowsTheLastRowsEnd() {
        QFETCH(int, guess);
        const auto f = ColumnWindow::uneven(guess);
        f->column.scrollToEnd(false);
        QVERIFY(f->column.isAtEnd());
        QCOMPARE(f->endGap(), 16);
        f->boxes.items.append(Boxes::Item{});
        f->column.reload();
        QVERIFY(!f->column.isAtEnd());
        f->column.scrollToEnd(true); // without motion
        QVERIFY(!f->column.isScrollingToEnd());
        QCOMPARE(f->endGap(), 16);
        f->column.setOffset(0);
        QCOMPARE(f->top(0), 16);
    }

    void anAnimatedScrollTakesItsTimeAndFollowsAGrowingEnd() {
        ColumnWindow f(100);
        f.theme.motion().setEnabled(true);
        QElapsedTimer timer;
        timer.start();
        f.column.scrollToEnd(true);
        QVERIFY(f.column.isScrollingToEnd());
        QVERIFY(!f.column.isAtEnd());
        int last = 0;
        bool hasGrown = false;
        QVERIFY(QTest::qWaitFor([&] {
            if (f.column.offset() > 0 && !std::exchange(hasGrown, true)) {
                f.boxes.items.last().height = 300;
                f.column.reload();
            }
            const bool isOnTheWay = f.column.offset() >= std::exchange(last, f.column.offset());
            return !isOnTheWay || !f.column.isScrollingToEnd();
        }));
        QVERIFY(!f.column.isScrollingToEnd());
        QVERIFY(timer.elapsed() >= 190);
        QCOMPARE(f.endGap(), 16);
    }

    void aWheelEndsAnAnimation() {
        ColumnWindow f(100);
        f.theme.motion().setEnabled(true);
        f.column.scrollToEnd(true);
        f.notches(-1);
        QVERIFY(!f.column.isScrollingToEnd());
        f.column.scrollToEnd(true);
        f.wheel({0, 5}, {0, 5}, Qt::ScrollUpdate);
        QVERIFY(!f.column.isScrollingToEnd());
        QVERIFY(!f.column.isAtEnd());
    }

    // The keyboard and assistive technology

    void tabGoesThroughTheRowsInTheirOrder() {
        ColumnWindow f(100);
        f.column.setOffset(1000);
        f.column.setOffset(900); // rows above were made after those below
        f.column.setFocus();
        const qsizetype first = f.column.rowOf(f.column.nextInFocusChain());
        QVERIFY(first >= 0);
        for (qsizetype i = 0; i < 5; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(f.column.rowOf(QApplication::focusWidget()), first + i);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(f.column.rowOf(QApplication::focusWidget()), first + 3);
    }

    void tabBringsARowIntoView() {
        ColumnWindow f(100);
        f.box(0)->setFocus();
        for (int i = 1; i < 30; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const Box* box = f.box(i);
            QVERIFY(box && box->hasFocus());
            QVERIFY(box->y() >= 0 && box->geometry().bottom() < 400);
        }
    }

    void assistiveTechnologySeesAllRows() {
        ColumnWindow f(10000);
        f.column.setAccessibleName(u"Conversation"_s);
        QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&f.column);
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->text(QAccessible::Name), u"Conversation"_s);
        QCOMPARE(list->childCount(), 10000);
        for (const int row : {0, 1, 5000, 9999}) {
            QAccessibleInterface* item = list->child(row);
            QVERIFY(item);
            QVERIFY(item->isValid());
            QCOMPARE(item->role(), QAccessible::ListItem);
            QCOMPARE(item->text(QAccessible::Name), u"Row %1"_s.arg(row));
            QCOMPARE(item->parent(), list);
            QCOMPARE(list->indexOfChild(item), row);
            QCOMPARE(list->child(row), item);
            QVERIFY(item->rect().height() > 0);
        }
        QVERIFY(list->child(0)->object());
        QVERIFY(!list->child(5000)->object());
        QVERIFY(list->child(5000)->state().offscreen);
        QCOMPARE(list->child(10000), nullptr);
        QCOMPARE(list->child(-1), nullptr);
        // A row that is built gets the item of its widget; a row that has gone is no valid one.
        QAccessibleInterface* unbuilt = list->child(9999);
        f.column.scrollToEnd(false);
        QVERIFY(list->child(9999)->object());
        QCOMPARE(list->child(9999)->text(QAccessible::Name), u"Row 9999"_s);
        f.boxes.items.removeLast();
        f.column.reload();
        QVERIFY(!unbuilt->isValid());
        QCOMPARE(unbuilt->text(QAccessible::Name), QString());
        QCOMPARE(list->childCount(), 9999);
    }
};

TELLWICK_TEST(LazyColumnTests, Widgets)
#include "LazyColumnTests.moc"
