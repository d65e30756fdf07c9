// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Widgets/Text/TextBoundaries.h"
#include "Platform/Widgets/Text/TextLook.h"

#include <QPointF>
#include <QRectF>
#include <QTextLayout>

#include <map>
#include <memory>
#include <vector>

class QPainter;

namespace platform {

/// Styled text laid out in lines of a given width, made for text that grows at its end.
///
/// The text is held in chunks: a paragraph each, and a paragraph beyond `longParagraph` in several,
/// cut where a line begins. A change lays out the chunks from the one before it on, so its cost
/// follows what changed and not the length of the text or of its last paragraph. Only chunks near
/// what was drawn last keep their glyphs; of the others only the height is kept.
///
/// Points are in the coordinates of the text: (0, 0) is its upper left corner. Positions count
/// UTF-16 units. Main thread only.
class TextFlow {
public:
    /// In UTF-16 units; also how much text one layout looks at.
    static constexpr qsizetype longParagraph = 3000;

    const AttributedString& content() const { return m_content; }
    const TextLook& look() const { return m_look; }

    /// Fonts and colours; lays everything out again only where a font differs.
    void setLook(const TextLook& look);

    /// Replaces everything from `from` on. Returns the height from which on the text looks
    /// different, or none (-1) when it does not.
    qreal replaceTail(qsizetype from, const AttributedString& tail);

    /// The width to break lines at. Lines that fit either way are not laid out again.
    void setWidth(qreal width);
    qreal width() const { return m_width; }

    /// The height of all lines.
    qreal height() const;
    /// The width of the widest line: what the text needs when its lines break at `width`.
    qreal usedWidth() const;

    /// The width of the frame that the text is drawn in, between `usedWidth` and `width`: text that
    /// reads from the right is set against its right edge.
    void setFrameWidth(qreal width) { m_frameWidth = width; }

    /// Draws what lies in `clip`, the text's corner at `origin`.
    void draw(QPainter& painter, const QPointF& origin, const QRectF& clip, TextSpan selection);

    /// The position between characters nearest to a point.
    qsizetype positionAt(const QPointF& point) const;
    /// The character under a point, none (-1) beside the text.
    qsizetype characterAt(const QPointF& point) const;
    /// Where a character stands.
    QRectF characterRect(qsizetype position) const;
    /// The rectangles, one a line, that a range of characters covers.
    std::vector<QRectF> rects(qsizetype start, qsizetype end) const;

    /// How many chunks keep their glyphs now.
    std::size_t liveChunks() const { return m_layouts.size(); }
    /// How many chunks have been laid out since the flow was made: what a change has cost.
    std::size_t laidOut() const { return m_laidOut; }

private:
    struct Chunk {
        qsizetype start = 0;
        qsizetype length = 0; // without the break that ends the paragraph
        qsizetype seen = 0;   // the chunk holds as long as no character before this one changes
        bool first = true;    // of its paragraph
        bool last = true;     // of its paragraph
        bool rightToLeft = false;
        int lines = 1;
        qreal top = 0;
        qreal height = 0;
        qreal width = 0;  // of its widest line
        qreal widest = 0; // of the widest line up to and with this chunk
    };

    void layOutFrom(std::size_t chunk);
    void append(Chunk chunk);
    std::unique_ptr<QTextLayout> shape(qsizetype start, qsizetype length, bool rightToLeft) const;
    Chunk layOut(qsizetype start, bool first, bool rightToLeft, qsizetype paragraphEnd,
                 qsizetype next);
    struct Lines {
        qreal height = 0;
        qreal lastTop = 0; // of the last line
        qreal widest = 0;
    };
    Lines breakLines(QTextLayout& layout) const;
    QTextLayout& layoutOf(std::size_t chunk) const;
    std::size_t chunkAt(qsizetype position) const;
    std::size_t chunkAtHeight(qreal y) const;
    qreal indent(const Chunk& chunk) const;
    void drawCodeGrounds(QPainter& painter, const QPointF& origin, const QRectF& clip,
                         const Chunk& chunk) const;

    AttributedString m_content;
    TextLook m_look;
    qreal m_width = 600; // until it is known
    qreal m_frameWidth = 600;
    std::vector<Chunk> m_chunks;
    mutable std::map<std::size_t, std::unique_ptr<QTextLayout>> m_layouts;
    mutable std::size_t m_laidOut = 0;
};

} // namespace platform
