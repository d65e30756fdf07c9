// SPDX-License-Identifier: MIT
// Areas over one widget: how the content stands in them, and areas that scroll sideways.
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "tests/Platform/Widgets/Scrolling/Boxes.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QScroller>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using platform::ScrollArea;
using tests::Box;

namespace {

/// An area of 200 by 300 over ten boxes, 100 pixels high.
struct Column : tests::AreaWindow {
    QList<Box*> boxes;
    ScrollArea* scroll = new ScrollArea(theme);

    Column() {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        column->setContentsMargins({});
        column->setSpacing(0);
        for (int i = 0; i < 10; ++i) {
            boxes.append(new Box(100));
            column->addWidget(boxes.last());
        }
        scroll->setContent(content);
        show(scroll, {200, 300});
        area->setFocus();
    }
};

/// An area of 200 by 40 over eight buttons, 50 pixels wide.
struct Strip : tests::AreaWindow {
    QList<QPushButton*> buttons;
    int clicks = 0;

    explicit Strip(Qt::LayoutDirection direction = Qt::LeftToRight, int width = 200) {
        window.setLayoutDirection(direction);
        auto* content = new QWidget;
        auto* row = new QHBoxLayout(content);
        row->setContentsMargins({});
        row->setSpacing(0);
        for (int i = 0; i < 8; ++i) {
            auto* button = new QPushButton;
            button->setFixedSize(50, 40);
            QObject::connect(button, &QPushButton::clicked, &window, [this] { ++clicks; });
            row->addWidget(button);
            buttons.append(button);
        }
        auto* made = new ScrollArea(theme, nullptr, Qt::Horizontal);
        made->setContent(content);
        show(made, {width, 40});
    }
    int left(int button) const { return buttons[button]->mapTo(area, QPoint()).x(); }
};

} // namespace

class ScrollContentTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theContentHasTheAreasWidthAndItsOwnHeight() {
        const Column f;
        QCOMPARE(f.scroll->content()->size(), QSize(200, 1000));
        QCOMPARE(f.area->maximum(), 700);
        QCOMPARE(f.area->heightForWidth(200), 1000);
        QCOMPARE(f.area->minimumSizeHint(), QSize(0, 0));
        f.area->resize(200, 1200);
        QCOMPARE(f.scroll->content()->size(), QSize(200, 1200));
    }

    void assistiveTechnologyMeetsNothingBetween() {
        const Column f;
        QAccessibleInterface* area = QAccessible::queryAccessibleInterface(f.area);
        QCOMPARE(area->childCount(), 2);
        QCOMPARE(area->child(0)->object(), f.scroll->content());
        QCOMPARE(area->child(1)->role(), QAccessible::ScrollBar);
        f.area->resize(200, 1200);
        QVERIFY(area->child(1)->state().invisible);
    }

    void offsetsStayWithinTheContent() {
        const Column f;
        f.area->setOffset(5000);
        QCOMPARE(f.area->offset(), 700);
        QVERIFY(f.area->isAtEnd());
        QCOMPARE(f.scroll->content()->y(), -700);
        f.area->setOffset(-5);
        QCOMPARE(f.area->offset(), 0);
        QVERIFY(!f.area->isAtEnd());
        f.area->setOffset(700);
        f.area->resize(200, 900);
        QCOMPARE(f.area->offset(), 100);
    }

    void contentThatGrowsAndShrinksIsFollowed() {
        const Column f;
        f.area->setOffset(700);
        f.boxes[9]->hide();
        QTRY_COMPARE(f.area->offset(), 600);
        QCOMPARE(f.area->maximum(), 600);
        f.boxes[9]->show();
        QTRY_COMPARE(f.area->maximum(), 700);
    }

    void newContentReplacesTheOldAndStartsAtItsTop() {
        const Column f;
        f.area->setOffset(300);
        const QPointer<QWidget> old(f.scroll->content());
        f.scroll->setContent(new Box(800));
        QVERIFY(old.isNull());
        QCOMPARE(f.area->offset(), 0);
        QCOMPARE(f.area->maximum(), 500);
    }

    void whatTakesTheFocusComesIntoView() {
        const Column f;
        f.boxes[7]->setFocus(Qt::TabFocusReason);
        QCOMPARE(f.area->offset(), 500 + 24);
        f.boxes[6]->setFocus(Qt::TabFocusReason); // in view already
        QCOMPARE(f.area->offset(), 500 + 24);
        f.boxes[0]->setFocus(Qt::BacktabFocusReason);
        QCOMPARE(f.area->offset(), 0);
        // What is too high is left alone where some of it is in view.
        f.boxes[5]->setFixedHeight(600);
        QTRY_COMPARE(f.area->maximum(), 1200);
        f.area->setOffset(400);
        f.boxes[5]->setFocus(Qt::TabFocusReason);
        QCOMPARE(f.area->offset(), 400);
        f.boxes[0]->setFocus(Qt::BacktabFocusReason);
        f.boxes[5]->setFocus(Qt::TabFocusReason);
        QCOMPARE(f.area->offset(), 500 - 24);
    }

    void aWindowThatBecomesActiveAgainScrollsNothing() {
        const Column f;
        f.boxes[0]->setFocus();
        f.area->setOffset(600);
        Q_EMIT qApp->focusChanged(nullptr, f.boxes[0]);
        QCOMPARE(f.area->offset(), 600);
        Q_EMIT qApp->focusChanged(f.area, f.boxes[0]);
        QCOMPARE(f.area->offset(), 0);
    }

    void onlyAnAreaThatScrollsTakesTheKeyboard() {
        const Column f;
        QCOMPARE(f.area->focusPolicy(), Qt::TabFocus);
        f.area->resize(200, 1200);
        QCOMPARE(f.area->focusPolicy(), Qt::NoFocus);
        QCOMPARE(Strip().area->focusPolicy(), Qt::NoFocus);
    }

    // Sideways

    void aStripThatFitsStandsInTheMiddle() {
        Strip f(Qt::LeftToRight, 500);
        QCOMPARE(f.left(0), 50);
        QCOMPARE(f.area->maximum(), 0);
        f.area->resize(300, 40);
        QCOMPARE(f.left(0), 0);
        QCOMPARE(f.area->maximum(), 100);
        QCOMPARE(f.area->minimumSizeHint().height(), 40);
        QVERIFY(!f.area->findChild<platform::OverlayScrollBar*>());
    }

    void aStripStartsWhereTextStarts() {
        const Strip f(Qt::RightToLeft);
        QCOMPARE(f.left(0), 150);
        f.area->setOffset(70);
        QCOMPARE(f.left(0), 150 + 70);
    }

    void aStripTakesTheWheelSidewaysOnly_data() {
        QTest::addColumn<QPoint>("angle");
        QTest::addColumn<bool>("hasShift");
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::addColumn<int>("expected"); // from 100
        QTest::newRow("down") << QPoint(0, -120) << false << Qt::LeftToRight << 100;
        QTest::newRow("down with Shift") << QPoint(0, -120) << true << Qt::LeftToRight << 160;
        QTest::newRow("right") << QPoint(-120, 0) << false << Qt::LeftToRight << 160;
        QTest::newRow("left") << QPoint(120, 10) << false << Qt::LeftToRight << 40;
        QTest::newRow("right to left: right") << QPoint(-120, 0) << false << Qt::RightToLeft << 40;
        QTest::newRow("right to left: down with Shift")
            << QPoint(0, -120) << true << Qt::RightToLeft << 160;
    }
    void aStripTakesTheWheelSidewaysOnly() {
        QFETCH(QPoint, angle);
        QFETCH(bool, hasShift);
        QFETCH(Qt::LayoutDirection, direction);
        QFETCH(int, expected);
        const Strip f(direction);
        f.area->setOffset(100);
        const bool isUsed =
            f.wheel(angle, {}, Qt::NoScrollPhase, hasShift ? Qt::ShiftModifier : Qt::NoModifier);
        QCOMPARE(f.area->offset(), expected);
        QCOMPARE(isUsed, expected != 100);
    }

    void aTouchpadsMovementAcrossAStripScrollsTheAreaAround() {
        Strip f;
        Column around;
        auto* content = new Box(1000);
        around.scroll->setContent(content);
        f.area->setParent(content);
        QVERIFY(f.wheel({}, {}, Qt::ScrollBegin));
        f.wheel({0, -30}, {0, -30}, Qt::ScrollUpdate);
        f.wheel({-20, 0}, {-20, 0}, Qt::ScrollUpdate);
        QCOMPARE(around.area->offset(), 30);
        QCOMPARE(f.area->offset(), 20);
        f.area->setParent(&f.window);
    }

    void aStripTakesTheArrowsAlongIt() {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            const Strip f(direction);
            const bool isLeft = direction == Qt::RightToLeft;
            QTest::keyClick(f.area, isLeft ? Qt::Key_Left : Qt::Key_Right);
            QCOMPARE(f.area->offset(), 40);
            QTest::keyClick(f.area, isLeft ? Qt::Key_Right : Qt::Key_Left);
            QCOMPARE(f.area->offset(), 0);
            for (const auto other : {Qt::Key_Down, Qt::Key_Space, Qt::Key_End}) {
                QKeyEvent event(QEvent::KeyPress, other, Qt::NoModifier);
                QCoreApplication::sendEvent(f.area, &event);
                QVERIFY(!event.isAccepted());
            }
        }
    }

    void aStripBringsTheFocusIntoView() {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            const Strip f(direction);
            f.buttons[1]->setFocus();
            f.buttons[5]->setFocus(Qt::TabFocusReason);
            QCOMPARE(f.area->offset(), 300 + 24 - 200);
            f.buttons[0]->setFocus(Qt::BacktabFocusReason);
            QCOMPARE(f.area->offset(), 0);
        }
    }

    void aStripIsDraggedAndWhatIsDraggedIsNotPressed() {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            Strip f(direction);
            const int away = direction == Qt::LeftToRight ? -1 : 1;
            QWindow* window = f.window.windowHandle();
            QTest::mousePress(window, Qt::LeftButton, {}, QPoint(100, 20));
            for (int i = 1; i <= 30; ++i)
                QTest::mouseMove(window, QPoint(100 + away * 3 * i, 20));
            QTRY_VERIFY(f.area->offset() > 20);
            QTest::mouseRelease(window, Qt::LeftButton, {}, QPoint(100 + away * 90, 20));
            QVERIFY(f.settle());
            QCOMPARE(f.clicks, 0);
            for (const QPushButton* button : f.buttons)
                QVERIFY(!button->isDown());
            QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(100, 20));
            QCOMPARE(f.clicks, 1);
        }
    }
};

TELLWICK_TEST(ScrollContentTests, Widgets)
#include "ScrollContentTests.moc"
