// SPDX-License-Identifier: MIT
// How a column comes to its end, and stays there.
#include "tests/Platform/Widgets/Scrolling/ColumnWindow.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>

using tests::Boxes;
using tests::ColumnWindow;

class LazyColumnEndTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingScrollsWhenItIsFirstShown() {
        ColumnWindow f(100);
        QCOMPARE(f.column.offset(), 0);
        QCOMPARE(f.top(0), 16);
    }

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

    void anAnimatedScrollTakesItsTimeAndFollowsAGrowingEnd_data() {
        QTest::addColumn<bool>("grows");
        QTest::newRow("steady") << false;
        QTest::newRow("growing") << true;
    }
    void anAnimatedScrollTakesItsTimeAndFollowsAGrowingEnd() {
        QFETCH(bool, grows);
        ColumnWindow f(100);
        f.theme.motion().setEnabled(true);
        QElapsedTimer timer;
        timer.start();
        f.column.scrollToEnd(true);
        QVERIFY(f.column.isScrollingToEnd());
        QVERIFY(!f.column.isAtEnd());
        int last = 0;
        bool isFirst = true;
        QVERIFY(QTest::qWaitFor([&] {
            if (grows && isFirst && f.column.offset() > 0) {
                isFirst = false;
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
};

TELLWICK_TEST(LazyColumnEndTests, Widgets)
#include "LazyColumnEndTests.moc"
