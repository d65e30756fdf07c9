// SPDX-License-Identifier: MIT
#include "Platform/Store/Instant.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace std::chrono;

class InstantTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anInstantHasOneText_data();
    void anInstantHasOneText();
    void textsOfOtherHandsAreRead_data();
    void textsOfOtherHandsAreRead();
    void whatIsNoInstantIsNone_data();
    void whatIsNoInstantIsNone();
    void textsSortAsTheirInstantsDo();
    void yearsThatDoNotFitTheTextAreDrawnToItsEnds();
    void aClockThatStandsOrStepsBackStillGivesALaterInstant();
};

void InstantTests::anInstantHasOneText_data() {
    QTest::addColumn<qint64>("microseconds");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("the epoch") << qint64(0) << QByteArray("1970-01-01T00:00:00.000000Z");
    QTest::newRow("one microsecond") << qint64(1) << QByteArray("1970-01-01T00:00:00.000001Z");
    QTest::newRow("before the epoch") << qint64(-1) << QByteArray("1969-12-31T23:59:59.999999Z");
    QTest::newRow("a leap day") << qint64(1709164800000000) + 86399123456
                                << QByteArray("2024-02-29T23:59:59.123456Z");
    QTest::newRow("the last") << qint64(253402300799999999)
                              << QByteArray("9999-12-31T23:59:59.999999Z");
}

void InstantTests::anInstantHasOneText() {
    QFETCH(qint64, microseconds);
    QFETCH(QByteArray, text);
    const Instant instant{std::chrono::microseconds(microseconds)};
    QCOMPARE(toIsoText(instant), text);
    QVERIFY(instantFromIsoText(text) == instant);
}

void InstantTests::textsOfOtherHandsAreRead_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("same");
    const QByteArray whole = "2026-02-03T04:05:06.000000Z";
    QTest::newRow("no fraction") << QByteArray("2026-02-03T04:05:06Z") << whole;
    QTest::newRow("a blank, no Z") << QByteArray("2026-02-03 04:05:06") << whole;
    QTest::newRow("milliseconds") << QByteArray("2026-02-03T04:05:06.25Z")
                                  << QByteArray("2026-02-03T04:05:06.250000Z");
    QTest::newRow("nanoseconds") << QByteArray("2026-02-03T04:05:06.123456789Z")
                                 << QByteArray("2026-02-03T04:05:06.123456Z");
}

void InstantTests::textsOfOtherHandsAreRead() {
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, same);
    const auto instant = instantFromIsoText(text);
    QVERIFY(instant);
    QCOMPARE(toIsoText(*instant), same);
}

void InstantTests::whatIsNoInstantIsNone_data() {
    QTest::addColumn<QByteArray>("text");
    for (const char* text :
         {"", "2026", "2026-02-03", "2026-02-03T04:05", "2026-02-30T00:00:00Z",
          "2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z", "2026-01-01T24:00:00Z",
          "2026-01-01T00:60:00Z", "2026-01-01T00:00:60Z", "2026-01-01T00:00:00.Z",
          "2026-01-01T00:00:00.0123456789Z", "2026-01-01T00:00:00+01:00", "2026-01-01T00:00:00Zx",
          "-026-01-01T00:00:00Z", "2026-01-01x00:00:00Z", "1700000000"})
        QTest::addRow("'%s'", text) << QByteArray(text);
}

void InstantTests::whatIsNoInstantIsNone() {
    QFETCH(QByteArray, text);
    QVERIFY(!instantFromIsoText(text));
}

void InstantTests::textsSortAsTheirInstantsDo() {
    QByteArray previous;
    Instant instant = currentInstant();
    for (int i = 0; i < 1000; ++i) {
        const QByteArray text = toIsoText(instant);
        QVERIFY(previous < text);
        previous = text;
        instant += microseconds(1) * (i * i * i + 1);
    }
}

void InstantTests::yearsThatDoNotFitTheTextAreDrawnToItsEnds() {
    QCOMPARE(toIsoText(Instant::max()), "9999-12-31T23:59:59.999999Z");
    QCOMPARE(toIsoText(Instant::min()), "0000-01-01T00:00:00.000000Z");
    QVERIFY(instantFromIsoText(toIsoText(Instant::max())));
    QVERIFY(instantFromIsoText(toIsoText(Instant::min())));
}

void InstantTests::aClockThatStandsOrStepsBackStillGivesALaterInstant() {
    const Instant noon = sys_days(year(2026) / March / 1) + hours(12);
    QVERIFY(laterThan(noon, noon + seconds(5)) == noon + seconds(5));
    QVERIFY(laterThan(noon, noon) == noon + microseconds(1));
    QVERIFY(laterThan(noon, noon - hours(1)) == noon + microseconds(1));
}

TELLWICK_TEST(InstantTests, EventLoop)
#include "InstantTests.moc"
