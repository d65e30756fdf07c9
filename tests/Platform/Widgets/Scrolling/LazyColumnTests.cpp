// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"
#include "Platform/Widgets/Text/TextView.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPointingDevice>
#include <QRandomGenerator>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using namespace platform;

namespace {

/// A row of a given height that can take the focus.
class Box : public QWidget {
public:
    Box(int height, QWidget* parent)
        : QWidget(parent)
        , m_height(height) {
        setFocusPolicy(Qt::StrongFocus);
        QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override { return m_height; }
    void setBoxHeight(int height) {
        m_height = height;
        updateGeometry();
    }
    bool isInUse = false;
    int updates = 0;

private:
    int m_height;
};

class Boxes : public LazyRows {
public:
    struct Item {
        QUuid key = QUuid::createUuid();
        int height = 50;
    };
    QList<Item> items;
    int made = 0;
    int guess = 50;

    explicit Boxes(int count) {
        for (int i = 0; i < count; ++i)
            items.append(Item{});
    }
    qsizetype count() const override { return items.size(); }
    QUuid key(qsizetype row) const override { return items[row].key; }
    QWidget* make(qsizetype row, QWidget* parent) override {
        ++made;
        return new Box(items[row].height, parent);
    }
    void update(qsizetype row, QWidget* widget) override {
        auto* box = static_cast<Box*>(widget);
        ++box->updates;
        box->setBoxHeight(items[row].height);
    }
    int estimatedHeight(qsizetype, int) const override { return guess; }
    QString accessibleName(qsizetype row) const override { return u"Row %1"_s.arg(row); }
    bool isInUse(const QWidget* widget) const override {
        return static_cast<const Box*>(widget)->isInUse;
    }
};

/// Two rows of one long text.
class Texts : public Boxes {
public:
    Texts(const Theme& theme, QString text)
        : Boxes(2)
        , m_theme(theme)
        , m_text(std::move(text)) {}
    QWidget* make(qsizetype, QWidget* parent) override {
        auto* view = new TextView(m_theme, TextView::Background::Window, parent);
        view->setMarkdown(TextSnapshot(m_text));
        return view;
    }
    void update(qsizetype, QWidget*) override {}
    bool isInUse(const QWidget* widget) const override {
        return static_cast<const TextView*>(widget)->hasSelection();
    }

private:
    const Theme& m_theme;
    QString m_text;
};

struct Fixture {
    Theme theme;
    Boxes boxes;
    QWidget window;
    LazyColumn column;
    QLineEdit field{&window};

    explicit Fixture(int count, QSize size = {500, 400})
        : boxes(count)
        , column(theme, boxes, &window) {
        window.resize(size + QSize(0, 50));
        column.setGeometry(QRect({0, 0}, size));
        field.setGeometry(0, size.height(), 100, 40);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("no active window");
    }
    Box* box(qsizetype row) { return static_cast<Box*>(column.widgetOf(row)); }
    qsizetype boxesAlive() const {
        const auto children = column.children();
        return std::count_if(children.begin(), children.end(),
                             [](QObject* child) { return dynamic_cast<Box*>(child); });
    }
    int top(qsizetype row) { return box(row) ? box(row)->y() : -100000; }
    /// The first row whose top is visible.
    qsizetype firstVisible() {
        for (qsizetype i = 0; i < boxes.count(); ++i)
            if (box(i) && box(i)->y() >= 0)
                return i;
        return -1;
    }
    void wheel(int angle, int pixels = 0, Qt::ScrollPhase phase = Qt::NoScrollPhase) {
        QWheelEvent event({100, 100}, column.mapToGlobal(QPointF(100, 100)), {0, pixels},
                          {0, angle}, Qt::NoButton, Qt::NoModifier, phase, false);
        QCoreApplication::sendEvent(&column, &event);
    }
};

} // namespace

class LazyColumnTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rowsStandBelowEachOtherInACentredColumn();
    void aNarrowColumnUsesItsWholeWidth();
    void onlyRowsNearTheVisibleAreaAreWidgets();
    void rowsThatLeaveAreDestroyed();
    void scrollingThroughAllRowsMeetsEachOnce();
    void aReloadOfTenThousandRowsIsCheap();
    void nothingScrollsWhenItIsFirstShown();
    void scrollToBottomShowsTheLastRowsEnd();
    void scrollToBottomIsRightWhateverTheGuesses();
    void anAnimatedScrollTakesItsTimeAndEndsAtTheBottom();
    void anAnimatedScrollFollowsAGrowingEnd();
    void aWheelEndsAnAnimation();
    void withoutMotionNothingIsAnimated();
    void whatIsVisibleStaysWhenARowAboveChangesItsHeight();
    void whatIsVisibleStaysWhenRowsComeAndGoAbove();
    void whatIsVisibleStaysWhenAGuessWasWrong();
    void scrollingByWheelMovesByWhatTheWheelSays();
    void theEndStaysVisibleWhenTheColumnIsResized();
    void theTopStaysWhenTheColumnIsResizedElsewhere();
    void aRowThatGrowsByItselfGetsItsHeight();
    void movedRowsKeepTheirWidgets();
    void removedRowsLoseTheirWidgets();
    void reloadUpdatesTheWidgetsThatExist();
    void reloadRowUpdatesOneWidget();
    void aRowWithTheFocusSurvivesScrollingAway();
    void aRowInUseSurvivesScrollingAway();
    void keysScroll();
    void keysOfARowScrollToo();
    void otherKeysGoToTheParent();
    void aTouchpadMovesByPixelsAndRunsOut();
    void theScrollBarFollowsAndLeads();
    void tabGoesThroughTheRowsInTheirOrder();
    void tabBringsARowIntoView();
    void tabBringsALinkOfALongRowIntoView();
    void aRowIsBroughtIntoViewWhereverItIs();
    void aSelectionDrawnBeyondTheEdgeScrolls();
    void assistiveTechnologySeesAllRows();
    void anEmptyColumnIsFine();
};

