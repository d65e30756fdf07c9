// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Icons.h"

#include "Platform/Widgets/Look/SvgPath.h"

#include <QPainter>

#include <algorithm>

namespace platform {

namespace {

constexpr double grid = 16; // the drawings' square

} // namespace

const std::vector<Icons::Part>& Icons::drawing(const QString& name) const {
    const auto known = m_drawings.constFind(name);
    if (known != m_drawings.constEnd())
        return *known;
    std::vector<Part> parts;
    for (const auto& part : iconParts()) {
        if (name == QLatin1StringView(part.name)) {
            if (auto path = svgPath(part.path)) {
                path->setFillRule(part.isEvenOdd ? Qt::OddEvenFill : Qt::WindingFill);
                parts.push_back({std::move(*path), part.strokeWidth});
            }
        }
    }
    return *m_drawings.insert(name, std::move(parts));
}

void Icons::paint(QPainter& painter, const QString& name, const QRectF& rect,
                  const QColor& color) const {
    const auto side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side / 2, side / 2));
    painter.scale(side / grid, side / grid);
    for (const auto& part : drawing(name)) {
        if (part.strokeWidth > 0) {
            const QPen pen(color, part.strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
            painter.strokePath(part.path, pen);
        } else {
            painter.fillPath(part.path, color);
        }
    }
    painter.restore();
}

} // namespace platform
