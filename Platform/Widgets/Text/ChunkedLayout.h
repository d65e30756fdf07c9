// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Widgets/Text/TextFormat.h"

#include <QTextLayout>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace platform {

/// Styled text in lines of a given width, made for text that grows at its end.
///
/// The text is held in chunks: a paragraph each, and a paragraph beyond the chunk size in several,
/// cut where a line begins. A change lays out the chunks from the one before it on, so its cost
/// follows what changed. Only chunks near what was drawn last keep their glyphs.
///
/// Positions count UTF-16 units. Main thread only.
class ChunkedLayout {
public:
    const AttributedString& content() const { return m_content; }
    const TextFormat& format() const { return m_format; }

    /// Fonts, colours and margin; lays everything out again only where a line may differ.
    void setFormat(const TextFormat& format);

    /// Replaces everything from `from` on. Returns the height from which on the text looks
    /// different, or none (-1) when it does not.
    qreal replaceTail(qsizetype from, const AttributedString& tail);

    /// The width of lines and margins. Lines that fit either way are not laid out again.
    void setWidth(qreal width);
    qreal width() const { return m_width; }

    qreal height() const;
    /// That of the widest line and of the margins: what the text needs when its lines break at
    /// `width`.
    qreal usedWidth() const;

protected:
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

    /// `chunkSize`: how many UTF-16 units one layout looks at.
    explicit ChunkedLayout(qsizetype chunkSize);

    const std::vector<Chunk>& chunks() const { return m_chunks; }
    /// The last chunk of those that stand at a place (their `start` or `top`) or before it, or the
    /// first one.
    template <class Value>
    std::size_t lastChunkFrom(Value Chunk::*place, Value value) const;
    /// A chunk with its glyphs.
    QTextLayout& layoutOf(std::size_t chunk) const;
    /// Forgets the glyphs of the chunks that are far from this part of the text.
    void keepLayoutsNear(qreal top, qreal bottom);

private:
    struct Paragraph {
        qsizetype end = 0;  // before its break
        qsizetype next = 0; // behind it; the same for the text's last paragraph
        bool rightToLeft = false;
    };

    qreal lineWidth() const { return std::max<qreal>(m_width - 2 * m_format.margin, 1); }
    Paragraph paragraphAt(qsizetype start) const;
    void layOutFrom(std::size_t chunk);
    void layOut(qsizetype start, const Paragraph& paragraph, bool first);
    void append(Chunk chunk);
    std::unique_ptr<QTextLayout> shape(const Chunk& chunk) const;

    const qsizetype m_chunkSize;
    AttributedString m_content;
    TextFormat m_format;
    qreal m_width = 600; // until it is known
    std::vector<Chunk> m_chunks;
    mutable std::map<std::size_t, std::unique_ptr<QTextLayout>> m_layouts;
};

template <class Value>
std::size_t ChunkedLayout::lastChunkFrom(Value Chunk::*place, Value value) const {
    const auto behind = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                             [&](const Chunk& c) { return c.*place <= value; });
    return behind == m_chunks.begin() ? 0 : static_cast<std::size_t>(behind - m_chunks.begin() - 1);
}

} // namespace platform
