// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFormat.h"

#include "Platform/Widgets/Text/TextLinks.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace platform {

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

} // namespace platform
