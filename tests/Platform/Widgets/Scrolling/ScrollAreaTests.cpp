// SPDX-License-Identifier: MIT
// What every area does alike, tried on one over a widget and on one over rows.
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Platform/Widgets/Text/TextView.h"
#include "tests/Platform/Widgets/Scrolling/Boxes.h"
#include "tests/support/TestMain.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCursor>
#include <QPointingDevice>

#include <memory>

using namespace Qt::StringLiterals;
using namespace platform;
using tests::Box;

namespace {

/// An area of 500 by 400 over 2,000 pixels and more, of the kind that the test's row names.
struct Fixture : tests::AreaWindow {
    tests::Boxes rows{40};

    explicit Fixture(const QString& text = {}, Qt::LayoutDirection direction = Qt::LeftToRight) {
        QFETCH_GLOBAL(bool, isRows);
        window.setLayoutDirection(direction);
        if (!text.isEmpty()) {
            rows.items.resize(1);
            rows.makeOther = [this, text](QWidget* parent) {
                auto* view = new TextView(theme, TextView::Background::Window, parent);
                view->setMarkdown(TextSnapshot(text));
                return view;
            };
        }
        if (isRows) {
            show(new LazyColumn(theme, rows));
        } else {
            auto* made = new ScrollArea(theme);
            made->setContent(text.isEmpty() ? new Box(2500) : rows.make(0, nullptr));
            show(made);
        }
    }
    ~Fixture() { delete area; } // before the rows

    int offset() const { return area->offset(); }
    OverlayScrollBar* bar() const { return area->findChild<OverlayScrollBar*>(); }
    /// Fingers that move ten times so far, 10 ms apart, and leave so long after that.
    void fling(int pixels, quint64 rest = 5) const {
        wheel({}, {}, Qt::ScrollBegin);
        for (quint64 i = 1; i <= 10; ++i)
            wheel({0, pixels}, {0, pixels}, Qt::ScrollUpdate, {}, 1000 + 10 * i);
        wheel({}, {}, Qt::ScrollEnd, {}, 1100 + rest);
    }
};

} // namespace

class ScrollAreaTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() {
        QTest::addColumn<bool>("isRows");
        QTest::newRow("widget") << false;
        QTest::newRow("rows") << true;
    }
    void cleanup() { QApplication::setWheelScrollLines(3); }

    void aNotchGoesByTheDesktopsLinesAndTheFont_data() {
        QTest::addColumn<int>("lines");
        QTest::addColumn<int>("font");
        QTest::addColumn<int>("expected");
        QTest::newRow("as usual") << 3 << 13 << 60;
        QTest::newRow("five lines") << 5 << 13 << 100;
        QTest::newRow("twice the font") << 3 << 26 << 120;
        QTest::newRow("at most a page") << 100 << 13 << 360;
    }
    void aNotchGoesByTheDesktopsLinesAndTheFont() {
        QFETCH(int, lines);
        QFETCH(int, font);
        QFETCH(int, expected);
        Fixture f;
        QApplication::setWheelScrollLines(lines);
        f.theme.setBodyFont(tests::SteadyTheme(font).font(TextStyle::Body));
        f.notches(1);
        QCOMPARE(f.offset(), expected);
        f.notches(-1);
        QCOMPARE(f.offset(), 0);
        f.notches(1000);
        QCOMPARE(f.offset(), expected * 1000 > f.area->maximum() ? f.area->maximum() : 0);
    }

    void partsOfANotchAddUp() {
        Fixture f;
        for (int i = 0; i < 8; ++i)
            f.notches(0.125); // 7.5 pixels
        QCOMPARE(f.offset(), 60);
    }

    void notchesGlideAndAddUp() {
        Fixture f;
        f.theme.motion().setEnabled(true);
        f.notches(1);
        f.notches(1);
        QVERIFY(f.offset() < 60);
        QVERIFY(f.settle());
        QCOMPARE(f.offset(), 120);
        f.notches(1);
        f.notches(-1); // turned back: what was still to go is dropped
        QVERIFY(f.settle());
        QVERIFY(f.offset() <= 120 && f.offset() > 0);
    }

    void pixelsCountWhereTheyComeInPhases() {
        Fixture f;
        f.wheel({0, -120}, {0, -15});
        QCOMPARE(f.offset(), 60);
        f.wheel({0, -120}, {0, -15}, Qt::ScrollUpdate);
        QCOMPARE(f.offset(), 75);
        f.wheel({0, 30}, {0, 7}, Qt::ScrollMomentum);
        QCOMPARE(f.offset(), 68);
    }

    void fingersThatLeaveATouchpadLetItRunOut_data() {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("rest");
        QTest::addColumn<bool>("hasMotion");
        QTest::addColumn<int>("expected");
        QTest::newRow("fast") << -10 << 5 << true << 425;
        QTest::newRow("slow") << -1 << 5 << true << 10;
        QTest::newRow("rested") << -10 << 300 << true << 100;
        QTest::newRow("without motion") << -10 << 5 << false << 100;
        QTest::newRow("to the end") << -200 << 5 << true << -1;
        QTest::newRow("beyond the start") << 10 << 5 << true << 0;
    }
    void fingersThatLeaveATouchpadLetItRunOut() {
        QFETCH(int, pixels);
        QFETCH(int, rest);
        QFETCH(bool, hasMotion);
        QFETCH(int, expected);
        Fixture f;
        f.theme.motion().setEnabled(hasMotion);
        f.fling(pixels, static_cast<quint64>(rest));
        QVERIFY(f.settle());
        QVERIFY2(std::abs(f.offset() - (expected < 0 ? f.area->maximum() : expected)) <= 25,
                 qPrintable(QString::number(f.offset())));
    }

    void aRunOutEndsWhenItIsTouchedOrMoved() {
        Fixture f;
        f.theme.motion().setEnabled(true);
        f.fling(-10);
        f.wheel({0, -1}, {0, -1}, Qt::ScrollUpdate, {}, 2000);
        const int held = f.offset();
        QVERIFY(f.settle());
        QCOMPARE(f.offset(), held);
        f.fling(-10);
        f.area->setOffset(7);
        QVERIFY(f.settle());
        QCOMPARE(f.offset(), 7);
    }

    void aFingerDragsTheContent() {
        const std::unique_ptr<QPointingDevice> device(QTest::createTouchDevice());
        Fixture f;
        QTest::touchEvent(&f.window, device.get()).press(0, {200, 350}, &f.window);
        for (int y = 330; y >= 100; y -= 10)
            QTest::touchEvent(&f.window, device.get()).move(0, {200, y}, &f.window);
        QTRY_VERIFY(f.offset() > 100);
        QTest::touchEvent(&f.window, device.get()).release(0, {200, 100}, &f.window);
        QVERIFY(f.settle());
    }

    void aTouchRunsOutWhereMotionIsEnabled() {
        for (const bool hasMotion : {true, false}) {
            Fixture f;
            f.theme.motion().setEnabled(hasMotion);
            QScroller* scroller = QScroller::scroller(f.area);
            scroller->handleInput(QScroller::InputPress, {200, 300}, 1000);
            for (int i = 1; i <= 10; ++i)
                scroller->handleInput(QScroller::InputMove, {200, 300.0 - 20 * i}, 1000 + 10 * i);
            QTRY_VERIFY(f.offset() > 50);
            scroller->handleInput(QScroller::InputRelease, {200, 100}, 1101);
            const int released = f.offset();
            QVERIFY(f.settle());
            QCOMPARE(f.offset() > released + 50, hasMotion);
        }
    }

    void keysScroll_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifier>("modifier");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("expected"); // -1: the end
        QTest::newRow("Down") << Qt::Key_Down << Qt::NoModifier << 0 << 40;
        QTest::newRow("Up") << Qt::Key_Up << Qt::NoModifier << 100 << 60;
        QTest::newRow("Page Down") << Qt::Key_PageDown << Qt::NoModifier << 0 << 360;
        QTest::newRow("Page Up") << Qt::Key_PageUp << Qt::NoModifier << 400 << 40;
        QTest::newRow("on the keypad") << Qt::Key_PageDown << Qt::KeypadModifier << 0 << 360;
        QTest::newRow("Space") << Qt::Key_Space << Qt::NoModifier << 0 << 360;
        QTest::newRow("Shift-Space") << Qt::Key_Space << Qt::ShiftModifier << 400 << 40;
        QTest::newRow("End") << Qt::Key_End << Qt::NoModifier << 0 << -1;
        QTest::newRow("Ctrl-End") << Qt::Key_End << Qt::ControlModifier << 0 << -1;
        QTest::newRow("Home") << Qt::Key_Home << Qt::NoModifier << 500 << 0;
        QTest::newRow("Ctrl-Home") << Qt::Key_Home << Qt::ControlModifier << 500 << 0;
        QTest::newRow("Shift-Down") << Qt::Key_Down << Qt::ShiftModifier << 100 << 100;
        QTest::newRow("Ctrl-Page Down") << Qt::Key_PageDown << Qt::ControlModifier << 100 << 100;
        QTest::newRow("a letter") << Qt::Key_A << Qt::NoModifier << 100 << 100;
        QTest::newRow("Right") << Qt::Key_Right << Qt::NoModifier << 100 << 100;
    }
    void keysScroll() {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifier, modifier);
        QFETCH(int, from);
        QFETCH(int, expected);
        QFETCH_GLOBAL(bool, isRows);
        if (isRows && (key == Qt::Key_Up || key == Qt::Key_Down))
            return; // there they go from row to row
        Fixture f;
        f.area->setOffset(from);
        QKeyEvent event(QEvent::KeyPress, key, modifier);
        QCoreApplication::sendEvent(f.area, &event);
        QCOMPARE(f.offset(), expected < 0 ? f.area->maximum() : expected);
        QCOMPARE(event.isAccepted(), f.offset() != from);
    }

    void keysOfWhatIsInsideScrollToo() {
        Fixture f;
        auto* inside = f.area->findChild<Box*>();
        inside->setFocus();
        QTest::keyClick(inside, Qt::Key_PageDown);
        QCOMPARE(f.offset(), 360);
    }

    void whatHasNothingToScrollLeavesItToOthers() {
        Fixture f;
        f.area->resize(500, 4000);
        QVERIFY(!f.wheel({0, -120}));
        QVERIFY(!f.wheel({0, -12}, {0, -12}, Qt::ScrollUpdate));
        QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
        QCoreApplication::sendEvent(f.area, &space);
        QVERIFY(!space.isAccepted());
        QVERIFY(!f.bar()->isVisible());
    }

    void theBarStandsAtTheTrailingEdge() {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            const Fixture f({}, direction);
            const bool isLeft = direction == Qt::RightToLeft;
            QCOMPARE(f.bar()->geometry(), QRect(isLeft ? 0 : 488, 0, 12, 400));
            const QRect thumb = f.bar()->thumb();
            QCOMPARE(isLeft ? thumb.left() : 11 - thumb.right(), 2);
        }
    }

    void theBarFollowsAndLeads() {
        Fixture f;
        f.area->setOffset(60);
        QCOMPARE(f.bar()->value(), 60);
        QCOMPARE(f.bar()->maximum(), f.area->maximum());
        const QPoint grip = f.bar()->thumb().center();
        QTest::mousePress(f.bar(), Qt::LeftButton, {}, grip);
        QTest::mouseMove(f.bar(), grip + QPoint(0, 60));
        QVERIFY(f.offset() > 300);
        QTest::mouseMove(f.bar(), QPoint(grip.x(), 500));
        QCOMPARE(f.offset(), f.area->maximum());
        QTest::mouseRelease(f.bar(), Qt::LeftButton, {}, QPoint(grip.x(), 500));
        QTest::mouseMove(f.bar(), QPoint(grip.x(), 20));
        QCOMPARE(f.offset(), f.area->maximum());
        // A click beside the thumb turns a page.
        QTest::mouseClick(f.bar(), Qt::LeftButton, {}, QPoint(grip.x(), 5));
        QCOMPARE(f.offset(), f.area->maximum() - 400);
        QVERIFY(!f.bar()->hasFocus());
    }

    void theBarIsSeenForAMoment() {
        QCursor::setPos(750, 550); // away from it
        Fixture f;
        const auto isSeen = [&f] {
            const QImage look = f.bar()->grab().toImage();
            return look.pixel(f.bar()->thumb().center()) != look.pixel(0, 0);
        };
        QTRY_VERIFY(!isSeen());
        f.area->scrollToEnd(false); // not the user's doing
        QVERIFY(!isSeen());
        f.notches(-1);
        QVERIFY(isSeen());
        QTRY_VERIFY(!isSeen());
    }

    void aSelectionDrawnBeyondTheEdgeScrolls() {
        Fixture f(u"a line of words\n"_s.repeated(400));
        auto* view = f.area->findChild<TextView*>();
        // Through the window system, so that the application knows the button to be down.
        QWindow* window = f.window.windowHandle();
        QTest::mousePress(window, Qt::LeftButton, {}, QPoint(60, 60));
        QTest::mouseMove(window, QPoint(60, 300));
        QTest::mouseMove(window, QPoint(60, 440));
        QTRY_VERIFY(f.offset() > 300);
        QVERIFY(view->selectedText().size() > 300);
        const qsizetype selected = view->selectedText().size();
        QTRY_VERIFY(view->selectedText().size() > selected);
        QTest::mouseRelease(window, Qt::LeftButton, {}, QPoint(60, 440));
        // Nothing is left that would scroll any further.
        QVERIFY(QAbstractEventDispatcher::instance()->registeredTimers(view).isEmpty());
    }

    void tabBringsALinkOfALongTextIntoView() {
        Fixture f(u"[one](http://one)\n\n"_s + u"a line of words\n\n"_s.repeated(200) +
                  u"[two](http://two)\n\n"_s + u"a line of words\n\n"_s.repeated(200));
        auto* view = f.area->findChild<TextView*>();
        f.area->setFocus();
        view->setFocus(Qt::TabFocusReason);
        QCOMPARE(f.offset(), 0);
        const auto placeOf = [&](qsizetype character) {
            const QPoint inside = view->flow().characterRect(character).center().toPoint();
            return view->mapTo(f.area, inside).y();
        };
        QTest::keyClick(view, Qt::Key_Tab);
        const int second = placeOf(view->content().text.indexOf(u"two"_s));
        QVERIFY(second > 0 && second < 400);
        QTest::keyClick(view, Qt::Key_Backtab);
        QVERIFY(placeOf(0) > 0 && placeOf(0) < 400);
    }
};

TELLWICK_TEST(ScrollAreaTests, Widgets)
#include "ScrollAreaTests.moc"
