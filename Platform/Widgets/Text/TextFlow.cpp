// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFlow.h"

#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <limits>

namespace platform {
namespace {

constexpr qsizetype unseen = std::numeric_limits<qsizetype>::max();
constexpr std::size_t keptLayouts = 64;
constexpr qreal keptMargin = 4000; // pixels above and below what is drawn

qsizetype paragraphEnd(QStringView text, qsizetype start) {
    while (start < text.size() && !isLineBreak(text[start]))
        ++start;
    return start;
}

/// Behind the break at `end`, or the text's length.
qsizetype behindBreak(QStringView text, qsizetype end) {
    if (end >= text.size())
        return end;
    const bool pair = text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n';
    return end + (pair ? 2 : 1);
}

/// Characters that would be drawn as boxes or end a line inside a paragraph.
QString displayed(QString text) {
    const auto isControl = [](QChar c) { return c < u' ' && c != u'\t'; };
    if (std::any_of(text.cbegin(), text.cend(), isControl))
        std::replace_if(text.begin(), text.end(), isControl, QChar(u' '));
    return text;
}

} // namespace

void TextFlow::setLook(const TextLook& look) {
    const bool sameFonts = look.font == m_look.font && look.codeFont == m_look.codeFont;
    m_look = look;
    m_layouts.clear();
    if (!sameFonts) {
        m_chunks.clear();
        layOutFrom(0);
    }
}

qreal TextFlow::replaceTail(qsizetype from, const AttributedString& tail) {
    const AttributedString old = m_content.mid(from, m_content.text.size() - from);
    const qsizetype difference = firstDifference(old, tail);
    if (difference < 0 && !m_chunks.empty())
        return -1;
    const qsizetype changed = from + std::max<qsizetype>(difference, 0);
    m_content.truncate(changed);
    m_content.append(tail.mid(changed - from, tail.text.size()));
    const auto stale = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                            [&](const Chunk& c) { return c.seen <= changed; });
    const auto index = static_cast<std::size_t>(stale - m_chunks.begin());
    layOutFrom(index);
    return index < m_chunks.size() ? m_chunks[index].top : height();
}

void TextFlow::setWidth(qreal width) {
    if (width == m_width && !m_chunks.empty())
        return;
    m_width = width;
    std::vector<Chunk> old;
    old.swap(m_chunks);
    m_layouts.clear();
    m_chunks.reserve(old.size());
    for (std::size_t i = 0; i < old.size();) {
        const Chunk& chunk = old[i];
        if (chunk.first && chunk.last && chunk.lines == 1 && chunk.width <= width) {
            append(chunk);
            ++i;
            continue;
        }
        // The whole paragraph anew, for its cuts depend on the width.
        const qsizetype end = paragraphEnd(m_content.text, chunk.start);
        const qsizetype next = behindBreak(m_content.text, end);
        qsizetype start = chunk.start;
        do {
            append(layOut(start, start == chunk.start, chunk.rightToLeft, end, next));
            start = m_chunks.back().start + m_chunks.back().length;
        } while (!m_chunks.back().last);
        while (i < old.size() && old[i].start <= end && (old[i].start < next || next == end))
            ++i;
    }
}

/// Everything from one chunk on is made anew; those before it hold.
void TextFlow::layOutFrom(std::size_t chunk) {
    qsizetype start = 0;
    bool first = true;
    bool rightToLeft = false;
    if (chunk < m_chunks.size()) {
        start = m_chunks[chunk].start;
        first = m_chunks[chunk].first;
        rightToLeft = m_chunks[chunk].rightToLeft;
    } else if (!m_chunks.empty()) {
        const Chunk& last = m_chunks.back();
        start = behindBreak(m_content.text, last.start + last.length);
    }
    m_chunks.resize(chunk);
    m_layouts.erase(m_layouts.lower_bound(chunk), m_layouts.end());
    const QStringView text = m_content.text;
    while (true) {
        const qsizetype end = paragraphEnd(text, start);
        const qsizetype next = behindBreak(text, end);
        if (first)
            rightToLeft = text.mid(start, std::min(end - start, longParagraph)).isRightToLeft();
        append(layOut(start, first, rightToLeft, end, next));
        first = m_chunks.back().last;
        if (!first)
            start += m_chunks.back().length;
        else if (next == end)
            break;
        else
            start = next;
    }
}

void TextFlow::append(Chunk chunk) {
    chunk.top = height();
    chunk.widest = std::max(chunk.width, usedWidth());
    m_chunks.push_back(chunk);
}