void LazyColumnTests::rowsStandBelowEachOtherInACentredColumn() {
    Fixture f(3, {1000, 400});
    QCOMPARE(f.box(0)->geometry(), QRect(150 + 16, 16, 668, 50));
    QCOMPARE(f.box(1)->geometry(), QRect(166, 16 + 50 + 12, 668, 50));
    QCOMPARE(f.box(2)->geometry().top(), 16 + 2 * 62);
    QVERIFY(f.box(0)->isVisible());
}

void LazyColumnTests::aNarrowColumnUsesItsWholeWidth() {
    Fixture f(3, {360, 400});
    QCOMPARE(f.box(0)->x(), 16);
    QCOMPARE(f.box(0)->width(), 360 - 32);
}

void LazyColumnTests::onlyRowsNearTheVisibleAreaAreWidgets() {
    Fixture f(10000, {640, 800});
    QVERIFY(f.column.builtCount() >= 13);
    QVERIFY(f.column.builtCount() <= 30);
    QCOMPARE(f.boxesAlive(), f.column.builtCount());
    f.column.scrollToBottom(false);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(f.boxesAlive() <= 45);
    if (qEnvironmentVariableIsSet("TELLWICK_MEASURE"))
        qInfo("%lld widgets at 10,000 rows", qlonglong(f.column.builtCount()));
    QVERIFY(f.box(9999));
    QVERIFY(!f.box(5000));
    QVERIFY(!f.box(0));
}

void LazyColumnTests::rowsThatLeaveAreDestroyed() {
    Fixture f(1000);
    QPointer<QWidget> first = f.box(0);
    f.column.setScrollPosition(5000);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!first);
    f.column.setScrollPosition(0);
    QVERIFY(f.box(0));
    QCOMPARE(f.top(0), 16);
}

void LazyColumnTests::scrollingThroughAllRowsMeetsEachOnce() {
    Fixture f(2000);
    QElapsedTimer timer;
    timer.start();
    int steps = 0;
    while (!f.column.isAtBottom()) {
        f.wheel(-240);
        ++steps;
        if (steps % 64 == 0)
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(f.boxes.made, 2000);
    QCOMPARE(steps, (2000 * 62 - 12 + 32 - 400 + 199) / 200);
    if (qEnvironmentVariableIsSet("TELLWICK_MEASURE"))
        qInfo("%lld us a step", timer.nsecsElapsed() / 1000 / steps);
}

void LazyColumnTests::aReloadOfTenThousandRowsIsCheap() {
    Fixture f(10000);
    f.column.scrollToBottom(false);
    const int made = f.boxes.made;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i) {
        f.boxes.items.last().height += 1;
        f.column.reload();
        f.column.scrollToBottom(false);
    }
    const qint64 each = timer.nsecsElapsed() / 100;
    QCOMPARE(f.boxes.made, made);
    QVERIFY2(each < 5'000'000, qPrintable(QString::number(each)));
    if (qEnvironmentVariableIsSet("TELLWICK_MEASURE"))
        qInfo("%lld us a reload", each / 1000);
}

