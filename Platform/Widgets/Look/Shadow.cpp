// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Shadow.h"

#include <QImage>
#include <QPaintDevice>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace platform {

namespace {

/// The shadow of a square of side 2 * (radius + blur), whose middle is even in both directions.
QPixmap tile(qreal radius, const QColor& color, qreal scale) {
    const auto half = radius + Shadow::blur; // of the square
    const auto side = static_cast<int>(std::ceil(2 * (half + Shadow::blur) * scale));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const auto dx = std::abs((x + 0.5) / scale - half - Shadow::blur);
            const auto dy = std::abs((y + 0.5) / scale - half - Shadow::blur);
            const auto outX = std::max(0.0, dx - (half - radius));
            const auto outY = std::max(0.0, dy - (half - radius));
            const auto distance = std::hypot(outX, outY) - radius; // beyond the outline
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
    if (m_tile.isNull() || scale != m_scale || radius != m_radius || color != m_color) {
        m_tile = tile(radius, color, scale);
        m_scale = scale;
        m_radius = radius;
        m_color = color;
    }
    const auto outer = rect.translated(0, Shadow::drop).adjusted(-blur, -blur, blur, blur);
    const auto side = static_cast<qreal>(m_tile.width()); // in the picture's own pixels
    const auto corner = std::floor(side / 2);
    const auto room = std::min(outer.width(), outer.height()) / 2;
    const auto edge = std::min(corner / scale, room); // of the target
    const std::array<qreal, 4> sources{0, corner, side - corner, side};
    const std::array<qreal, 4> xs{outer.left(), outer.left() + edge, outer.right() - edge,
                                  outer.right()};
    const std::array<qreal, 4> ys{outer.top(), outer.top() + edge, outer.bottom() - edge,
                                  outer.bottom()};
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column) {
            const QRectF target(QPointF(xs.at(column), ys.at(row)),
                                QPointF(xs.at(column + 1), ys.at(row + 1)));
            QRectF source(QPointF(sources.at(column), sources.at(row)),
                          QPointF(sources.at(column + 1), sources.at(row + 1)));
            if (column == 1) { // the even stretch between the corners: one pixel of it
                source.setLeft(corner - 1);
                source.setRight(corner);
            }
            if (row == 1) {
                source.setTop(corner - 1);
                source.setBottom(corner);
            }
            if (!target.isEmpty())
                painter.drawPixmap(target, m_tile, source);
        }
    }
    painter.restore();
}

} // namespace platform