std::unique_ptr<QTextLayout> TextFlow::shape(qsizetype start, qsizetype length,
                                             bool rightToLeft) const {
    auto layout =
        std::make_unique<QTextLayout>(displayed(m_content.text.mid(start, length)), m_look.font);
    QTextOption option(rightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(QFontMetricsF(m_look.font).horizontalAdvance(u' ') * 8);
    layout->setTextOption(option);
    layout->setFormats(m_look.formats(m_content, start, length));
    layout->setCacheEnabled(true);
    ++m_laidOut;
    return layout;
}

/// Lays a layout out in lines. A line in which another font is a little taller, for code or an
/// emoji, stands on the same grid as all others.
TextFlow::Lines TextFlow::breakLines(QTextLayout& layout) const {
    const qreal usual = m_look.lineHeight();
    const qreal ascent = std::ceil(QFontMetricsF(m_look.font).ascent());
    Lines lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(std::max<qreal>(m_width, 1));
        const bool onGrid = line.height() <= usual * 1.3;
        const qreal shift = onGrid ? ascent - std::ceil(line.ascent()) : 0;
        line.setPosition({0, lines.height + shift});
        lines.lastTop = lines.height;
        lines.height += onGrid ? usual : std::ceil(line.height());
        lines.widest = std::max(lines.widest, line.naturalTextWidth());
    }
    layout.endLayout();
    return lines;
}

/// The chunk that begins at `start` of a paragraph which ends at `end`, the next one at `next`.
TextFlow::Chunk TextFlow::layOut(qsizetype start, bool first, bool rightToLeft, qsizetype end,
                                 qsizetype next) {
    Chunk chunk{.start = start, .length = end - start, .first = first, .rightToLeft = rightToLeft};
    // A break of one CR at the text's end may become CR LF.
    const bool settled =
        next > end && (next < m_content.text.size() || m_content.text[end] == u'\n');
    chunk.seen = settled ? next : unseen;
    if (chunk.length == 0) {
        chunk.height = m_look.lineHeight();
        return chunk;
    }
    qsizetype window = longParagraph;
    while (true) {
        const bool whole = start + window >= end;
        const qsizetype length = whole ? end - start : window;
        auto layout = shape(start, length, rightToLeft);
        const Lines lines = breakLines(*layout);
        chunk.width = lines.widest;
        chunk.height = lines.height;
        chunk.lines = layout->lineCount();
        if (!whole && chunk.lines == 1) {
            window *= 2; // a very wide view, or characters without width
            continue;
        }
        if (!whole) {
            // The last line may not be complete: the next chunk begins with it.
            const QTextLine line = layout->lineAt(chunk.lines - 1);
            chunk.length = line.textStart();
            chunk.height = lines.lastTop;
            chunk.seen = start + length;
            chunk.last = false;
            --chunk.lines;
        } else if (m_layouts.size() < keptLayouts) {
            m_layouts[m_chunks.size()] = std::move(layout);
        }
        return chunk;
    }
}

QTextLayout& TextFlow::layoutOf(std::size_t index) const {
    std::unique_ptr<QTextLayout>& layout = m_layouts[index];
    if (!layout) {
        const Chunk& chunk = m_chunks[index];
        layout = shape(chunk.start, chunk.length, chunk.rightToLeft);
        breakLines(*layout);
    }
    return *layout;
}

qreal TextFlow::height() const {
    return m_chunks.empty() ? 0 : m_chunks.back().top + m_chunks.back().height;
}

qreal TextFlow::usedWidth() const {
    return m_chunks.empty() ? 0 : m_chunks.back().widest;
}

std::size_t TextFlow::chunkAt(qsizetype position) const {
    const auto behind = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                             [&](const Chunk& c) { return c.start <= position; });
    return behind == m_chunks.begin() ? 0 : static_cast<std::size_t>(behind - m_chunks.begin() - 1);
}

std::size_t TextFlow::chunkAtHeight(qreal y) const {
    const auto behind = std::partition_point(m_chunks.begin(), m_chunks.end(),
                                             [&](const Chunk& c) { return c.top <= y; });
    return behind == m_chunks.begin() ? 0 : static_cast<std::size_t>(behind - m_chunks.begin() - 1);
}

/// How far right of its layout a chunk is drawn: a layout sets text from the right against the
/// width that lines break at, the frame is often only as wide as its widest line.
qreal TextFlow::indent(const Chunk& chunk) const {
    return chunk.rightToLeft ? m_frameWidth - std::max<qreal>(m_width, 1) : 0;
}

void TextFlow::draw(QPainter& painter, const QPointF& origin, const QRectF& clip,
                    TextSpan selection) {
    const QRectF area = clip.translated(-origin);
    QTextCharFormat selected;
    selected.setBackground(m_look.selection);
    painter.setPen(m_look.text);
    for (std::size_t i = chunkAtHeight(area.top()); i < m_chunks.size(); ++i) {
        const Chunk& chunk = m_chunks[i];
        if (chunk.top > area.bottom())
            break;
        if (chunk.length == 0)
            continue;
        const QPointF corner = origin + QPointF(indent(chunk), chunk.top);
        drawCodeGrounds(painter, corner, clip, chunk);
        QList<QTextLayout::FormatRange> selections;
        const qsizetype from = std::max(selection.start, chunk.start);
        const qsizetype to = std::min(selection.end, chunk.start + chunk.length);
        if (from < to)
            selections.append(
                {static_cast<int>(from - chunk.start), static_cast<int>(to - from), selected});
        layoutOf(i).draw(&painter, corner, selections, clip);
    }
    std::erase_if(m_layouts, [&](const auto& entry) {
        const Chunk& chunk = m_chunks[entry.first];
        return chunk.top > area.bottom() + keptMargin ||
               chunk.top + chunk.height < area.top() - keptMargin;
    });
}

