// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFlow.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace platform {

constexpr qsizetype toTheEnd = std::numeric_limits<qsizetype>::max();
constexpr std::size_t keptLayouts = 64;
constexpr qreal keptMargin = 4000; // pixels above and below what is drawn

TextFlow::TextFlow(qsizetype chunkSize)
    : m_chunkSize(chunkSize) {
    layOutFrom(0);
}

void TextFlow::setFormat(const TextFormat& format) {
    const bool sameFonts = format.font == m_format.font && format.codeFont == m_format.codeFont;
    m_format = format;
    m_layouts.clear();
    if (!sameFonts)
        layOutFrom(0);
}

qreal TextFlow::replaceTail(qsizetype from, const AttributedString& tail) {
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

void TextFlow::setWidth(qreal width) {
    width = std::max<qreal>(width, 1);
    if (std::exchange(m_width, width) == width)
        return;
    const std::vector<Chunk> old = std::exchange(m_chunks, {});
    m_layouts.clear();
    m_chunks.reserve(old.size());
    for (std::size_t i = 0; i < old.size();) {
        const Chunk& chunk = old[i];
        if (chunk.first && chunk.last && chunk.lines.count == 1 && chunk.lines.width <= width) {
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

TextFlow::Paragraph TextFlow::paragraphAt(qsizetype start) const {
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
void TextFlow::layOutFrom(std::size_t chunk) {
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
void TextFlow::layOut(qsizetype start, const Paragraph& paragraph, bool first) {
    qsizetype window = m_chunkSize;
    while (true) {
        Chunk chunk{.start = start, .first = first, .rightToLeft = paragraph.rightToLeft};
        chunk.shaped = std::min(window, paragraph.end - start);
        chunk.last = start + chunk.shaped == paragraph.end;
        std::unique_ptr<QTextLayout> layout = shape(chunk);
        chunk.lines = TextLines::make(*layout, m_format, m_width, !chunk.last);
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

void TextFlow::append(Chunk chunk) {
    chunk.top = height();
    chunk.widest = std::max(chunk.lines.width, usedWidth());
    if (!m_chunks.empty())
        chunk.seen = std::max(chunk.seen, m_chunks.back().seen); // in order, to be searched
    m_chunks.push_back(chunk);
}

std::unique_ptr<QTextLayout> TextFlow::shape(const Chunk& chunk) const {
    return m_format.layout(m_content.mid(chunk.start, chunk.shaped), chunk.rightToLeft);
}

QTextLayout& TextFlow::layoutOf(std::size_t index) const {
    std::unique_ptr<QTextLayout>& layout = m_layouts[index];
    if (!layout) {
        layout = shape(m_chunks[index]);
        TextLines::make(*layout, m_format, m_width, false, m_chunks[index].lines.count);
    }
    return *layout;
}

// Geometry

qreal TextFlow::height() const {
    return m_chunks.empty() ? 0 : m_chunks.back().bottom();
}

qreal TextFlow::usedWidth() const {
    return m_chunks.empty() ? 0 : m_chunks.back().widest;
}

/// The last chunk of those that stand at a place or before it, or the first one.
template <class Value>
std::size_t TextFlow::lastChunkFrom(Value Chunk::*place, Value value) const {
    const auto behind = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                             [&](const Chunk& c) { return c.*place <= value; });
    return behind == m_chunks.begin() ? 0 : static_cast<std::size_t>(behind - m_chunks.begin() - 1);
}

/// The line of a chunk at a height of the text.
QTextLine TextFlow::lineAt(std::size_t index, qreal y) const {
    const QTextLayout& layout = layoutOf(index);
    int line = 0;
    while (line + 1 < layout.lineCount() && y - m_chunks[index].top >= layout.lineAt(line + 1).y())
        ++line;
    return layout.lineAt(line);
}

/// How far right of its layout a chunk is drawn: a layout sets text from the right against the
/// width that lines break at, which is often more than the frame's.
qreal TextFlow::indent(const Chunk& chunk) const {
    return chunk.rightToLeft ? m_frameWidth - m_width : 0;
}

qsizetype TextFlow::positionAt(const QPointF& point) const {
    if (point.y() < 0)
        return 0;
    if (point.y() >= height())
        return m_content.text.size();
    const std::size_t index = lastChunkFrom(&Chunk::top, point.y());
    const Chunk& chunk = m_chunks[index];
    const QTextLine line = lineAt(index, point.y());
    const qsizetype position = chunk.start + line.xToCursor(point.x() - indent(chunk));
    // Behind a line that goes on below, the nearest place on this line is before its break.
    const qsizetype end = chunk.start + line.textStart() + line.textLength();
    const bool goesOn = end < chunk.end() || !chunk.last;
    const bool isBehind = position == end && line.textLength() > 1;
    return goesOn && isBehind && m_content.text[position - 1].isSpace() ? position - 1 : position;
}

qsizetype TextFlow::characterAt(const QPointF& point) const {
    if (point.y() < 0 || point.y() >= height())
        return -1;
    const std::size_t index = lastChunkFrom(&Chunk::top, point.y());
    const Chunk& chunk = m_chunks[index];
    const QTextLine line = lineAt(index, point.y());
    const QPointF inside = point - QPointF(indent(chunk), chunk.top);
    if (!line.naturalTextRect().adjusted(0, -2, 0, 4).contains(inside))
        return -1;
    const int position = line.xToCursor(inside.x(), QTextLine::CursorOnCharacter);
    return std::min(chunk.start + position, chunk.end() - 1);
}

QRectF TextFlow::characterRect(qsizetype position) const {
    position = std::clamp<qsizetype>(position, 0, m_content.text.size());
    const std::size_t index = lastChunkFrom(&Chunk::start, position);
    const Chunk& chunk = m_chunks[index];
    if (position < chunk.end())
        return rects(position, position + 1).front();
    // A break, or the text's end: behind the last line.
    const QTextLayout& layout = layoutOf(index);
    const QTextLine line = layout.lineAt(layout.lineCount() - 1);
    const auto [top, height] = m_format.extentOf(line);
    return {line.cursorToX(static_cast<int>(chunk.lines.length)) + indent(chunk), chunk.top + top,
            1, height};
}

std::vector<QRectF> TextFlow::rects(qsizetype start, qsizetype end) const {
    return rects(start, end, true);
}

std::vector<QRectF> TextFlow::rects(qsizetype start, qsizetype end, bool withEndBlanks) const {
    std::vector<QRectF> found;
    for (std::size_t i = lastChunkFrom(&Chunk::start, start);
         i < m_chunks.size() && m_chunks[i].start < end; ++i) {
        const Chunk& chunk = m_chunks[i];
        const int from = static_cast<int>(std::max(start, chunk.start) - chunk.start);
        const int to = static_cast<int>(std::min(end, chunk.end()) - chunk.start);
        if (from >= to)
            continue;
        const QTextLayout& layout = layoutOf(i);
        for (int j = layout.lineForTextPosition(from).lineNumber(); j < layout.lineCount(); ++j) {
            const QTextLine line = layout.lineAt(j);
            const int lineStart = std::max(from, line.textStart());
            int lineEnd = std::min(to, line.textStart() + line.textLength());
            if (line.textStart() >= to)
                break;
            while (!withEndBlanks && lineEnd < to && lineEnd > lineStart &&
                   m_content.text[chunk.start + lineEnd - 1].isSpace())
                --lineEnd;
            const qreal a = line.cursorToX(lineStart);
            const qreal b = line.cursorToX(lineEnd);
            const auto [top, height] = m_format.extentOf(line);
            found.emplace_back(std::min(a, b) + indent(chunk), chunk.top + top, std::abs(b - a),
                               height);
        }
    }
    return found;
}

// Drawing

void TextFlow::draw(QPainter& painter, const QPointF& origin, const QRectF& clip,
                    const QList<Mark>& marks) {
    const QRectF area = clip.translated(-origin);
    painter.setPen(m_format.text);
    for (std::size_t i = lastChunkFrom(&Chunk::top, area.top()); i < m_chunks.size(); ++i) {
        const Chunk& chunk = m_chunks[i];
        if (chunk.top > area.bottom())
            break;
        drawFencedBackground(painter, origin, chunk);
        drawCodeBackgrounds(painter, origin, chunk);
        for (const Mark& mark : marks) {
            const qsizetype from = std::max(mark.span.start, chunk.start);
            const qsizetype to = std::min(mark.span.end, chunk.end());
            if (from < to)
                for (const QRectF& rect : rects(from, to))
                    painter.fillRect(rect.translated(origin), mark.color);
        }
        layoutOf(i).draw(&painter, origin + QPointF(indent(chunk), chunk.top), {}, clip);
    }
    std::erase_if(m_layouts, [&](const auto& entry) {
        const Chunk& chunk = m_chunks[entry.first];
        return chunk.top > area.bottom() + keptMargin || chunk.bottom() < area.top() - keptMargin;
    });
}

bool TextFlow::isFenced(qsizetype position) const {
    const std::size_t range = m_content.firstRangeEndingAfter(position);
    return range < m_content.ranges.size() && m_content.ranges[range].start <= position &&
           m_content.ranges[range].styles & AttributedString::Fenced;
}

/// Lines of a block of code stand on one background as wide as the text, rounded at its ends.
void TextFlow::drawFencedBackground(QPainter& painter, const QPointF& origin,
                                    const Chunk& chunk) const {
    if (!isFenced(chunk.start))
        return;
    constexpr qreal radius = 4;
    const QRectF lines(origin + QPointF(0, chunk.top), QSizeF(m_frameWidth, chunk.lines.height));
    const bool goesOnAbove = chunk.start > 0 && isFenced(chunk.start - 1);
    const bool goesOnBelow = isFenced(chunk.end());
    painter.save();
    painter.setClipRect(lines, Qt::IntersectClip);
    fillRounded(painter, lines.adjusted(0, goesOnAbove ? -radius : 0, 0, goesOnBelow ? radius : 0),
                radius, m_format.codeBackground);
    painter.restore();
}

void TextFlow::drawCodeBackgrounds(QPainter& painter, const QPointF& origin,
                                   const Chunk& chunk) const {
    for (const auto& range : m_content.mid(chunk.start, chunk.lines.length).ranges) {
        if (!(range.styles & AttributedString::Code) || range.styles & AttributedString::Fenced)
            continue;
        const qsizetype from = chunk.start + range.start;
        for (const QRectF& rect : rects(from, from + range.length, false))
            fillRounded(painter, rect.translated(origin).adjusted(-2.5, 1.5, 2.5, -1.5), 4,
                        m_format.codeBackground);
    }
}

} // namespace platform
