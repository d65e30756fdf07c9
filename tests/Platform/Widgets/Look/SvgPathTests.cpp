// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/SvgPath.h"
#include "tests/support/TestMain.h"

#include <cmath>

class SvgPathTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pathsOfStraightLinesCoverTheirRectangle_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QRectF>("rect");
        QTest::newRow("absolute") << QByteArray("M1 2L5 2L5 8L1 8Z") << QRectF(1, 2, 4, 6);
        QTest::newRow("relative") << QByteArray("m1 2h4v6h-4z") << QRectF(1, 2, 4, 6);
        QTest::newRow("pairs after a move")
            << QByteArray("M1,2 5,2 5,8 1,8z") << QRectF(1, 2, 4, 6);
        QTest::newRow("relative pairs after a move")
            << QByteArray("m1 2 4 0 0 6-4 0z") << QRectF(1, 2, 4, 6);
        QTest::newRow("no blanks, no leading noughts")
            << QByteArray("M.5-.5H1.5V.5H.5Z") << QRectF(0.5, -0.5, 1, 1);
        QTest::newRow("points run together")
            << QByteArray("M.5.5 1.5.5V1.5H.5z") << QRectF(0.5, 0.5, 1, 1);
        QTest::newRow("exponents and signs")
            << QByteArray("M+1e0 20e-1H5V8H1Z") << QRectF(1, 2, 4, 6);
        QTest::newRow("move after close starts from the subpath's start")
            << QByteArray("M1 2h2v2h-2zm2 2h2v4h-2z") << QRectF(1, 2, 4, 6);
    }
    void pathsOfStraightLinesCoverTheirRectangle() {
        QFETCH(QByteArray, data);
        QFETCH(QRectF, rect);
        const auto path = platform::svgPath({data.constData(), static_cast<size_t>(data.size())});
        QVERIFY(path);
        QCOMPARE(path->boundingRect(), rect);
    }

    void arcsLieOnTheirCircle_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("two halves") << QByteArray("M16 8A8 8 0 1 1 0 8a8 8 0 0 1 16 0z");
        QTest::newRow("flags run into the numbers")
            << QByteArray("M16 8A8 8 0 110 8a8 8 0 0116 0z");
        QTest::newRow("the other way") << QByteArray("M16 8A8 8 0 1 0 0 8a8 8 0 0 0 16 0z");
        QTest::newRow("rotation does not matter")
            << QByteArray("M16 8A8 8 30 1 1 0 8A8 8 30 0 1 16 8");
        QTest::newRow("radii too small grow") << QByteArray("M16 8A1 1 0 0 1 0 8A1 1 0 0 1 16 8");
        QTest::newRow("large arc") << QByteArray("M16 8A8 8 0 1 1 8 0A8 8 0 0 1 16 8");
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
        const auto smooth = platform::svgPath("M0 0C0 1 1 2 2 2S4 1 4 0");
        const auto full = platform::svgPath("M0 0C0 1 1 2 2 2C3 2 4 1 4 0");
        QVERIFY(smooth && full);
        QCOMPARE(*smooth, *full);
        const auto smoothQuad = platform::svgPath("M0 0Q1 2 2 0t2 0");
        const auto fullQuad = platform::svgPath("M0 0Q1 2 2 0Q3-2 4 0");
        QVERIFY(smoothQuad && fullQuad);
        QCOMPARE(*smoothQuad, *fullQuad);
        const auto alone = platform::svgPath("M0 0S1 1 2 0");
        const auto aloneFull = platform::svgPath("M0 0C0 0 1 1 2 0");
        QVERIFY(alone && aloneFull);
        QCOMPARE(*alone, *aloneFull);
    }

    void malformedDataGivesNoPath_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("no move first") << QByteArray("L1 1");
        QTest::newRow("numbers only") << QByteArray("1 2 3");
        QTest::newRow("half a pair") << QByteArray("M1");
        QTest::newRow("a flag of 2") << QByteArray("M0 0A1 1 0 2 0 1 1");
        QTest::newRow("not a command") << QByteArray("M0 0X1 1");
        QTest::newRow("number after close") << QByteArray("M0 0L1 1Z 3");
        QTest::newRow("infinite") << QByteArray("M0 0L1e999 1");
    }
    void malformedDataGivesNoPath() {
        QFETCH(QByteArray, data);
        QVERIFY(!platform::svgPath(data.constData()));
    }
};

TELLWICK_TEST(SvgPathTests, Nothing)
#include "SvgPathTests.moc"
