// SPDX-License-Identifier: MIT
#include "Setup/Amounts.h"
#include "Setup/TransferRate.h"
#include "tests/support/TestMain.h"

using namespace setup;
using namespace Qt::StringLiterals;

class AmountsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sizesAreWrittenInTheUnitThatFits_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << qint64(0) << u"0 MB"_s;
        QTest::newRow("megabytes") << qint64(45'400'000) << u"45 MB"_s;
        QTest::newRow("just below") << qint64(999'000'000) << u"999 MB"_s;
        QTest::newRow("gigabytes") << qint64(2'497'281'120) << u"2.5 GB"_s;
    }
    void sizesAreWrittenInTheUnitThatFits() {
        QFETCH(qint64, bytes);
        QTEST(sizeText(bytes), "text");
    }

    void timesAreWrittenInTheUnitThatFits_data() {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0 << u"1 second left"_s;
        QTest::newRow("seconds") << 20 << u"20 seconds left"_s;
        QTest::newRow("over a minute") << 100 << u"100 seconds left"_s;
        QTest::newRow("minutes") << 130 << u"3 minutes left"_s;
        QTest::newRow("over an hour") << 5'400 << u"90 minutes left"_s;
        QTest::newRow("hours") << 7'300 << u"3 hours left"_s;
    }
    void timesAreWrittenInTheUnitThatFits() {
        QFETCH(int, seconds);
        QTEST(timeLeftText(std::chrono::seconds(seconds)), "text");
    }

    void progressIsOneLine() {
        QCOMPARE(progressText(1'100'000'000, 2'500'000'000, 0), u"44 %, 1.1 GB of 2.5 GB"_s);
        QCOMPARE(progressText(1'100'000'000, 2'500'000'000, 10'000'000),
                 u"44 %, 1.1 GB of 2.5 GB, 10 MB/s, 3 minutes left"_s);
    }

    void theRateIsThatOfTheLastSeconds() {
        TransferRate rate;
        QCOMPARE(rate.perSecond(), 0);
        rate.add(1'000, 0);
        QCOMPARE(rate.perSecond(), 0);
        rate.add(3'000, 1'000);
        QCOMPARE(rate.perSecond(), 2'000);
        for (int second = 2; second <= 10; ++second)
            rate.add(3'000, second * 1'000);
        QCOMPARE(rate.perSecond(), 0);
        // From the beginning again: that is not a rate below nothing.
        rate.add(500, 11'000);
        QCOMPARE(rate.perSecond(), 0);
        rate.add(1'500, 12'000);
        QCOMPARE(rate.perSecond(), 1'000);
    }
};

TELLWICK_TEST(AmountsTests, Nothing)
#include "AmountsTests.moc"
