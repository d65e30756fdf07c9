// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/WindowFrame.h"
#include "tests/support/TestMain.h"

#include <QWindow>

using namespace Qt::StringLiterals;
using platform::WindowFrame;

namespace {

constexpr int room = WindowFrame::room;
constexpr QColor contentColor(0, 128, 255);

/// A frame that notes the edges it has had resized.
class NotingFrame final : public WindowFrame {
public:
    using WindowFrame::WindowFrame;
    QList<Qt::Edges> resized;

protected:
    void resizeWindow(Qt::Edges edges) override { resized.append(edges); }
};

} // namespace

class WindowFrameTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;
    QList<QMargins> m_told;
    std::unique_ptr<NotingFrame> m_frame;
    std::unique_ptr<QWidget> m_content;

    QRect contentRect() const { return m_content->geometry(); }

    QColor pixel(QPoint at) const {
        QImage image(m_frame->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        m_frame->render(&image, {}, {}, QWidget::DrawChildren);
        return image.pixelColor(at);
    }

private Q_SLOTS:
    void init() {
        m_frame = std::make_unique<NotingFrame>(
            m_theme, [this](QWindow&, const QMargins& margins) { m_told.append(margins); });
        m_content = std::make_unique<QWidget>();
        m_content->setWindowTitle(u"Tellwick"_s);
        m_content->setMinimumSize(100, 80);
        m_content->setAutoFillBackground(true);
        m_content->setPalette(QPalette(contentColor));
        m_content->resize(400, 300);
        m_frame->setContent(*m_content);
        m_frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_frame.get()));
    }
    void cleanup() {
        m_content.reset();
        m_frame.reset();
        m_told.clear();
    }

    void theContentKeepsItsSizeInsideTheRoomForTheShadow() {
        QCOMPARE(contentRect(), QRect(room, room, 400, 300));
        QCOMPARE(m_frame->size(), QSize(400 + 2 * room, 300 + 2 * room));
        QVERIFY(m_content->isVisible());
        QCOMPARE(m_told, (QList<QMargins>{{room, room, room, room}}));
        m_frame->resize(700, 600);
        QTRY_COMPARE(contentRect(), QRect(room, room, 700 - 2 * room, 600 - 2 * room));
    }

    void theFrameTakesOverTitleAndMinimumSize() {
        QCOMPARE(m_frame->windowTitle(), u"Tellwick"_s);
        QCOMPARE(m_frame->minimumSize(), m_content->minimumSize());
        m_content->setWindowTitle(u"Another"_s);
        QCOMPARE(m_frame->windowTitle(), u"Another"_s);
    }

    void aMaximisedWindowIsItsContentAlone() {
        m_frame->showMaximized();
        QTRY_COMPARE(contentRect(), m_frame->rect());
        QCOMPARE(m_told.constLast(), QMargins());
        QVERIFY(m_frame->windowHandle()->mask().isEmpty());
        QCOMPARE(pixel({0, 0}), contentColor);
        m_frame->showNormal();
        QTRY_COMPARE(contentRect(), QRect(room, room, 400, 300));
        QCOMPARE(m_told.constLast(), QMargins(room, room, room, room));
    }

    void theCornersAreRoundAndTheShadowLiesAroundThem() {
        const QRect content = contentRect();
        for (const QPoint corner :
             {content.topLeft(), content.topRight(), content.bottomLeft(), content.bottomRight()}) {
            const QColor color = pixel(corner);
            QVERIFY(color.alpha() > 0);
            QVERIFY(color.alpha() < 160);
        }
        QCOMPARE(pixel(content.topLeft() + QPoint(WindowFrame::radius, 0)), contentColor);
        QCOMPARE(pixel(content.topLeft() + QPoint(0, WindowFrame::radius)), contentColor);
        QCOMPARE(pixel(content.center()), contentColor);
        QVERIFY(pixel({content.center().x(), content.bottom() + 5}).alpha() > 0);
        QCOMPARE(pixel({0, 0}).alpha(), 0);
    }

    void thePointerGoesThroughTheOuterShadow() {
        const QRegion mask = m_frame->windowHandle()->mask();
        constexpr int grip = WindowFrame::grip;
        QCOMPARE(mask.boundingRect(), contentRect().adjusted(-grip, -grip, grip, grip));
    }

    void theEdgesAroundTheContentResizeTheWindow_data() {
        QTest::addColumn<QPoint>("point"); // from the content's corner
        QTest::addColumn<Qt::Edges>("edges");
        QTest::newRow("left") << QPoint(-3, 150) << Qt::Edges(Qt::LeftEdge);
        QTest::newRow("right") << QPoint(402, 150) << Qt::Edges(Qt::RightEdge);
        QTest::newRow("top") << QPoint(200, -3) << Qt::Edges(Qt::TopEdge);
        QTest::newRow("bottom") << QPoint(200, 302) << Qt::Edges(Qt::BottomEdge);
        QTest::newRow("top left") << QPoint(-1, -1) << (Qt::TopEdge | Qt::LeftEdge);
        QTest::newRow("top right, on the top") << QPoint(390, -3) << (Qt::TopEdge | Qt::RightEdge);
        QTest::newRow("bottom left, on the left")
            << QPoint(-3, 290) << (Qt::BottomEdge | Qt::LeftEdge);
        QTest::newRow("bottom right") << QPoint(402, 302) << (Qt::BottomEdge | Qt::RightEdge);
        QTest::newRow("the content") << QPoint(2, 2) << Qt::Edges();
    }
    void theEdgesAroundTheContentResizeTheWindow() {
        QFETCH(QPoint, point);
        QFETCH(Qt::Edges, edges);
        const QPoint at = contentRect().topLeft() + point;
        QCOMPARE(m_frame->edgesAt(at), edges);
        QTest::mouseClick(m_frame->windowHandle(), Qt::RightButton, {}, at);
        QVERIFY(m_frame->resized.isEmpty());
        QTest::mouseClick(m_frame->windowHandle(), Qt::LeftButton, {}, at);
        QCOMPARE(m_frame->resized, edges ? QList{edges} : QList<Qt::Edges>());
    }

    void thePointerShowsWhichEdgeItIsOver() {
        const auto shapeAt = [this](QPoint at) {
            QTest::mouseMove(m_frame->windowHandle(), at);
            return m_frame->cursor().shape();
        };
        const QRect content = contentRect();
        QCOMPARE(shapeAt({content.left() - 3, content.center().y()}), Qt::SizeHorCursor);
        QCOMPARE(shapeAt({content.center().x(), content.bottom() + 3}), Qt::SizeVerCursor);
        QCOMPARE(shapeAt(content.topLeft() - QPoint(3, 3)), Qt::SizeFDiagCursor);
        QCOMPARE(shapeAt(content.topRight() + QPoint(3, -3)), Qt::SizeBDiagCursor);
        QCOMPARE(m_content->cursor().shape(), Qt::ArrowCursor);
    }
};

TELLWICK_TEST(WindowFrameTests, Widgets)
#include "WindowFrameTests.moc"
