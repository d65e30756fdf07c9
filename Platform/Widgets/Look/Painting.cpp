// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Painting.h"

#include <QFontMetrics>
#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QStyle>
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

void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color) {
    const auto fitting = std::min({radius, rect.width() / 2, rect.height() / 2});
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect, fitting, fitting);
    painter.restore();
}

void strokeRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color,
                   qreal width) {
    const qreal inset = width / 2;
    const auto line = rect.adjusted(inset, inset, -inset, -inset);
    const auto fitting =
        std::max(0.0, std::min({radius - inset, line.width() / 2, line.height() / 2}));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(line, fitting, fitting);
    painter.restore();
}

bool showsFocusRing(Qt::FocusReason reason, bool before) {
    if (reason == Qt::ActiveWindowFocusReason)
        return before;
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

void paintFocusRing(QPainter& painter, const Theme& theme, const QRectF& rect, qreal radius,
                    ColorRole role) {
    const bool isOnAccent = role == ColorRole::OnAccent;
    const qreal off = isOnAccent ? 2 : 0;
    strokeRounded(painter, rect.adjusted(off, off, -off, -off), radius - off, theme.color(role),
                  Theme::focusRingWidth - (isOnAccent ? 1 : 0));
}

QPalette fieldPalette(const Theme& theme, QPalette palette) {
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, theme.color(ColorRole::Label));
    palette.setColor(QPalette::PlaceholderText, theme.color(ColorRole::TertiaryLabel));
    palette.setColor(QPalette::Highlight, theme.color(ColorRole::Selection));
    palette.setColor(QPalette::HighlightedText, theme.color(ColorRole::Label));
    return palette;
}

void paintField(QPainter& painter, const Theme& theme, const QRectF& rect, qreal radius,
                bool showsFocusRing) {
    fillRounded(painter, rect, radius, theme.color(ColorRole::Field));
    strokeRounded(painter, rect, radius, theme.color(ColorRole::FieldBorder));
    if (showsFocusRing)
        paintFocusRing(painter, theme, rect, radius);
}

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

QSize IconAndText::size() const {
    const QFontMetricsF metrics(font);
    auto width = static_cast<int>(std::ceil(metrics.horizontalAdvance(text)));
    if (!icon.isEmpty())
        width += iconSize + (text.isEmpty() ? 0 : gap);
    const auto height = QFontMetrics(font).height();
    return {width, std::max(height, icon.isEmpty() ? 0 : iconSize)};
}

void IconAndText::paint(QPainter& painter, const Theme& theme, const QRect& rect,
                        const QColor& color, Qt::LayoutDirection direction) const {
    const QFontMetrics metrics(font);
    const auto top = rect.top() + (rect.height() - metrics.height()) / 2;
    auto textRect = QRect(rect.left(), top, rect.width(), metrics.height());
    if (!icon.isEmpty()) {
        const auto middle = top + metrics.ascent() - metrics.capHeight() / 2.0;
        const auto lowest = std::max(rect.top(), rect.bottom() + 1 - iconSize);
        const auto y = std::clamp(qRound(middle - iconSize / 2.0), rect.top(), lowest);
        const QRect square(rect.left(), y, iconSize, iconSize);
        const auto visual = QStyle::visualRect(direction, rect, square);
        theme.icons().paint(painter, icon, visual, color);
        textRect.setLeft(rect.left() + iconSize + gap);
    }
    painter.setFont(font);
    painter.setPen(color);
    const auto wanted = QFontMetricsF(font).horizontalAdvance(text);
    const auto shown =
        wanted <= textRect.width() ? text : metrics.elidedText(text, elide, textRect.width());
    const auto alignment = direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(QStyle::visualRect(direction, rect, textRect),
                     static_cast<int>(Qt::TextSingleLine) | (alignment | Qt::AlignVCenter), shown);
}

IconAndText iconAndText(const Theme& theme, const QString& icon, const QString& text,
                        TextStyle style, QFont::Weight weight) {
    const auto size = theme.symbolSize(style);
    return {icon,
            text,
            theme.font(style, weight),
            size,
            static_cast<int>(std::lround(size * 0.4)),
            Qt::ElideRight};
}

} // namespace platform