void TextFlow::drawCodeGrounds(QPainter& painter, const QPointF& corner, const QRectF& clip,
                               const Chunk& chunk) const {
    const QPointF origin = corner - QPointF(indent(chunk), chunk.top);
    for (std::size_t i = m_content.firstRangeEndingAfter(chunk.start); i < m_content.ranges.size();
         ++i) {
        const AttributedString::Range& range = m_content.ranges[i];
        if (range.start >= chunk.start + chunk.length)
            break;
        if (!(range.styles & AttributedString::Code))
            continue;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_look.codeGround);
        const qsizetype from = std::max(range.start, chunk.start);
        const qsizetype to = std::min(range.end(), chunk.start + chunk.length);
        for (const QRectF& rect : rects(from, to)) {
            const QRectF ground = rect.translated(origin).adjusted(-1.5, 1, 1.5, -1);
            if (ground.intersects(clip))
                painter.drawRoundedRect(ground, 4, 4);
        }
        painter.restore();
    }
}

qsizetype TextFlow::positionAt(const QPointF& point) const {
    if (m_chunks.empty() || point.y() < 0)
        return 0;
    if (point.y() >= height())
        return m_content.text.size();
    const std::size_t index = chunkAtHeight(point.y());
    const Chunk& chunk = m_chunks[index];
    if (chunk.length == 0)
        return chunk.start;
    const QTextLayout& layout = layoutOf(index);
    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine line = layout.lineAt(i);
        const bool last = i + 1 == layout.lineCount();
        if (last || point.y() - chunk.top < layout.lineAt(i + 1).y()) {
            int position = line.xToCursor(point.x() - indent(chunk));
            // Behind a line that goes on below, the nearest place on this line is before its break.
            if (!last && position == line.textStart() + line.textLength() &&
                line.textLength() > 1 && m_content.text[chunk.start + position - 1].isSpace())
                --position;
            return chunk.start + position;
        }
    }
    return chunk.start;
}

qsizetype TextFlow::characterAt(const QPointF& point) const {
    if (m_chunks.empty() || point.y() < 0 || point.y() >= height())
        return -1;
    const std::size_t index = chunkAtHeight(point.y());
    const Chunk& chunk = m_chunks[index];
    if (chunk.length == 0)
        return -1;
    const QTextLayout& layout = layoutOf(index);
    const QPointF inside = point - QPointF(indent(chunk), chunk.top);
    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine line = layout.lineAt(i);
        if (i + 1 < layout.lineCount() && inside.y() >= layout.lineAt(i + 1).y())
            continue;
        if (!line.naturalTextRect().adjusted(0, -2, 0, 4).contains(inside))
            return -1;
        const int position = line.xToCursor(inside.x(), QTextLine::CursorOnCharacter);
        return chunk.start + std::min(position, static_cast<int>(chunk.length) - 1);
    }
    return -1;
}

QRectF TextFlow::characterRect(qsizetype position) const {
    const std::size_t index = chunkAt(position);
    if (index >= m_chunks.size())
        return {};
    const Chunk& chunk = m_chunks[index];
    if (position < chunk.start + chunk.length) {
        const auto covered = rects(position, position + 1);
        if (!covered.empty())
            return covered.front();
    }
    const qreal height = m_look.lineHeight();
    if (chunk.length == 0)
        return {0, chunk.top, 1, height};
    const QTextLine line = layoutOf(index).lineAt(chunk.lines - 1);
    return {line.cursorToX(static_cast<int>(chunk.length)) + indent(chunk), chunk.top + line.y(), 1,
            line.height()};
}

std::vector<QRectF> TextFlow::rects(qsizetype start, qsizetype end) const {
    std::vector<QRectF> found;
    for (std::size_t i = chunkAt(start); i < m_chunks.size() && m_chunks[i].start < end; ++i) {
        const Chunk& chunk = m_chunks[i];
        if (chunk.length == 0)
            continue;
        const QTextLayout& layout = layoutOf(i);
        const int from = static_cast<int>(std::max(start, chunk.start) - chunk.start);
        const int to = static_cast<int>(std::min(end, chunk.start + chunk.length) - chunk.start);
        for (int j = from < to ? layout.lineForTextPosition(from).lineNumber() : chunk.lines;
             j < chunk.lines; ++j) {
            const QTextLine line = layout.lineAt(j);
            if (line.textStart() >= to)
                break;
            const int lineEnd = line.textStart() + line.textLength();
            const qreal a = line.cursorToX(std::max(from, line.textStart()));
            const qreal b = line.cursorToX(std::min(to, lineEnd));
            found.emplace_back(std::min(a, b) + indent(chunk), chunk.top + line.y(),
                               std::abs(b - a), line.height());
        }
    }
    return found;
}

} // namespace platform
