// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Icons.h"
#include "Platform/Widgets/Look/SvgPath.h"
#include "tests/support/TestMain.h"

#include <QImage>
#include <QPainter>

#include <set>
#include <string>

using namespace Qt::StringLiterals;

class IconsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyNameOfTheInterfaceHasADrawing_data() {
        QTest::addColumn<QString>("name");
        for (const auto* name : {"brain",
                                 "cpu",
                                 "info.circle",
                                 "square.and.pencil",
                                 "ellipsis.circle",
                                 "xmark.circle.fill",
                                 "stop.circle.fill",
                                 "arrow.up.circle.fill",
                                 "checkmark.circle",
                                 "text.alignleft",
                                 "lightbulb",
                                 "pencil.and.outline",
                                 "doc.on.doc",
                                 "arrow.clockwise",
                                 "arrow.clockwise.circle.fill",
                                 "checkmark",
                                 "lock.shield",
                                 "wifi.slash",
                                 "person.slash",
                                 "calendar.badge.exclamationmark",
                                 "hand.raised",
                                 "exclamationmark.triangle"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void everyNameOfTheInterfaceHasADrawing() {
        QFETCH(QString, name);
        const platform::Icons icons;

        QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        icons.paint(painter, name, image.rect(), Qt::red);
        painter.end();
        int painted = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                painted += color.alpha() > 200 ? 1 : 0;
                QVERIFY(color.alpha() == 0 || (color.green() == 0 && color.blue() == 0));
            }
        }
        QVERIFY2(painted > 64 * 64 / 30, qPrintable(QString::number(painted)));
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
        QCOMPARE(names.size(), size_t{22});
    }

    void anUnknownNamePaintsNothing() {
        const platform::Icons icons;
        QImage image(16, 16, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        const auto before = image;
        QPainter painter(&image);
        icons.paint(painter, u"no.such.icon"_s, image.rect(), Qt::red);
        icons.paint(painter, {}, image.rect(), Qt::red);
        painter.end();
        QCOMPARE(image, before);
    }

    void aDrawingStaysInTheMiddleOfAnOblongSpace() {
        const platform::Icons icons;
        QImage image(64, 16, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        icons.paint(painter, u"stop.circle.fill"_s, image.rect(), Qt::red);
        painter.end();
        QCOMPARE(image.pixelColor(20, 8).alpha(), 0);
        QCOMPARE(image.pixelColor(26, 8).alpha(), 255);
        QCOMPARE(image.pixelColor(43, 8).alpha(), 0);
    }
};

TELLWICK_TEST(IconsTests, Widgets)
#include "IconsTests.moc"