void LazyColumnTests::nothingScrollsWhenItIsFirstShown() {
    Fixture f(100);
    QCOMPARE(f.column.scrollPosition(), 0);
    QCOMPARE(f.top(0), 16);
}

void LazyColumnTests::scrollToBottomShowsTheLastRowsEnd() {
    Fixture f(100);
    f.column.scrollToBottom(false);
    QVERIFY(f.column.isAtBottom());
    QCOMPARE(f.box(99)->geometry().bottom() + 1, 400 - 16);
    f.boxes.items.append(Boxes::Item{});
    f.column.reload();
    QVERIFY(!f.column.isAtBottom());
    f.column.scrollToBottom(true);
    QCOMPARE(f.box(100)->geometry().bottom() + 1, 400 - 16);
}

void LazyColumnTests::scrollToBottomIsRightWhateverTheGuesses() {
    for (const int guess : {1, 20, 500}) {
        Fixture f(0);
        f.boxes.guess = guess;
        for (int i = 0; i < 300; ++i)
            f.boxes.items.append(Boxes::Item{.height = 20 + (i * 37) % 200});
        f.column.reload();
        f.column.scrollToBottom(false);
        QVERIFY(f.column.isAtBottom());
        QCOMPARE(f.box(299)->geometry().bottom() + 1, 400 - 16);
        f.column.setScrollPosition(0);
        QCOMPARE(f.top(0), 16);
    }
}

void LazyColumnTests::anAnimatedScrollTakesItsTimeAndEndsAtTheBottom() {
    Fixture f(100);
    f.theme.motion().setEnabled(true);
    QElapsedTimer timer;
    timer.start();
    f.column.scrollToBottom(true);
    QVERIFY(f.column.isScrollAnimated());
    QVERIFY(!f.column.isAtBottom());
    QList<int> positions;
    while (f.column.isScrollAnimated() && timer.elapsed() < 5000) {
        QTest::qWait(5);
        positions.append(f.column.scrollPosition());
    }
    QVERIFY(timer.elapsed() >= 190);
    QVERIFY(f.column.isAtBottom());
    QVERIFY(std::is_sorted(positions.begin(), positions.end()));
    QCOMPARE(f.box(99)->geometry().bottom() + 1, 400 - 16);
}

void LazyColumnTests::anAnimatedScrollFollowsAGrowingEnd() {
    Fixture f(100);
    f.theme.motion().setEnabled(true);
    f.column.scrollToBottom(true);
    QTest::qWait(30);
    f.boxes.items.last().height = 300;
    f.column.reload();
    QTRY_VERIFY(!f.column.isScrollAnimated());
    QCOMPARE(f.box(99)->geometry().bottom() + 1, 400 - 16);
}

void LazyColumnTests::aWheelEndsAnAnimation() {
    Fixture f(100);
    f.theme.motion().setEnabled(true);
    f.column.scrollToBottom(true);
    f.wheel(-120);
    QVERIFY(!f.column.isScrollAnimated());
    QVERIFY(!f.column.isAtBottom());
}

void LazyColumnTests::withoutMotionNothingIsAnimated() {
    Fixture f(100);
    f.column.scrollToBottom(true);
    QVERIFY(!f.column.isScrollAnimated());
    QVERIFY(f.column.isAtBottom());
}

