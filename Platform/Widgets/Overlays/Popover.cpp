// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Popover.h"

#include "Platform/Widgets/Scrolling/ScrollView.h"

#include <QEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace platform {

namespace {

constexpr int arrowHeight = 9;
constexpr int arrowHalfWidth = 10;
constexpr int air = 5; // between the body and the window's edge: the arrow reaches a button there
constexpr int tallest = 620;

} // namespace

Popover::Popover(const Theme& theme, const QString& title, QWidget* content, int width,
                 QWidget* anchor)
    : OverlaySurface(theme, title)
    , m_scroll(new ScrollView(theme, this))
    , m_width(width)
    , m_anchor(anchor) {
    m_scroll->setContent(content);
    auto* layout = new QVBoxLayout(this);
    const auto margins = contentsMargins();
    setContentsMargins(0, 0, 0, 0);
    layout->setContentsMargins(margins); // the body's ends are round: nothing scrolls over them
    layout->setSpacing(0);
    layout->addWidget(m_scroll);
}

QRect Popover::anchorRect(const QRect& area) const {
    if (m_anchor == nullptr || !m_anchor->isVisible() || parentWidget() == nullptr)
        return {area.center().x(), area.top(), 1, 1};
    const auto global = m_anchor->mapToGlobal(QPoint(0, 0));
    return {parentWidget()->mapFromGlobal(global), m_anchor->size()};
}

QRect Popover::place(const QRect& area) {
    const auto anchor = anchorRect(area);
    const auto width = std::min(m_width, area.width() - 2 * air);
    const auto wanted = std::min(m_scroll->heightForWidth(width), tallest);
    const auto below = area.bottom() - air - (anchor.bottom() + arrowHeight);
    const auto above = anchor.top() - arrowHeight - air - area.top();
    m_isBelow = below >= wanted || below >= above;
    const auto height = std::max(0, std::min(wanted, m_isBelow ? below : above));
    const auto top =
        m_isBelow ? anchor.bottom() + 1 + arrowHeight : anchor.top() - arrowHeight - height;
    const auto tip = std::clamp(anchor.center().x(), area.left() + air, area.right() - air);
    const auto left = std::clamp(tip - width / 2, area.left() + air,
                                 std::max(area.left() + air, area.right() + 1 - air - width));
    const auto free = static_cast<int>(cornerRadius()) + arrowHalfWidth;
    m_tip = std::clamp(tip - left, free, std::max(free, width - free));
    return {left, top, width, height};
}

QPainterPath Popover::outline() const {
    const QRectF body = bodyRect();
    QPainterPath arrow;
    const auto edge = m_isBelow ? body.top() : body.bottom();
    const auto out = m_isBelow ? -1.0 : 1.0;
    const auto at = [&](double x, double y) {
        return QPointF(body.left() + m_tip + x, edge + out * y);
    };
    arrow.moveTo(at(-arrowHalfWidth - 3, -2));
    arrow.lineTo(at(-arrowHalfWidth - 3, 0));
    arrow.quadTo(at(-arrowHalfWidth + 1, 0), at(-arrowHalfWidth + 4, 3));
    arrow.lineTo(at(-2, arrowHeight - 1));
    arrow.quadTo(at(0, arrowHeight + 0.6), at(2, arrowHeight - 1));
    arrow.lineTo(at(arrowHalfWidth - 4, 3));
    arrow.quadTo(at(arrowHalfWidth - 1, 0), at(arrowHalfWidth + 3, 0));
    arrow.lineTo(at(arrowHalfWidth + 3, -2));
    arrow.closeSubpath();
    return OverlaySurface::outline().united(arrow);
}

bool Popover::event(QEvent* event) {
    const bool handled = OverlaySurface::event(event);
    if (event->type() == QEvent::LayoutRequest && parentWidget() != nullptr)
        setBodyGeometry(place(parentWidget()->rect())); // the content has become higher or lower
    return handled;
}

} // namespace platform
