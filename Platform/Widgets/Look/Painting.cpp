// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Painting.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace platform {

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
