// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Widgets/Text/ChunkedLayout.h"

#include <QColor>
#include <QList>
#include <QPointF>
#include <QRectF>

#include <vector>

class QPainter;

namespace platform {

/// Styled text in lines, to be drawn and pointed at: where its characters stand, and what lies
/// behind them.
///
/// Points are in the coordinates of the text: (0, 0) is its upper left corner. Main thread only.
class TextFlow : public ChunkedLayout {
public:
    /// `chunkSize`: how many UTF-16 units one layout looks at.
    explicit TextFlow(qsizetype chunkSize = 3000)
        : ChunkedLayout(chunkSize) {}

    /// The width of the frame that the text is drawn in, between `usedWidth` and `width`: text that
    /// reads from the right is set against its right edge.
    void setFrameWidth(qreal width) { m_frameWidth = width; }

    /// A part of the text on a colour of its own.
    struct Mark {
        TextSpan span;
        QColor color;
    };
    /// Draws what lies in `clip`, the text's corner at `origin`, later marks over earlier ones.
    void draw(QPainter& painter, const QPointF& origin, const QRectF& clip,
              const QList<Mark>& marks);

    /// The places where a word stands that are at least partly in `clip`, in letters of either
    /// case. Looks for no more than what is drawn there.
    std::vector<TextSpan> placesOf(QStringView word, const QRectF& clip) const;

    /// The position between characters nearest to a point.
    qsizetype positionAt(const QPointF& point) const;
    /// The character under a point, none (-1) beside the text.
    qsizetype characterAt(const QPointF& point) const;
    /// Where a character stands; for a place outside of the text, its nearest end.
    QRectF characterRect(qsizetype position) const;
    /// The rectangles, one a line and as high as it, that a range of characters covers.
    std::vector<QRectF> rects(qsizetype start, qsizetype end) const;

private:
    QTextLine lineAt(std::size_t chunk, qreal y) const;
    qreal indent(const Chunk& chunk) const;
    /// `withEndBlanks`: also under the blanks at which a line wraps.
    std::vector<QRectF> rects(qsizetype start, qsizetype end, bool withEndBlanks) const;
    void drawCodeBackgrounds(QPainter& painter, const QPointF& origin, const Chunk& chunk) const;
    void drawFencedBackground(QPainter& painter, const QPointF& origin, const Chunk& chunk) const;
    bool isFenced(qsizetype position) const;

    qreal m_frameWidth = 600; // until it is known
};

} // namespace platform
