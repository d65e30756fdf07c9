// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QRectF>
#include <QString>

class QPainter;

namespace platform {

/// Fills a rounded rectangle; a radius of half the height makes a capsule.
void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color);

/// Draws a line along the inside of a rounded rectangle.
void strokeRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color,
                   qreal width = 1);

/// Whether a widget that got the focus for a reason shows the ring: when the keyboard brought it,
/// not the pointer or the program. A window that becomes active leaves it as it was `before`.
bool showsFocusRing(Qt::FocusReason reason, bool before);

/// Draws the ring along the inside of a rounded rectangle; in the role OnAccent, on a button that
/// is filled with the accent, a little off its edge.
void paintFocusRing(QPainter& painter, const Theme& theme, const QRectF& rect, qreal radius,
                    ColorRole role = ColorRole::FocusRing);

/// One line of text, with a symbol before it or without, as chips, menus and labels show it.
struct IconAndText {
    QString icon; ///< may be empty
    QString text;
    QFont font;
    int iconSize = 0;
    int gap = 0;
    Qt::TextElideMode elide = Qt::ElideRight;

    /// The space the line takes when nothing is cut off.
    QSize size() const;

    /// Paints the line in the vertical middle of `rect`, from its leading edge; what does not fit
    /// is elided. The symbol stands on the middle of the capital letters, but within `rect`.
    void paint(QPainter& painter, const Theme& theme, const QRect& rect, const QColor& color,
               Qt::LayoutDirection direction) const;
};

/// The line of a text style, its symbol as large as its text.
IconAndText iconAndText(const Theme& theme, const QString& icon, const QString& text,
                        TextStyle style, QFont::Weight weight);

} // namespace platform
