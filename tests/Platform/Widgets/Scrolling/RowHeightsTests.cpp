// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/RowHeights.h"
#include "tests/support/TestMain.h"

#include <QRandomGenerator>

#include <numeric>

using platform::RowHeights;

class RowHeightsTests : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEmptyColumnIsItsPadding();
    void topsAddUpHeightsAndSpaces();
    void aChangedHeightMovesWhatIsBelow();
    void theFirstRowBelowAHeightIsFound();
    void anyOrderOfChangesAndQuestionsGivesTheSameTops();
};

void RowHeightsTests::anEmptyColumnIsItsPadding() {
    const RowHeights heights(16, 12);
    QCOMPARE(heights.total(), 32);
    QCOMPARE(heights.firstBelow(0), 0u);
}

void RowHeightsTests::topsAddUpHeightsAndSpaces() {
    RowHeights heights(16, 12);
    heights.assign({10, 20, 30});
    QCOMPARE(heights.top(0), 16);
    QCOMPARE(heights.top(1), 38);
    QCOMPARE(heights.top(2), 70);
    QCOMPARE(heights.total(), 116);
}

void RowHeightsTests::aChangedHeightMovesWhatIsBelow() {
    RowHeights heights(0, 0);
    heights.assign({10, 20, 30});
    QCOMPARE(heights.total(), 60);
    heights.setHeight(1, 25);
    QCOMPARE(heights.top(1), 10);
    QCOMPARE(heights.top(2), 35);
    QCOMPARE(heights.total(), 65);
}

void RowHeightsTests::theFirstRowBelowAHeightIsFound() {
    RowHeights heights(5, 2);
    heights.assign({10, 10, 10}); // 5 to 15, 17 to 27, 29 to 39
    QCOMPARE(heights.firstBelow(-100), 0u);
    QCOMPARE(heights.firstBelow(5), 0u);
    QCOMPARE(heights.firstBelow(14), 0u);
    QCOMPARE(heights.firstBelow(15), 1u);
    QCOMPARE(heights.firstBelow(17), 1u);
    QCOMPARE(heights.firstBelow(38), 2u);
    QCOMPARE(heights.firstBelow(39), 3u);
}

void RowHeightsTests::anyOrderOfChangesAndQuestionsGivesTheSameTops() {
    QRandomGenerator random(11);
    RowHeights heights(3, 4);
    std::vector<int> expected;
    for (int round = 0; round < 500; ++round) {
        switch (random.bounded(3)) {
        case 0:
            expected.resize(static_cast<std::size_t>(random.bounded(40)), 7);
            heights.assign(expected);
            break;
        case 1:
            if (!expected.empty()) {
                const auto row = static_cast<std::size_t>(random.bounded(int(expected.size())));
                expected[row] = random.bounded(50);
                heights.setHeight(row, expected[row]);
            }
            break;
        default:
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const int sum = std::accumulate(
                    expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(i), 0);
                QCOMPARE(heights.top(i), 3 + sum + 4 * static_cast<int>(i));
            }
        }
    }
}

TELLWICK_TEST(RowHeightsTests, Nothing)
#include "RowHeightsTests.moc"