void LazyColumnTests::whatIsVisibleStaysWhenARowAboveChangesItsHeight() {
    Fixture f(1000);
    f.column.setScrollPosition(3000);
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

void LazyColumnTests::whatIsVisibleStaysWhenRowsComeAndGoAbove() {
    Fixture f(1000);
    f.column.setScrollPosition(3000);
    const qsizetype first = f.firstVisible();
    QWidget* widget = f.box(first);
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

void LazyColumnTests::whatIsVisibleStaysWhenAGuessWasWrong() {
    Fixture f(0);
    f.boxes.guess = 30;
    for (int i = 0; i < 1000; ++i)
        f.boxes.items.append(Boxes::Item{.height = 20 + (i * 53) % 150});
    f.column.reload();
    f.column.scrollToBottom(false);
    // Upwards through rows that were never built: what is visible moves by the wheel's distance.
    for (int i = 0; i < 200; ++i) {
        const qsizetype first = f.firstVisible();
        const int y = f.top(first);
        QWidget* widget = f.box(first);
        f.wheel(60);
        if (f.column.scrollPosition() == 0)
            break;
        QCOMPARE(widget->y(), y + 50);
    }
    // A jump to where all is guessed.
    f.column.setScrollPosition(f.column.maximumScroll() / 3);
    const qsizetype first = f.firstVisible();
    QVERIFY(first > 0);
    for (qsizetype i = first; f.top(i) >= 0 && f.top(i) < 400; ++i)
        QCOMPARE(f.box(i)->height(), f.boxes.items[i].height);
}

void LazyColumnTests::scrollingByWheelMovesByWhatTheWheelSays() {
    Fixture f(100);
    f.wheel(-120);
    QCOMPARE(f.column.scrollPosition(), 100);
    f.wheel(-15); // a finer wheel: 12.5 pixels
    f.wheel(-15);
    QCOMPARE(f.column.scrollPosition(), 125);
    f.wheel(120 * 100);
    QCOMPARE(f.column.scrollPosition(), 0);
    f.wheel(-120 * 100);
    QVERIFY(f.column.isAtBottom());
}

void LazyColumnTests::theEndStaysVisibleWhenTheColumnIsResized() {
    Fixture f(100);
    f.column.scrollToBottom(false);
    f.column.resize(500, 300);
    QVERIFY(f.column.isAtBottom());
    QCOMPARE(f.box(99)->geometry().bottom() + 1, 300 - 16);
    f.column.resize(400, 350);
    QCOMPARE(f.box(99)->geometry().bottom() + 1, 350 - 16);
}

void LazyColumnTests::theTopStaysWhenTheColumnIsResizedElsewhere() {
    Fixture f(100);
    f.column.setScrollPosition(1000);
    const qsizetype first = f.firstVisible();
    const int y = f.top(first);
    f.column.resize(400, 300);
    QCOMPARE(f.top(first), y);
}

void LazyColumnTests::aRowThatGrowsByItselfGetsItsHeight() {
    Fixture f(10);
    f.box(2)->setBoxHeight(200);
    QTRY_COMPARE(f.box(2)->height(), 200);
    QCOMPARE(f.top(3), f.top(2) + 212);
}

void LazyColumnTests::movedRowsKeepTheirWidgets() {
    Fixture f(5);
    QWidget* first = f.box(0);
    QWidget* last = f.box(4);
    std::swap(f.boxes.items[0], f.boxes.items[4]);
    f.column.reload();
    QCOMPARE(f.box(4), first);
    QCOMPARE(f.box(0), last);
    QCOMPARE(last->y(), 16);
    QCOMPARE(f.boxes.made, 5);
}

void LazyColumnTests::removedRowsLoseTheirWidgets() {
    Fixture f(5);
    f.boxes.items.clear();
    f.column.reload();
    QCOMPARE(f.column.builtCount(), 0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(f.boxesAlive() == 0);
    QCOMPARE(f.column.scrollPosition(), 0);
}

void LazyColumnTests::reloadUpdatesTheWidgetsThatExist() {
    Fixture f(100);
    const int before = f.box(3)->updates;
    f.column.reload();
    QCOMPARE(f.box(3)->updates, before + 1);
}

void LazyColumnTests::reloadRowUpdatesOneWidget() {
    Fixture f(100);
    f.boxes.items[3].height = 90;
    f.column.reloadRow(3);
    QCOMPARE(f.box(3)->updates, 1);
    QCOMPARE(f.box(4)->updates, 0);
    QCOMPARE(f.box(3)->height(), 90);
    f.column.reloadRow(99);
    f.column.reloadRow(1000);
    f.column.reloadRow(-1);
}

void LazyColumnTests::aRowWithTheFocusSurvivesScrollingAway() {
    Fixture f(1000);
    QPointer<Box> box = f.box(1);
    box->setFocus();
    f.column.scrollToBottom(false);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(box);
    QVERIFY(box->hasFocus());
    QVERIFY(box->geometry().bottom() < 0);
    f.field.setFocus();
    f.wheel(120);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!box);
}

void LazyColumnTests::aRowInUseSurvivesScrollingAway() {
    Fixture f(1000);
    QPointer<Box> box = f.box(1);
    box->isInUse = true;
    f.column.scrollToBottom(false);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(box);
    f.column.setScrollPosition(0);
    QCOMPARE(box->y(), 16 + 62);
}

void LazyColumnTests::keysScroll() {
    Fixture f(100);
    f.column.setFocus();
    QTest::keyClick(&f.column, Qt::Key_Down);
    QCOMPARE(f.column.scrollPosition(), 40);
    QTest::keyClick(&f.column, Qt::Key_PageDown);
    QCOMPARE(f.column.scrollPosition(), 40 + 320);
    QTest::keyClick(&f.column, Qt::Key_PageUp);
    QTest::keyClick(&f.column, Qt::Key_Up);
    QCOMPARE(f.column.scrollPosition(), 0);
    QTest::keyClick(&f.column, Qt::Key_End);
    QVERIFY(f.column.isAtBottom());
    QTest::keyClick(&f.column, Qt::Key_Home);
    QCOMPARE(f.column.scrollPosition(), 0);
}

void LazyColumnTests::keysOfARowScrollToo() {
    Fixture f(100);
    f.box(0)->setFocus();
    QTest::keyClick(f.box(0), Qt::Key_PageDown);
    QCOMPARE(f.column.scrollPosition(), 320);
}

void LazyColumnTests::otherKeysGoToTheParent() {
    Fixture f(10);
    QKeyEvent letter(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QCoreApplication::sendEvent(&f.column, &letter);
    QVERIFY(!letter.isAccepted());
    QKeyEvent shifted(QEvent::KeyPress, Qt::Key_Down, Qt::ShiftModifier);
    QCoreApplication::sendEvent(&f.column, &shifted);
    QVERIFY(!shifted.isAccepted());
}

void LazyColumnTests::aTouchpadMovesByPixelsAndRunsOut() {
    Fixture f(1000);
    f.theme.motion().setEnabled(true);
    f.wheel(0, 0, Qt::ScrollBegin);
    for (int i = 0; i < 8; ++i) {
        f.wheel(-10, -25, Qt::ScrollUpdate);
        QTest::qWait(8);
    }
    QCOMPARE(f.column.scrollPosition(), 200);
    f.wheel(0, 0, Qt::ScrollEnd);
    QTRY_VERIFY(f.column.scrollPosition() > 250);
    int last = -1;
    QTRY_VERIFY_WITH_TIMEOUT(std::exchange(last, f.column.scrollPosition()) == last, 10000);
    // A new touch holds it.
    f.wheel(0, 0, Qt::ScrollBegin);
    for (int i = 0; i < 8; ++i) {
        f.wheel(-10, -25, Qt::ScrollUpdate);
        QTest::qWait(8);
    }
    f.wheel(0, 0, Qt::ScrollEnd);
    f.column.setScrollPosition(100);
    QTest::qWait(60);
    QCOMPARE(f.column.scrollPosition(), 100);
}

void LazyColumnTests::theScrollBarFollowsAndLeads() {
    Fixture f(100);
    OverlayScrollBar& bar = f.column.scrollBar();
    QCOMPARE(bar.maximum(), f.column.maximumScroll());
    QVERIFY(!bar.isShown());
    f.wheel(-120);
    QCOMPARE(bar.value(), 100);
    QVERIFY(bar.isShown());
    // Dragged to its lower end.
    const QPoint grip = bar.thumb().center();
    QTest::mousePress(&bar, Qt::LeftButton, {}, grip);
    QTest::mouseMove(&bar, QPoint(grip.x(), bar.height() + 100));
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, QPoint(grip.x(), bar.height() + 100));
    QVERIFY(f.column.isAtBottom());
    // A click beside the thumb turns a page.
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(grip.x(), 5));
    QCOMPARE(f.column.scrollPosition(), f.column.maximumScroll() - 400);
    QTRY_VERIFY_WITH_TIMEOUT(!bar.isShown(), 10000);
    f.boxes.items.resize(2);
    f.column.reload();
    QVERIFY(bar.thumb().isEmpty());
}

void LazyColumnTests::tabGoesThroughTheRowsInTheirOrder() {
    Fixture f(100);
    f.column.setScrollPosition(1000);
    f.column.setScrollPosition(900); // rows above were made after those below
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

void LazyColumnTests::tabBringsARowIntoView() {
    Fixture f(100);
    f.box(0)->setFocus();
    for (int i = 1; i < 30; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        Box* box = f.box(i);
        QVERIFY(box && box->hasFocus());
        QVERIFY(box->y() >= 0 && box->geometry().bottom() < 400);
    }
}

void LazyColumnTests::tabBringsALinkOfALongRowIntoView() {
    Theme theme;
    Texts texts(theme, u"[one](http://one)\n\n"_s + u"a line of words\n\n"_s.repeated(200) +
                           u"[two](http://two)\n\n"_s + u"a line of words\n\n"_s.repeated(200));
    QWidget window;
    LazyColumn column(theme, texts, &window);
    window.resize(400, 300);
    column.resize(400, 300);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto* view = static_cast<TextView*>(column.widgetOf(0));
    view->setFocus(Qt::TabFocusReason);
    QCOMPARE(column.scrollPosition(), 0);
    QTest::keyClick(view, Qt::Key_Tab);
    const auto second = view->content().text.indexOf(u"two"_s);
    const auto placeOf = [&](qsizetype character) {
        return view->mapTo(&column, view->flow().characterRect(character).center().toPoint()).y();
    };
    QVERIFY(placeOf(second) > 0 && placeOf(second) < 300);
    QTest::keyClick(view, Qt::Key_Backtab);
    QVERIFY(placeOf(0) > 0 && placeOf(0) < 300);
}

void LazyColumnTests::aRowIsBroughtIntoViewWhereverItIs() {
    Fixture f(0);
    f.boxes.guess = 300;
    for (int i = 0; i < 1000; ++i)
        f.boxes.items.append(Boxes::Item{.height = 20 + (i * 53) % 150});
    f.column.reload();
    for (const int row : {500, 3, 999, 0, 998}) {
        f.column.scrollToRow(row);
        QVERIFY(f.box(row));
        QVERIFY(f.column.rect().contains(f.box(row)->geometry()));
    }
    const int before = f.column.scrollPosition();
    f.column.scrollToRow(998);
    QCOMPARE(f.column.scrollPosition(), before);
}

void LazyColumnTests::aSelectionDrawnBeyondTheEdgeScrolls() {
    Theme theme;
    Texts texts(theme, u"a line of words\n"_s.repeated(200));
    QWidget window;
    LazyColumn column(theme, texts, &window);
    window.resize(400, 300);
    column.resize(400, 300);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto* view = static_cast<TextView*>(column.widgetOf(0));
    // Through the window system, so that the application knows the button to be down.
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(60, 60));
    QTest::mouseMove(window.windowHandle(), QPoint(60, 200));
    QTest::mouseMove(window.windowHandle(), QPoint(60, 340));
    QTRY_VERIFY(column.scrollPosition() > 300);
    QVERIFY(view->selectedText().size() > 300);
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(60, 340));
    QTest::qWait(40);
    const int rest = column.scrollPosition();
    QTest::qWait(60);
    QCOMPARE(column.scrollPosition(), rest);
}

void LazyColumnTests::assistiveTechnologySeesAllRows() {
    Fixture f(10000);
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
    f.column.scrollToBottom(false);
    QVERIFY(list->child(9999)->object());
    QCOMPARE(list->child(9999)->text(QAccessible::Name), u"Row 9999"_s);
    f.boxes.items.removeLast();
    f.column.reload();
    QVERIFY(!unbuilt->isValid());
    QCOMPARE(unbuilt->text(QAccessible::Name), QString());
    QCOMPARE(list->childCount(), 9999);
}

void LazyColumnTests::anEmptyColumnIsFine() {
    Fixture f(0);
    QCOMPARE(f.column.maximumScroll(), 0);
    f.column.scrollToBottom(true);
    f.column.scrollToBottom(false);
    f.column.scrollToRow(3);
    f.wheel(-120);
    QTest::keyClick(&f.column, Qt::Key_End);
    QCOMPARE(f.column.scrollPosition(), 0);
    QCOMPARE(f.column.rowOf(&f.field), -1);
}

TELLWICK_TEST(LazyColumnTests, Widgets)
#include "LazyColumnTests.moc"
