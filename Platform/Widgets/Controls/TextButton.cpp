// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/TextButton.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>

namespace platform {

TextButton::TextButton(const Theme& theme, const QString& text, Kind kind, QWidget* parent)
    : Button(theme, parent)
    , m_kind(kind) {
    setText(text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (kind == Kind::Link)
        setCursor(Qt::PointingHandCursor);
    else if (kind == Kind::Default)
        m_weight = QFont::Medium;
}

void TextButton::setTextStyle(TextStyle style, QFont::Weight weight) {
    if (style != m_style || weight != m_weight) {
        m_style = style;
        m_weight = weight;
        updateGeometry();
        update();
    }
}

QMargins TextButton::padding() const {
    return m_kind == Kind::Link ? QMargins(5, 3, 5, 3) : QMargins(20, 7, 20, 7);
}

QSize TextButton::sizeHint() const {
    const auto margins = padding();
    return iconAndText(theme(), {}, text(), m_style, m_weight).size() +
           QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QAccessible::Role TextButton::accessibleRole() const {
    return m_kind == Kind::Link ? QAccessible::Link : QAccessible::Button;
}

void TextButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRectF area = rect();
    const auto radius = m_kind == Kind::Link ? 4 : Theme::controlRadius + 1;
    auto line = iconAndText(theme(), {}, text(), m_style, m_weight);
    auto color = theme().color(ColorRole::Label);
    if (m_kind == Kind::Link) {
        color = theme().color(ColorRole::Link);
        line.font.setUnderline(isHovered());
    } else {
        const bool isDefault = m_kind == Kind::Default;
        color = theme().color(isDefault ? ColorRole::OnAccent : ColorRole::Label);
        fillRounded(painter, area, radius,
                    theme().color(isDefault ? ColorRole::AccentFill : ColorRole::Hover));
        if (isDown() || isHovered()) {
            fillRounded(painter, area, radius,
                        theme().color(isDown() ? ColorRole::Pressed : ColorRole::Hover));
        }
    }
    const auto free = (width() - line.size().width()) / 2;
    line.paint(painter, theme(), rect().adjusted(free, 0, -free, 0), color, color,
               layoutDirection());
    if (showsFocusRing()) {
        if (m_kind == Kind::Default)
            strokeRounded(painter, area.adjusted(2, 2, -2, -2), radius - 2, 2, color);
        else
            paintFocusRing(painter, theme(), area, radius);
    }
}

} // namespace platform
