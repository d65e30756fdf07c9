// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

#include <vector>

class QWidget;

namespace tests {

/// What a widget and its children ask to be painted. Unlike pixels it does not depend on the fonts,
/// the hinting and the smoothing of the machine.
class PaintRecorder {
public:
    /// A run of text in one format, or a shape.
    struct Painted {
        QString text; ///< Empty for a shape.
        QColor color; ///< Of the pen for text and lines, of the brush for areas; with the opacity.
        QRectF rect;  ///< In the widget's coordinates.
    };

    /// Renders the widget, without its window's background.
    explicit PaintRecorder(QWidget& widget);

    /// All that was asked for, in its order.
    const std::vector<Painted>& all() const { return m_painted; }
    /// Whether text or a shape in a colour has its centre in an area.
    bool hasColor(const QColor& color, const QRectF& area) const;
    /// All text, run after run.
    QString text() const;
    /// What all text takes up; empty without text.
    QRectF textRect() const;

private:
    std::vector<Painted> m_painted;
};

} // namespace tests
