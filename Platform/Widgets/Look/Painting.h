// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QColor>
#include <QPalette>
#include <QPixmap>
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

/// The colours of the text in a field, and of what is selected there, over those of `palette`.
QPalette fieldPalette(const Theme& theme, QPalette palette);

/// Draws what a field for text stands on, with its border and, where that is shown, its ring.
void paintField(QPainter& painter, const Theme& theme, const QRectF& rect, qreal radius,
                bool showsFocusRing);

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
