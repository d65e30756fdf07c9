// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/WindowFrame.h"

#include "Platform/Observation/Observer.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWindow>

namespace platform {

namespace {

constexpr QMargins shadowRoom(WindowFrame::room, WindowFrame::room, WindowFrame::room,
                              WindowFrame::room);
constexpr int cornerGrip = 24; // along an edge, from where both edges are dragged

Qt::CursorShape cursorOf(Qt::Edges edges) {
    if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::RightEdge | Qt::TopEdge) || edges == (Qt::LeftEdge | Qt::BottomEdge))
        return Qt::SizeBDiagCursor;
    if (edges & (Qt::LeftEdge | Qt::RightEdge))
        return Qt::SizeHorCursor;
    return edges ? Qt::SizeVerCursor : Qt::ArrowCursor;
}

} // namespace

/// One corner of the window, over its content: takes away what lies beyond the rounded outline and
/// puts the shadow there.
class WindowFrame::Corner final : public QWidget {
public:
    explicit Corner(WindowFrame& frame)
        : QWidget(&frame)
        , m_frame(frame) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-pos());
        QPainterPath beyond;
        beyond.addRect(geometry());
        QPainterPath outline;
        outline.addRoundedRect(m_frame.contentRect(), radius, radius);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        painter.fillPath(beyond.subtracted(outline), Qt::black);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.setClipRect(geometry());
        m_frame.paintAround(painter);
    }

private:
    WindowFrame& m_frame;
};

WindowFrame::WindowFrame(const Theme& theme, SetMargins setMargins)
    : QWidget(nullptr, Qt::FramelessWindowHint)
    , m_theme(theme)
    , m_setMargins(std::move(setMargins))
    , m_margins(shadowRoom) {
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    for (auto*& corner : m_corners)
        corner = new Corner(*this);
    observe(this, [this] {
        static_cast<void>(m_theme.color(ColorRole::Shadow));
        update();
    });
}

void WindowFrame::setContent(QWidget& content) {
    m_content = &content;
    content.setParent(this);
    content.setCursor(Qt::ArrowCursor); // or it would be that of the edges
    setWindowTitle(content.windowTitle());
    connect(&content, &QWidget::windowTitleChanged, this, &QWidget::setWindowTitle);
    // The desktop counts a window's minimum without the room for its shadow.
    setMinimumSize(content.minimumSize());
    resize(content.size().grownBy(m_margins));
    for (auto* corner : m_corners)
        corner->raise();
    arrange();
}

void WindowFrame::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_setMargins(*windowHandle(), m_margins);
    arrange();
}

void WindowFrame::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    const QMargins margins = isMaximized() || isFullScreen() ? QMargins() : shadowRoom;
    if (event->type() != QEvent::WindowStateChange || margins == m_margins)
        return;
    m_margins = margins;
    if (windowHandle())
        m_setMargins(*windowHandle(), m_margins);
    arrange();
}

void WindowFrame::resizeEvent(QResizeEvent* /*event*/) {
    arrange();
}

void WindowFrame::arrange() {
    if (m_content)
        m_content->setGeometry(contentRect());
    const QRect content = contentRect();
    const QSize size(radius, radius);
    std::array<QRect, 4> places;
    places.fill(QRect(QPoint(), size));
    places[0].moveTopLeft(content.topLeft());
    places[1].moveTopRight(content.topRight());
    places[2].moveBottomLeft(content.bottomLeft());
    places[3].moveBottomRight(content.bottomRight());
    for (size_t i = 0; i < m_corners.size(); ++i) {
        m_corners.at(i)->setGeometry(places.at(i));
        m_corners.at(i)->setVisible(isRounded());
    }
    // The outer shadow lets the pointer through to what lies under it.
    if (auto* handle = windowHandle())
        handle->setMask(isRounded() ? content.adjusted(-grip, -grip, grip, grip) : QRegion());
}

void WindowFrame::paintAround(QPainter& painter) {
    const QRectF content = contentRect();
    m_shadow.paint(painter, content, radius, m_theme.color(ColorRole::Shadow));
    painter.setPen(m_theme.color(ColorRole::Outline));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(content.adjusted(-0.5, -0.5, 0.5, 0.5), radius, radius);
}

void WindowFrame::paintEvent(QPaintEvent* /*event*/) {
    if (!isRounded())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintAround(painter);
}

Qt::Edges WindowFrame::edgesAt(QPoint point) const {
    const QRect content = contentRect();
    if (!isRounded() || content.contains(point))
        return {};
    const QRect inner = content.adjusted(cornerGrip, cornerGrip, -cornerGrip, -cornerGrip);
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, point.x() < inner.left());
    edges.setFlag(Qt::RightEdge, point.x() > inner.right());
    edges.setFlag(Qt::TopEdge, point.y() < inner.top());
    edges.setFlag(Qt::BottomEdge, point.y() > inner.bottom());
    return edges;
}

void WindowFrame::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() == Qt::NoButton)
        setCursor(cursorOf(edgesAt(event->position().toPoint())));
}

void WindowFrame::mousePressEvent(QMouseEvent* event) {
    const auto edges = edgesAt(event->position().toPoint());
    if (edges && event->button() == Qt::LeftButton)
        resizeWindow(edges);
}

void WindowFrame::resizeWindow(Qt::Edges edges) {
    if (windowHandle())
        windowHandle()->startSystemResize(edges);
}

} // namespace platform
