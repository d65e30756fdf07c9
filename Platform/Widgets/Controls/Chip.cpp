// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Chip.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>

#include <utility>

namespace platform {

Chip::Chip(const Theme& theme, const QString& label, QString icon, QWidget* parent)
    : Button(theme, parent)
    , m_icon(std::move(icon)) {
    setText(label);
    setAccessibleName(label);
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Chip::sizeHint() const {
    const auto line = iconAndText(theme(), m_icon, text(), TextStyle::Subheadline, QFont::Medium);
    return line.size() + QSize(2 * Theme::chipPaddingX, 2 * Theme::chipPaddingY);
}

QString Chip::accessibleDetail() const {
    return isChecked() ? QStringLiteral("Pressed") : QString();
}

void Chip::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRectF area = rect();
    const auto radius = area.height() / 2;
    fillRounded(painter, area, radius,
                theme().color(isChecked() ? ColorRole::AccentFill : ColorRole::Chip));
    if (isDown() || isHovered()) {
        fillRounded(painter, area, radius,
                    theme().color(isDown() ? ColorRole::Pressed : ColorRole::Hover));
    }
    const auto line = iconAndText(theme(), m_icon, text(), TextStyle::Subheadline, QFont::Medium);
    const auto color = theme().color(isChecked() ? ColorRole::OnAccent : ColorRole::Accent);
    line.paint(painter, theme(), rect().adjusted(Theme::chipPaddingX, 0, -Theme::chipPaddingX, 0),
               color, color, layoutDirection());
    if (showsFocusRing()) {
        if (isChecked())
            strokeRounded(painter, area.adjusted(2, 2, -2, -2), radius, 2, color);
        else
            paintFocusRing(painter, theme(), area, radius);
    }
}

} // namespace platform
