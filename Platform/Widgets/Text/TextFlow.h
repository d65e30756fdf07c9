// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Widgets/Text/TextFormat.h"
#include "Platform/Widgets/Text/TextSpan.h"

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
/// The text is held in chunks: a paragraph each, and a paragraph beyond the chunk size in several,
/// cut where a line begins. A change lays out the chunks from the one before it on, so its cost
/// follows what changed. Only chunks near what was drawn last keep their glyphs.
///
/// Points are in the coordinates of the text: (0, 0) is its upper left corner. Positions count
/// UTF-16 units. Main thread only.
class TextFlow {
public:
    /// `chunkSize`: how many UTF-16 units one layout looks at.
    explicit TextFlow(qsizetype chunkSize = 3000);

    const AttributedString& content() const { return m_content; }
    const TextFormat& format() const { return m_format; }

    /// Fonts and colours; lays everything out again only where a font differs.
    void setFormat(const TextFormat& format);

    /// Replaces everything from `from` on. Returns the height from which on the text looks
    /// different, or none (-1) when it does not.
    qreal replaceTail(qsizetype from, const AttributedString& tail);

    /// The width to break lines at, at least 1. Lines that fit either way are not laid out again.
    void setWidth(qreal width);
    qreal width() const { return m_width; }

    qreal height() const;
    /// The width of the widest line: what the text needs when its lines break at `width`.
    qreal usedWidth() const;

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

    /// The position between characters nearest to a point.
    qsizetype positionAt(const QPointF& point) const;
    /// The character under a point, none (-1) beside the text.
    qsizetype characterAt(const QPointF& point) const;
    /// Where a character stands; for a place outside of the text, its nearest end.
    QRectF characterRect(qsizetype position) const;
    /// The rectangles, one a line and as high as it, that a range of characters covers.
    std::vector<QRectF> rects(qsizetype start, qsizetype end) const;

private:
    struct Paragraph {
        qsizetype end = 0;  // before its break
        qsizetype next = 0; // behind it; the same for the text's last paragraph
        bool rightToLeft = false;
    };
    struct Chunk {
        qsizetype start = 0;
        // The text that its lines were made from. In a long paragraph it reaches beyond them, for
        // where a line ends can depend on what follows it.
        qsizetype shaped = 0;
        qsizetype seen = 0; // the chunk holds as long as no character before this one changes
        bool first = true;  // of its paragraph
        bool last = true;   // of its paragraph
        bool rightToLeft = false;
        TextLines lines = {}; // all that is drawn and asked for, and no line more
        qreal top = 0;
        qreal widest = 0; // of the lines up to and with this chunk

        qsizetype end() const { return start + lines.length; }
        qreal bottom() const { return top + lines.height; }
    };

    Paragraph paragraphAt(qsizetype start) const;
    void layOutFrom(std::size_t chunk);
    void layOut(qsizetype start, const Paragraph& paragraph, bool first);
    void append(Chunk chunk);
    std::unique_ptr<QTextLayout> shape(const Chunk& chunk) const;
    QTextLayout& layoutOf(std::size_t chunk) const;
    QTextLine lineAt(std::size_t chunk, qreal y) const;
    template <class Value>
    std::size_t lastChunkFrom(Value Chunk::*place, Value value) const;
    qreal indent(const Chunk& chunk) const;
    /// `withEndBlanks`: also under the blanks at which a line wraps.
    std::vector<QRectF> rects(qsizetype start, qsizetype end, bool withEndBlanks) const;
    void drawCodeBackgrounds(QPainter& painter, const QPointF& origin, const Chunk& chunk) const;
    void drawFencedBackground(QPainter& painter, const QPointF& origin, const Chunk& chunk) const;
    bool isFenced(qsizetype position) const;

    const qsizetype m_chunkSize;
    AttributedString m_content;
    TextFormat m_format;
    qreal m_width = 600; // until it is known
    qreal m_frameWidth = 600;
    std::vector<Chunk> m_chunks;
    mutable std::map<std::size_t, std::unique_ptr<QTextLayout>> m_layouts;
};

} // namespace platform
