// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/HorizontalStrip.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>

namespace platform {

HorizontalStrip::HorizontalStrip(int spacing, int padding, QWidget* parent)
    : QWidget(parent)
    , m_row(new QWidget(this))
    , m_layout(new QHBoxLayout(m_row)) {
    m_layout->setSpacing(spacing);
    m_layout->setContentsMargins(padding, 0, padding, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void HorizontalStrip::add(QWidget* widget) {
    m_layout->addWidget(widget);
    widget->installEventFilter(this);
    updateGeometry();
    place();
}

int HorizontalStrip::maximum() const {
    return std::max(0, m_row->sizeHint().width() - width());
}

void HorizontalStrip::setOffset(int offset) {
    m_offset = std::clamp(offset, 0, maximum());
    place();
}

QSize HorizontalStrip::sizeHint() const {
    return m_row->sizeHint();
}

QSize HorizontalStrip::minimumSizeHint() const {
    return {0, m_row->sizeHint().height()};
}

void HorizontalStrip::place() {
    const QSize size = m_row->sizeHint();
    m_offset = std::clamp(m_offset, 0, maximum());
    const int start = maximum() > 0 ? -m_offset : (width() - size.width()) / 2;
    const int x = isRightToLeft() ? width() - size.width() - start : start;
    m_row->setGeometry(x, 0, size.width(), std::max(height(), size.height()));
}

void HorizontalStrip::reveal(const QWidget* widget) {
    const QMargins margins = m_layout->contentsMargins();
    const int left = widget->x() - margins.left();
    const int right = widget->geometry().right() + 1 + margins.right();
    const int before = isRightToLeft() ? m_row->width() - right : left;
    const int behind = isRightToLeft() ? m_row->width() - left : right;
    if (before < m_offset)
        setOffset(before);
    else if (behind > m_offset + width())
        setOffset(behind - width());
}

bool HorizontalStrip::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        place();
    }
    return QWidget::event(event);
}

void HorizontalStrip::resizeEvent(QResizeEvent*) {
    place();
}

void HorizontalStrip::wheelEvent(QWheelEvent* event) {
    const QPoint pixels =
        event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    const bool sideways = std::abs(pixels.x()) > std::abs(pixels.y());
    // A wheel that only turns up and down belongs to the column the strip stands in, unless Shift
    // is held.
    if (maximum() == 0 || (!sideways && !event->modifiers().testFlag(Qt::ShiftModifier))) {
        event->ignore();
        return;
    }
    const int distance = sideways ? pixels.x() : pixels.y();
    setOffset(m_offset + (isRightToLeft() ? distance : -distance));
    event->accept();
}

bool HorizontalStrip::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = static_cast<QWidget*>(watched);
    switch (event->type()) {
    case QEvent::FocusIn:
        reveal(widget);
        break;
    case QEvent::MouseButtonPress:
        m_pressedX = static_cast<QMouseEvent*>(event)->globalPosition().toPoint().x();
        m_pressedOffset = m_offset;
        m_isDragging = false;
        break;
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (!mouse->buttons().testFlag(Qt::LeftButton) || maximum() == 0)
            break;
        const int distance = mouse->globalPosition().toPoint().x() - m_pressedX;
        if (!m_isDragging && std::abs(distance) < QApplication::startDragDistance())
            break;
        if (!m_isDragging) {
            m_isDragging = true;
            // What is dragged is not pressed.
            if (auto* button = qobject_cast<QAbstractButton*>(widget))
                button->setDown(false);
        }
        setOffset(m_pressedOffset + (isRightToLeft() ? distance : -distance));
        return true;
    }
    case QEvent::MouseButtonRelease:
        if (std::exchange(m_isDragging, false))
            return true;
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace platform
