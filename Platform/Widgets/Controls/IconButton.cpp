// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/IconButton.h"

#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace platform {

IconButton::IconButton(const Theme& theme, QString name, QString icon, qreal points,
                       QWidget* parent)
    : Button(theme, parent)
    , m_icon(std::move(icon))
    , m_points(points) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setName(name);
}

void IconButton::setIcon(const QString& icon) {
    if (icon != m_icon) {
        m_icon = icon;
        update();
    }
}

void IconButton::setName(const QString& name) {
    if (name != accessibleName()) {
        setAccessibleName(name);
        setToolTip(name);
    }
}

void IconButton::setColorRole(ColorRole role) {
    if (role != m_role) {
        m_role = role;
        update();
    }
}

void IconButton::setSymbolOpacity(qreal opacity) {
    if (opacity != m_opacity) {
        m_opacity = opacity;
        update();
    }
}

void IconButton::setPadding(int padding) {
    padding = std::max(padding, Theme::focusRingWidth);
    if (padding != m_padding) {
        m_padding = padding;
        updateGeometry();
        update();
    }
}

void IconButton::setRound(bool isRound) {
    if (isRound != m_isRound) {
        m_isRound = isRound;
        update();
    }
}

QSize IconButton::sizeHint() const {
    const auto side = theme().symbolSize(m_points) + 2 * m_padding;
    return {side, side};
}

void IconButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRectF area = rect();
    const auto radius = m_isRound ? area.height() / 2 : Theme::controlRadius;
    auto color = withOpacity(theme().color(m_role), m_opacity);
    if (!isEnabled()) {
        color = withOpacity(color, m_opacity < 1 ? 1 : 0.4);
    } else if (m_isRound) { // a disc shows the pointer by its own tone
        color = withOpacity(color, isDown() ? 0.65 : isHovered() ? 0.85 : 1);
    } else if (isDown() || isHovered()) {
        fillRounded(painter, area, radius,
                    theme().color(isDown() ? ColorRole::Pressed : ColorRole::Hover));
    }
    const auto inset = m_padding;
    theme().icons().paint(painter, m_icon, area.adjusted(inset, inset, -inset, -inset), color);
    if (showsFocusRing())
        paintFocusRing(painter, theme(), area, radius);
}

} // namespace platform
