// SPDX-License-Identifier: MIT
#include "Setup/SetupTexts.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
namespace texts = setup::texts;

class SetupTextsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sizesAreInDecimalUnits_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << qint64(0) << u"0 kB"_s;
        QTest::newRow("small") << qint64(5'400) << u"5 kB"_s;
        QTest::newRow("megabytes") << qint64(5'400'000) << u"5 MB"_s;
        QTest::newRow("many megabytes") << qint64(949'000'000) << u"949 MB"_s;
        QTest::newRow("almost a gigabyte") << qint64(999'900'000) << u"1.0 GB"_s;
        QTest::newRow("the smaller model") << qint64(1'117'320'736) << u"1.1 GB"_s;
        QTest::newRow("the larger model") << qint64(2'497'281'120) << u"2.5 GB"_s;
        QTest::newRow("a disk") << qint64(1'843'200'000'000) << u"1843.2 GB"_s;
    }
    void sizesAreInDecimalUnits() {
        QFETCH(qint64, bytes);
        QTEST(texts::size(bytes), "text");
    }

    void progressTellsPartRateAndTimeLeft_data() {
        QTest::addColumn<qint64>("received");
        QTest::addColumn<qint64>("whole");
        QTest::addColumn<qint64>("rate");
        QTest::addColumn<QString>("text");
        constexpr qint64 large = 2'497'281'120;
        const auto row = [](const char* name, qint64 received, qint64 whole, qint64 rate,
                            const QString& text) {
            QTest::newRow(name) << received << whole << rate << text;
        };
        row("the usual", 1'234'000'000, large, 11'000'000,
            u"1.2 of 2.5 GB · 11 MB/s · about 2 minutes left"_s);
        row("the rate is not known", 1'234'000'000, large, 0, u"1.2 of 2.5 GB"_s);
        row("nothing yet", 0, large, 0, u"0.0 of 2.5 GB"_s);
        row("not all, so not as if", 2'496'000'000, large, 900'000,
            u"2.4 of 2.5 GB · 900 kB/s · a few seconds left"_s);
        row("all", large, large, 0, u"2.5 of 2.5 GB"_s);
        row("slow", 100'000'000, large, 1'240'000,
            u"0.1 of 2.5 GB · 1.2 MB/s · about 32 minutes left"_s);
        row("a crawl", 0, large, 20, u"0.0 of 2.5 GB · 1 kB/s · more than a day left"_s);
        row("small", 2'500'000, 5'000'000, 100'000,
            u"2 of 5 MB · 100 kB/s · less than a minute left"_s);
    }
    void progressTellsPartRateAndTimeLeft() {
        QFETCH(qint64, received);
        QFETCH(qint64, whole);
        QFETCH(qint64, rate);
        QTEST(texts::progress(received, whole, rate), "text");
    }

    void timeIsToldRoughly_data() {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << qint64(0) << u"a few seconds left"_s;
        QTest::newRow("9 s") << qint64(9) << u"a few seconds left"_s;
        QTest::newRow("10 s") << qint64(10) << u"less than a minute left"_s;
        QTest::newRow("59 s") << qint64(59) << u"less than a minute left"_s;
        QTest::newRow("60 s") << qint64(60) << u"about a minute left"_s;
        QTest::newRow("89 s") << qint64(89) << u"about a minute left"_s;
        QTest::newRow("90 s") << qint64(90) << u"about 2 minutes left"_s;
        QTest::newRow("59 min") << qint64(59 * 60) << u"about 59 minutes left"_s;
        QTest::newRow("an hour") << qint64(3590) << u"about an hour left"_s;
        QTest::newRow("1 h 20") << qint64(80 * 60) << u"about an hour left"_s;
        QTest::newRow("1 h 40") << qint64(100 * 60) << u"about 2 hours left"_s;
        QTest::newRow("a day") << qint64(86400) << u"more than a day left"_s;
    }
    void timeIsToldRoughly() {
        QFETCH(qint64, seconds);
        QTEST(texts::timeLeft(seconds), "text");
    }

    void whatIsSaidOfTheProgressChangesTenTimes() {
        QStringList said;
        for (int received = 0; received <= 1000; ++received)
            said.append(texts::spokenProgress(received, 1000));
        said.removeDuplicates();
        QCOMPARE(said.size(), 11);
        QCOMPARE(said.first(), u"Fetching, 0 per cent"_s);
        QCOMPARE(said.at(4), u"Fetching, 40 per cent"_s);
        QCOMPARE(said.last(), u"Fetching, 100 per cent"_s);
        QCOMPARE(texts::spokenProgress(5, 0), u"Fetching, 0 per cent"_s);
    }

    void anOfferTellsSizeLicenceAndMemory() {
        setup::ModelOffer offer{.name = u"Some model"_s,
                                .licence = u"Apache-2.0"_s,
                                .size = 2'497'281'120,
                                .address = QUrl(u"https://models.example/some/model.gguf"_s),
                                .sha256 = {},
                                .machineMemory = 12'000'000'000};
        QCOMPARE(texts::details(offer), u"2.5 GB · Apache-2.0 · for 12 GB of memory or more"_s);
        offer.machineMemory = 0;
        QCOMPARE(texts::details(offer), u"2.5 GB · Apache-2.0"_s);
        QCOMPARE(texts::origin(offer, u"/home/ada/.local/share"_s, 45'300'000'000, u"/home/ada"_s),
                 u"From models.example into ~/.local/share, where 45.3 GB are free."_s);
    }

    void aPathInTheUsersHomeIsShort_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("text");
        QTest::newRow("inside") << u"/home/ada/a b"_s << u"~/a b"_s;
        QTest::newRow("the home itself") << u"/home/ada"_s << u"~"_s;
        QTest::newRow("another's") << u"/home/adam/x"_s << u"/home/adam/x"_s;
        QTest::newRow("the system's") << u"/usr/share"_s << u"/usr/share"_s;
    }
    void aPathInTheUsersHomeIsShort() {
        QFETCH(QString, path);
        QTEST(texts::shortPath(path, u"/home/ada"_s), "text");
    }

    void soArePathsInASentence() {
        QCOMPARE(
            texts::withShortPaths(u"From /home/adam/x into /home/ada/a b/c."_s, u"/home/ada"_s),
            u"From /home/adam/x into ~/a b/c."_s);
        QCOMPARE(texts::withShortPaths(u"Into /root/x."_s, u"/"_s), u"Into /root/x."_s);
    }
};

TELLWICK_TEST(SetupTextsTests, Nothing)
#include "SetupTextsTests.moc"
