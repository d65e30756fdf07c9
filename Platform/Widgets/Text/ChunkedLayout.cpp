// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/ChunkedLayout.h"

#include <limits>
#include <utility>

namespace platform {

constexpr qsizetype toTheEnd = std::numeric_limits<qsizetype>::max();
constexpr std::size_t keptLayouts = 64;
constexpr qreal keptMargin = 4000; // pixels above and below what is drawn

ChunkedLayout::ChunkedLayout(qsizetype chunkSize)
    : m_chunkSize(chunkSize) {
    layOutFrom(0);
}

void ChunkedLayout::setFormat(const TextFormat& format) {
    const bool sameLines = format.font == m_format.font && format.codeFont == m_format.codeFont &&
                           format.margin == m_format.margin;
    m_format = format;
    m_layouts.clear();
    if (!sameLines)
        layOutFrom(0);
}

qreal ChunkedLayout::replaceTail(qsizetype from, const AttributedString& tail) {
    const AttributedString old = m_content.mid(from, m_content.text.size() - from);
    const qsizetype difference = firstDifference(old, tail);
    if (difference < 0)
        return -1;
    const qsizetype changed = from + difference;
    m_content.truncate(from);
    m_content.append(tail);
    const auto stale = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                            [&](const Chunk& c) { return c.seen <= changed; });
    const auto index = static_cast<std::size_t>(stale - m_chunks.begin());
    layOutFrom(index);
    return m_chunks[index].top;
}

void ChunkedLayout::setWidth(qreal width) {
    if (std::exchange(m_width, width) == width)
        return;
    const std::vector<Chunk> old = std::exchange(m_chunks, {});
    m_layouts.clear();
    m_chunks.reserve(old.size());
    for (std::size_t i = 0; i < old.size();) {
        const Chunk& chunk = old[i];
        if (chunk.first && chunk.last && chunk.lines.count == 1 &&
            chunk.lines.width <= lineWidth()) {
            append(chunk);
            ++i;
            continue;
        }
        // The whole paragraph anew, for its cuts depend on the width.
        const Paragraph paragraph = paragraphAt(chunk.start);
        layOut(chunk.start, paragraph, true);
        while (i < old.size() && (old[i].start < paragraph.next || paragraph.next == paragraph.end))
            ++i;
    }
}

ChunkedLayout::Paragraph ChunkedLayout::paragraphAt(qsizetype start) const {
    const QStringView text = m_content.text;
    Paragraph paragraph{start, start, false};
    while (paragraph.end < text.size() && !isLineBreak(text[paragraph.end]))
        ++paragraph.end;
    const QStringView behind = text.mid(paragraph.end);
    paragraph.next = paragraph.end + (behind.isEmpty() ? 0 : behind.startsWith(u"\r\n") ? 2 : 1);
    const QStringView beginning = text.mid(start, std::min(paragraph.end - start, m_chunkSize));
    paragraph.rightToLeft = beginning.isRightToLeft();
    return paragraph;
}

/// Everything from one chunk on is made anew; those before it hold.
void ChunkedLayout::layOutFrom(std::size_t chunk) {
    const Chunk from = chunk < m_chunks.size() ? m_chunks[chunk] : Chunk();
    m_chunks.resize(chunk);
    m_layouts.erase(m_layouts.lower_bound(chunk), m_layouts.end());
    Paragraph paragraph = paragraphAt(from.start);
    if (!from.first)
        paragraph.rightToLeft = from.rightToLeft; // as its beginning says
    layOut(from.start, paragraph, from.first);
    while (paragraph.next > paragraph.end) {
        const qsizetype start = paragraph.next;
        paragraph = paragraphAt(start);
        layOut(start, paragraph, true);
    }
}

/// Adds the chunks of a paragraph from `start`, its own or that of its chunk which begins there.
void ChunkedLayout::layOut(qsizetype start, const Paragraph& paragraph, bool first) {
    qsizetype window = m_chunkSize;
    while (true) {
        Chunk chunk{.start = start, .first = first, .rightToLeft = paragraph.rightToLeft};
        chunk.shaped = std::min(window, paragraph.end - start);
        chunk.last = start + chunk.shaped == paragraph.end;
        std::unique_ptr<QTextLayout> layout = shape(chunk);
        chunk.lines = TextLines::make(*layout, m_format, lineWidth(), !chunk.last);
        if (!chunk.last && chunk.lines.length == chunk.shaped) {
            window *= 2; // one line: a very wide view, or characters without width
            continue;
        }
        if (!chunk.last) // and the paragraph goes on there
            chunk.seen = start + chunk.shaped + 1;
        else if (paragraph.next == paragraph.end)
            chunk.seen = toTheEnd;
        else // a break of one CR may become CR LF
            chunk.seen = paragraph.end + (m_content.text[paragraph.end] == u'\r' ? 2 : 1);
        if (chunk.last && m_layouts.size() < keptLayouts)
            m_layouts[m_chunks.size()] = std::move(layout);
        append(chunk);
        if (chunk.last)
            return;
        start = chunk.end();
        first = false;
        window = m_chunkSize;
    }
}

void ChunkedLayout::append(Chunk chunk) {
    chunk.top = height();
    chunk.widest = std::max(chunk.lines.width, m_chunks.empty() ? 0 : m_chunks.back().widest);
    if (!m_chunks.empty())
        chunk.seen = std::max(chunk.seen, m_chunks.back().seen); // in order, to be searched
    m_chunks.push_back(chunk);
}

std::unique_ptr<QTextLayout> ChunkedLayout::shape(const Chunk& chunk) const {
    return m_format.layout(m_content.mid(chunk.start, chunk.shaped), chunk.rightToLeft);
}

QTextLayout& ChunkedLayout::layoutOf(std::size_t index) const {
    std::unique_ptr<QTextLayout>& layout = m_layouts[index];
    if (!layout) {
        layout = shape(m_chunks[index]);
        TextLines::make(*layout, m_format, lineWidth(), false, m_chunks[index].lines.count);
    }
    return *layout;
}

void ChunkedLayout::keepLayoutsNear(qreal top, qreal bottom) {
    std::erase_if(
        m_layouts,
        [&](const auto& entry) {
            const Chunk& chunk = m_chunks[entry.first];
            return chunk.top > bottom + keptMargin || chunk.bottom() < top - keptMargin;
        });
}

qreal ChunkedLayout::height() const {
    return m_chunks.empty() ? 0 : m_chunks.back().bottom();
}

qreal ChunkedLayout::usedWidth() const {
    return 2 * m_format.margin + (m_chunks.empty() ? 0 : m_chunks.back().widest);
}

} // namespace platform
