// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/IconView.h"

#include "Platform/Observation/Observer.h"

#include <QFontMetrics>
#include <QPainter>

#include <cmath>
#include <utility>

namespace platform {

IconView::IconView(const Theme& theme, QString icon, qreal points, QWidget* parent)
    : IconView(theme, std::move(icon), points, std::nullopt, parent) {}

IconView::IconView(const Theme& theme, QString icon, TextStyle style, QWidget* parent)
    : IconView(theme, std::move(icon), 0, style, parent) {}

IconView::IconView(const Theme& theme, QString icon, qreal points, std::optional<TextStyle> style,
                   QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_icon(std::move(icon))
    , m_points(points)
    , m_style(style) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    observe(this, [this] {
        [[maybe_unused]] const auto color = m_theme.color(m_role);
        [[maybe_unused]] const auto size = m_theme.bodySize();
        updateGeometry();
        update();
    });
}

void IconView::setIcon(const QString& icon) {
    if (icon != m_icon) {
        m_icon = icon;
        update();
    }
}

void IconView::setColorRole(ColorRole role) {
    if (role != m_role) {
        m_role = role;
        update();
    }
}

void IconView::setFrameWidth(std::optional<int> width) {
    if (width != m_frameWidth) {
        m_frameWidth = width;
        updateGeometry();
    }
}

int IconView::symbolSide() const {
    return m_style ? m_theme.symbolSize(*m_style) : m_theme.symbolSize(m_points);
}

QSize IconView::sizeHint() const {
    const auto side = symbolSide();
    const auto height = m_style ? QFontMetrics(m_theme.font(*m_style)).height() : side;
    return {std::max(m_frameWidth.value_or(side), side), std::max(height, side)};
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto side = symbolSide();
    auto middle = height() / 2.0;
    if (m_style) {
        const QFontMetrics metrics(m_theme.font(*m_style));
        middle = metrics.ascent() - metrics.capHeight() / 2.0;
    }
    const auto left = (width() - side) / 2;
    const auto top = std::max(0.0, std::round(middle - side / 2.0));
    m_theme.icons().paint(painter, m_icon, QRectF(left, top, side, side), m_theme.color(m_role));
}

} // namespace platform
