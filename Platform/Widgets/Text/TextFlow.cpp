// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFlow.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace platform {

/// The line of a chunk at a height of the text.
QTextLine TextFlow::lineAt(std::size_t index, qreal y) const {
    const QTextLayout& layout = layoutOf(index);
    int line = 0;
    while (line + 1 < layout.lineCount() && y - chunks()[index].top >= layout.lineAt(line + 1).y())
        ++line;
    return layout.lineAt(line);
}

/// How far right of its layout a chunk is drawn: by the margin, and a layout sets text from the
/// right against the width that lines break at, which is often more than the frame's.
qreal TextFlow::indent(const Chunk& chunk) const {
    return format().margin + (chunk.rightToLeft ? m_frameWidth - width() : 0);
}

qsizetype TextFlow::positionAt(const QPointF& point) const {
    if (point.y() < 0)
        return 0;
    if (point.y() >= height())
        return content().text.size();
    const std::size_t index = lastChunkFrom(&Chunk::top, point.y());
    const Chunk& chunk = chunks()[index];
    const QTextLine line = lineAt(index, point.y());
    const qsizetype position = chunk.start + line.xToCursor(point.x() - indent(chunk));
    // Behind a line that goes on below, the nearest place on this line is before its break.
    const qsizetype end = chunk.start + line.textStart() + line.textLength();
    const bool goesOn = end < chunk.end() || !chunk.last;
    const bool isBehind = position == end && line.textLength() > 1;
    return goesOn && isBehind && content().text[position - 1].isSpace() ? position - 1 : position;
}

qsizetype TextFlow::characterAt(const QPointF& point) const {
    if (point.y() < 0 || point.y() >= height())
        return -1;
    const std::size_t index = lastChunkFrom(&Chunk::top, point.y());
    const Chunk& chunk = chunks()[index];
    const QTextLine line = lineAt(index, point.y());
    const QPointF inside = point - QPointF(indent(chunk), chunk.top);
    if (!line.naturalTextRect().adjusted(0, -2, 0, 4).contains(inside))
        return -1;
    const int position = line.xToCursor(inside.x(), QTextLine::CursorOnCharacter);
    return std::min(chunk.start + position, chunk.end() - 1);
}

QRectF TextFlow::characterRect(qsizetype position) const {
    position = std::clamp<qsizetype>(position, 0, content().text.size());
    const std::size_t index = lastChunkFrom(&Chunk::start, position);
    const Chunk& chunk = chunks()[index];
    if (position < chunk.end())
        return rects(position, position + 1).front();
    // A break, or the text's end: behind the last line.
    const QTextLayout& layout = layoutOf(index);
    const QTextLine line = layout.lineAt(layout.lineCount() - 1);
    const auto [top, height] = format().extentOf(line);
    return {line.cursorToX(static_cast<int>(chunk.lines.length)) + indent(chunk), chunk.top + top,
            1, height};
}

std::vector<QRectF> TextFlow::rects(qsizetype start, qsizetype end) const {
    return rects(start, end, true);
}

std::vector<QRectF> TextFlow::rects(qsizetype start, qsizetype end, bool withEndBlanks) const {
    std::vector<QRectF> found;
    for (std::size_t i = lastChunkFrom(&Chunk::start, start);
         i < chunks().size() && chunks()[i].start < end; ++i) {
        const Chunk& chunk = chunks()[i];
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
                   content().text[chunk.start + lineEnd - 1].isSpace())
                --lineEnd;
            const qreal a = line.cursorToX(lineStart);
            const qreal b = line.cursorToX(lineEnd);
            const auto [top, height] = format().extentOf(line);
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
    painter.setPen(format().text);
    for (std::size_t i = lastChunkFrom(&Chunk::top, area.top()); i < chunks().size(); ++i) {
        const Chunk& chunk = chunks()[i];
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
    keepLayoutsNear(area.top(), area.bottom());
}

std::vector<TextSpan> TextFlow::placesOf(QStringView word, const QRectF& clip) const {
    std::vector<TextSpan> places;
    if (word.isEmpty())
        return places;
    const qsizetype first = positionAt(clip.topLeft()) - word.size();
    const qsizetype last = positionAt(clip.bottomRight()) + word.size();
    const QStringView text = QStringView(content().text).left(last);
    qsizetype at = text.indexOf(word, std::max<qsizetype>(0, first), Qt::CaseInsensitive);
    for (; at >= 0; at = text.indexOf(word, at + word.size(), Qt::CaseInsensitive))
        places.push_back({at, at + word.size()});
    return places;
}

bool TextFlow::isFenced(qsizetype position) const {
    const std::size_t range = content().firstRangeEndingAfter(position);
    return range < content().ranges.size() && content().ranges[range].start <= position &&
           content().ranges[range].styles & AttributedString::Fenced;
}

/// Lines of a block of code stand on one background as wide as the frame, rounded at its ends.
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
                radius, format().codeBackground);
    painter.restore();
}

void TextFlow::drawCodeBackgrounds(QPainter& painter, const QPointF& origin,
                                   const Chunk& chunk) const {
    for (const auto& range : content().mid(chunk.start, chunk.lines.length).ranges) {
        if (!(range.styles & AttributedString::Code) || range.styles & AttributedString::Fenced)
            continue;
        const qsizetype from = chunk.start + range.start;
        for (const QRectF& rect : rects(from, from + range.length, false))
            fillRounded(painter, rect.translated(origin).adjusted(-2.5, 1.5, 2.5, -1.5), 4,
                        format().codeBackground);
    }
}

} // namespace platform
