// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFormat.h"

#include "Platform/Widgets/Text/TextLinks.h"

#include <QFontMetricsF>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace platform {
namespace {

/// Characters that would be drawn as boxes or end a line inside a paragraph.
QString displayed(QString text) {
    const auto isControl = [](QChar c) { return c < u' ' && c != u'\t'; };
    if (std::any_of(text.cbegin(), text.cend(), isControl))
        std::replace_if(text.begin(), text.end(), isControl, QChar(u' '));
    return text;
}

} // namespace

std::unique_ptr<QTextLayout> TextFormat::layout(const AttributedString& content, qsizetype start,
                                                qsizetype length, bool rightToLeft) const {
    auto layout = std::make_unique<QTextLayout>(displayed(content.text.mid(start, length)), font);
    QTextOption option(rightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(QFontMetricsF(font).horizontalAdvance(u' ') * 8);
    layout->setTextOption(option);
    layout->setFormats(formats(content, start, length));
    layout->setCacheEnabled(true);
    return layout;
}

QList<QTextLayout::FormatRange> TextFormat::formats(const AttributedString& content,
                                                    qsizetype start, qsizetype length) const {
    QList<QTextLayout::FormatRange> formats;
    const qsizetype end = start + length;
    for (std::size_t i = content.firstRangeEndingAfter(start); i < content.ranges.size(); ++i) {
        const AttributedString::Range& range = content.ranges[i];
        if (range.start >= end)
            break;
        const qsizetype from = std::max(range.start, start);
        QTextCharFormat format;
        if (range.styles & AttributedString::Code)
            format.setFont(codeFont);
        if (range.styles & AttributedString::Strong)
            format.setFontWeight(QFont::Bold);
        if (range.styles & AttributedString::Emphasis)
            format.setFontItalic(true);
        if (range.styles & AttributedString::Strikethrough)
            format.setFontStrikeOut(true);
        if ((range.styles & AttributedString::Link) && openableAddress(range.target)) {
            format.setForeground(link);
            format.setFontUnderline(true);
        }
        formats.append({static_cast<int>(from - start),
                        static_cast<int>(std::min(range.end(), end) - from), format});
    }
    return formats;
}

qreal TextFormat::lineHeight() const {
    return std::ceil(QFontMetricsF(font).lineSpacing());
}

TextLines TextLines::make(QTextLayout& layout, const TextFormat& format, qreal width,
                          bool textGoesOn, int maximum) {
    const qreal usual = format.lineHeight();
    const qreal ascent = std::ceil(QFontMetricsF(format.font).ascent());
    TextLines lines;
    layout.beginLayout();
    while (lines.count < maximum) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        const qsizetype end = line.textStart() + line.textLength();
        if (textGoesOn && lines.count > 0 && end == layout.text().size())
            break;
        const bool onGrid = line.height() <= usual * 1.3;
        const qreal shift = onGrid ? ascent - std::ceil(line.ascent()) : 0;
        line.setPosition({0, lines.height + shift});
        ++lines.count;
        lines.length = end;
        lines.height += onGrid ? usual : std::ceil(line.height());
        lines.width = std::max(lines.width, line.naturalTextWidth());
    }
    layout.endLayout();
    return lines;
}

} // namespace platform
