// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/KineticScroll.h"
#include "tests/support/TestMain.h"

using platform::KineticScroll;

class KineticScrollTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aQuickMovementRunsOutAndRests();
    void fingersThatRestedLeaveTheContentWhereItIs();
    void aSlowMovementDoesNotRunOn();
    void theDirectionIsKept();
    void anewTouchStopsIt();
    void theDistanceDoesNotDependOnTheFrames();
};

namespace {
/// Ten moves of so many pixels, 10 ms apart, and the fingers off.
void fling(KineticScroll& kinetic, qreal step) {
    for (int i = 0; i < 10; ++i)
        kinetic.moved(step, i * 10);
    kinetic.released(95);
}

qreal runOut(KineticScroll& kinetic, qint64 frame) {
    qreal distance = 0;
    for (qint64 time = 95; kinetic.isRunning() && time < 10000; time += frame)
        distance += kinetic.advance(time);
    return distance;
}
} // namespace

void KineticScrollTests::aQuickMovementRunsOutAndRests() {
    KineticScroll kinetic;
    fling(kinetic, 10);
    QVERIFY(kinetic.isRunning());
    const qreal distance = runOut(kinetic, 16);
    QVERIFY(distance > 200 && distance < 500);
    QVERIFY(!kinetic.isRunning());
}

void KineticScrollTests::fingersThatRestedLeaveTheContentWhereItIs() {
    KineticScroll kinetic;
    for (int i = 0; i < 10; ++i)
        kinetic.moved(10, i * 10);
    QVERIFY(!kinetic.released(400));
}

void KineticScrollTests::aSlowMovementDoesNotRunOn() {
    KineticScroll kinetic;
    for (int i = 0; i < 10; ++i)
        kinetic.moved(1, i * 10);
    QVERIFY(!kinetic.released(95));
}

void KineticScrollTests::theDirectionIsKept() {
    KineticScroll kinetic;
    fling(kinetic, -10);
    QVERIFY(runOut(kinetic, 16) < -200);
}

void KineticScrollTests::anewTouchStopsIt() {
    KineticScroll kinetic;
    fling(kinetic, 10);
    kinetic.moved(1, 120);
    QVERIFY(!kinetic.isRunning());
    fling(kinetic, 10);
    kinetic.stop();
    QVERIFY(!kinetic.isRunning());
}

void KineticScrollTests::theDistanceDoesNotDependOnTheFrames() {
    KineticScroll often;
    KineticScroll rarely;
    fling(often, 10);
    fling(rarely, 10);
    QVERIFY(qAbs(runOut(often, 4) - runOut(rarely, 33)) < 10);
}

TELLWICK_TEST(KineticScrollTests, Nothing)
#include "KineticScrollTests.moc"
