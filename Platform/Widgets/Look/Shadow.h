// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>

class QPainter;

namespace platform {

/// The soft shadow of a rounded rectangle. Drawn once into a small picture that is then stretched
/// between its corners, so painting costs the same whatever the size.
class Shadow {
public:
    /// How far the shadow reaches beyond the rectangle, in pixels, and how far it lies below it.
    static constexpr int blur = 24;
    static constexpr int drop = 6;
    /// The margin around the rectangle that a widget must have for its shadow.
    static constexpr int extent = blur + drop;

    void paint(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color);

private:
    QPixmap m_tile;
    qreal m_scale = 0;
    qreal m_radius = -1;
    QColor m_color;
};

} // namespace platform
