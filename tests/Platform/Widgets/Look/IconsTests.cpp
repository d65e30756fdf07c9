// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Icons.h"
#include "tests/support/TestMain.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <set>
#include <string>

using namespace Qt::StringLiterals;

namespace {

/// A red icon on a background.
QImage painted(const QString& name, QSize size, const QColor& background = Qt::transparent) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    platform::Icons().paint(painter, name, image.rect(), Qt::red);
    painter.end();
    return image;
}

} // namespace

class IconsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyNameOfTheInterfaceHasADrawing_data() {
        QTest::addColumn<QString>("name");
        const auto names =
            u"brain cpu info.circle square.and.pencil ellipsis.circle xmark.circle.fill "
            "stop.circle.fill arrow.up.circle.fill checkmark.circle text.alignleft lightbulb "
            "pencil.and.outline doc.on.doc arrow.clockwise arrow.clockwise.circle.fill checkmark "
            "lock.shield wifi.slash person.slash calendar.badge.exclamationmark hand.raised "
            "exclamationmark.triangle"_s.split(u' ');
        for (const auto& name : names)
            QTest::newRow(qPrintable(name)) << name;
    }
    void everyNameOfTheInterfaceHasADrawing() {
        QFETCH(QString, name);
        const auto image = painted(name, {64, 64});
        int inside = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                inside += color.alpha() > 200 ? 1 : 0;
                QVERIFY(color.alpha() == 0 || (color.green() == 0 && color.blue() == 0));
            }
        }
        QVERIFY2(inside > 64 * 64 / 30, qPrintable(QString::number(inside)));
    }

    void everyDrawingIsReadWholeAndFillsItsSquareWithoutLeavingIt() {
        std::set<std::string> names;
        for (const auto& part : platform::iconParts()) {
            names.insert(part.name);
            const auto path = platform::svgPath(part.path);
            QVERIFY2(path, part.name);
            const auto half = part.strokeWidth / 2;
            const auto bounds = path->boundingRect().adjusted(-half, -half, half, half);
            QVERIFY2(QRectF(-0.05, -0.05, 16.1, 16.1).contains(bounds), part.name);
        }
        QCOMPARE(names.size(), size_t{29});
    }

    void theLinesOfATitleBarsSymbolsAreSeenHoweverSmallTheyAre() {
        for (const auto& name : {u"window.minimize"_s, u"window.maximize"_s, u"xmark"_s}) {
            for (int side = 10; side <= 14; ++side) {
                const auto image = painted(name, {side, side});
                int darkest = 0;
                for (int y = 0; y < side; ++y)
                    darkest = std::max(darkest, image.pixelColor(side / 2, y).alpha());
                QVERIFY2(darkest > 255 / 2, qPrintable(name + u' ' + QString::number(side)));
            }
        }
    }

    void anUnknownNamePaintsNothing() {
        for (const auto& name : {u"no.such.icon"_s, QString()}) {
            const auto image = painted(name, {16, 16}, Qt::white);
            QImage white = image;
            white.fill(Qt::white);
            QCOMPARE(image, white);
        }
    }

    void aDrawingStaysInTheMiddleOfAnOblongSpace() {
        const auto image = painted(u"stop.circle.fill"_s, {64, 16});
        QCOMPARE(image.pixelColor(20, 8).alpha(), 0);
        QCOMPARE(image.pixelColor(26, 8).alpha(), 255);
        QCOMPARE(image.pixelColor(43, 8).alpha(), 0);
    }
};

TELLWICK_TEST(IconsTests, Widgets)
#include "IconsTests.moc"
