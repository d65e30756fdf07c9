// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Icons.h"
#include "tests/support/TestMain.h"

#include <cmath>

using namespace Qt::StringLiterals;

class SvgPathTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pathsOfStraightLinesCoverTheirRectangle_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QRectF>("rect");
        QTest::newRow("absolute") << "M1 2L5 2L5 8L1 8Z"_ba << QRectF(1, 2, 4, 6);
        QTest::newRow("relative") << "m1 2h4v6h-4z"_ba << QRectF(1, 2, 4, 6);
        QTest::newRow("pairs after a move") << "M1,2 5,2 5,8 1,8z"_ba << QRectF(1, 2, 4, 6);
        QTest::newRow("relative pairs") << "m1 2 4 0 0 6-4 0z"_ba << QRectF(1, 2, 4, 6);
        QTest::newRow("terse numbers") << "M.5-.5H1.5V.5H.5Z"_ba << QRectF(0.5, -0.5, 1, 1);
        QTest::newRow("points run together") << "M.5.5 1.5.5V1.5H.5z"_ba << QRectF(0.5, 0.5, 1, 1);
        QTest::newRow("exponents and signs") << "M+1e0 20e-1H5V8H1Z"_ba << QRectF(1, 2, 4, 6);
        QTest::newRow("move after close") << "M1 2h2v2h-2zm2 2h2v4h-2z"_ba << QRectF(1, 2, 4, 6);
    }
    void pathsOfStraightLinesCoverTheirRectangle() {
        QFETCH(QByteArray, data);
        QFETCH(QRectF, rect);
        const auto path = platform::svgPath(data.constData());
        QVERIFY(path);
        QCOMPARE(path->boundingRect(), rect);
    }

    void arcsLieOnTheirCircle_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("two halves") << "M16 8A8 8 0 1 1 0 8a8 8 0 0 1 16 0z"_ba;
        QTest::newRow("flags run into the numbers") << "M16 8A8 8 0 110 8a8 8 0 0116 0z"_ba;
        QTest::newRow("the other way") << "M16 8A8 8 0 1 0 0 8a8 8 0 0 0 16 0z"_ba;
        QTest::newRow("rotation does not matter") << "M16 8A8 8 30 1 1 0 8A8 8 30 0 1 16 8"_ba;
        QTest::newRow("radii too small grow") << "M16 8A1 1 0 0 1 0 8A1 1 0 0 1 16 8"_ba;
        QTest::newRow("large arc") << "M16 8A8 8 0 1 1 8 0A8 8 0 0 1 16 8"_ba;
    }
    void arcsLieOnTheirCircle() {
        QFETCH(QByteArray, data);
        const auto path = platform::svgPath(data.constData());
        QVERIFY(path);
        for (int i = 0; i <= 100; ++i) {
            const auto p = path->pointAtPercent(i / 100.0) - QPointF(8, 8);
            QVERIFY(std::abs(std::hypot(p.x(), p.y()) - 8) < 0.01);
        }
        QVERIFY(path->boundingRect().width() > 15.9);
        QVERIFY(path->boundingRect().height() > 15.9);
    }

    void smoothCurvesMirrorTheControlPoint() {
        const auto isSame = [](const char* terse, const char* full) {
            const auto path = platform::svgPath(terse);
            return path && path == platform::svgPath(full);
        };
        QVERIFY(isSame("M0 0C0 1 1 2 2 2S4 1 4 0", "M0 0C0 1 1 2 2 2C3 2 4 1 4 0"));
        QVERIFY(isSame("M0 0Q1 2 2 0t2 0", "M0 0Q1 2 2 0Q3-2 4 0"));
        QVERIFY(isSame("M0 0S1 1 2 0", "M0 0C0 0 1 1 2 0"));
    }

    void malformedDataGivesNoPath_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("no move first") << "L1 1"_ba;
        QTest::newRow("numbers only") << "1 2 3"_ba;
        QTest::newRow("half a pair") << "M1"_ba;
        QTest::newRow("a flag of 2") << "M0 0A1 1 0 2 0 1 1"_ba;
        QTest::newRow("not a command") << "M0 0X1 1"_ba;
        QTest::newRow("number after close") << "M0 0L1 1Z 3"_ba;
        QTest::newRow("infinite") << "M0 0L1e999 1"_ba;
    }
    void malformedDataGivesNoPath() {
        QFETCH(QByteArray, data);
        QVERIFY(!platform::svgPath(data.constData()));
    }
};

TELLWICK_TEST(SvgPathTests, Nothing)
#include "SvgPathTests.moc"
