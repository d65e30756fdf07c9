// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Shadow.h"

#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>

namespace platform {

namespace {

/// The shadow of a rounded square, as small as its corners allow: `corner` pixels and as many on
/// the other side, with one pixel between them that may be stretched.
QPixmap tile(int corner, qreal radius, const QColor& color, qreal scale) {
    const int side = 2 * corner + 1;
    const auto beyond = [&](int at) { // the straight edge, from where the corner's circle begins
        const auto fromMiddle = (corner - std::min(at, side - 1 - at) - 0.5) / scale;
        return std::max(0.0, fromMiddle - Shadow::blur);
    };
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const auto distance = std::hypot(beyond(x), beyond(y)) - radius;
            const auto t = std::clamp(0.5 - distance / (2 * Shadow::blur), 0.0, 1.0);
            const auto share = t * t; // a long faint tail, as a blurred edge has
            const auto alpha = static_cast<int>(std::lround(color.alpha() * share));
            row[x] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
        }
    }
    return QPixmap::fromImage(std::move(image));
}

} // namespace

void Shadow::paint(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color) {
    const auto scale = painter.device()->devicePixelRatioF();
    const int corner = qCeil((radius + 2 * blur) * scale); // in pixels of the screen
    if (scale != m_scale || radius != m_radius || color != m_color) {
        m_tile = tile(corner, radius, color, scale);
        m_scale = scale;
        m_radius = radius;
        m_color = color;
    }
    const auto outer = rect.translated(0, drop).adjusted(-blur, -blur, blur, blur);
    const auto edge = std::min({corner / scale, outer.width() / 2, outer.height() / 2});
    const std::array<qreal, 4> sources{0, corner * 1.0, corner + 1.0, 2 * corner + 1.0};
    const std::array<qreal, 4> xs{outer.left(), outer.left() + edge, outer.right() - edge,
                                  outer.right()};
    const std::array<qreal, 4> ys{outer.top(), outer.top() + edge, outer.bottom() - edge,
                                  outer.bottom()};
    const auto part = [](const auto& columns, size_t column, const auto& rows, size_t row) {
        return QRectF(QPointF(columns.at(column), rows.at(row)),
                      QPointF(columns.at(column + 1), rows.at(row + 1)));
    };
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            if (const auto target = part(xs, column, ys, row); !target.isEmpty())
                painter.drawPixmap(target, m_tile, part(sources, column, sources, row));
    painter.restore();
}

} // namespace platform
