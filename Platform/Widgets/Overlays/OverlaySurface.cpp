// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/OverlaySurface.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"

#include <QKeyEvent>
#include <QPainter>

namespace platform {

OverlaySurface::OverlaySurface(const Theme& theme, const QString& title)
    : m_theme(theme) {
    setAccessibleName(title);
    setFocusPolicy(Qt::ClickFocus); // a press on the body does not leave the surface
    setContentsMargins(Shadow::extent, Shadow::extent, Shadow::extent, Shadow::extent);
    observe(this, [this] {
        [[maybe_unused]] const auto tracked = m_theme.color(ColorRole::Popover);
        update();
    });
}

void OverlaySurface::dismiss() {
    if (m_host != nullptr)
        m_host->dismiss(this);
}

QRect OverlaySurface::bodyRect() const {
    constexpr auto margin = Shadow::extent;
    return rect().adjusted(margin, margin, -margin, -margin);
}

void OverlaySurface::setBodyGeometry(const QRect& body) {
    constexpr auto margin = Shadow::extent;
    setGeometry(body.adjusted(-margin, -margin, margin, margin));
    update();
}

QWidget* OverlaySurface::initialFocus() {
    for (auto* widget = nextInFocusChain(); widget != this; widget = widget->nextInFocusChain())
        if (isAncestorOf(widget) && widget->focusPolicy() & Qt::TabFocus && widget->isEnabled() &&
            widget->isVisibleTo(this))
            return widget;
    return nullptr;
}

bool OverlaySurface::moveFocus(bool forward) {
    auto* from = isAncestorOf(focusWidget()) ? focusWidget() : this;
    const auto next = [forward](QWidget* widget) {
        return forward ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (auto* widget = next(from); widget != from; widget = next(widget)) {
        if (isAncestorOf(widget) && widget->focusPolicy() & Qt::TabFocus && widget->isEnabled() &&
            widget->isVisibleTo(this)) {
            widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return true; // nowhere to go: the focus stays
}

bool OverlaySurface::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
            event->accept(); // ours, before any shortcut of the window
            return true;
        }
    }
    return QWidget::event(event);
}

void OverlaySurface::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        dismiss();
    event->accept(); // the window beneath hears nothing
}

void OverlaySurface::mousePressEvent(QMouseEvent* event) {
    if (!outline().contains(event->position()) && m_host != nullptr)
        m_host->pressedOutside();
}

void OverlaySurface::wheelEvent(QWheelEvent* event) {
    event->accept();
}

QPainterPath OverlaySurface::outline() const {
    QPainterPath path;
    path.addRoundedRect(bodyRect(), cornerRadius(), cornerRadius());
    return path;
}

void OverlaySurface::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    m_shadow.paint(painter, bodyRect(), cornerRadius(), m_theme.color(ColorRole::Shadow));
    painter.setRenderHint(QPainter::Antialiasing);
    const auto shape = outline();
    painter.setPen(QPen(m_theme.color(ColorRole::Outline), 1.5)); // half of it under the fill
    painter.drawPath(shape);
    painter.fillPath(shape, m_theme.color(ground()));
}

} // namespace platform
