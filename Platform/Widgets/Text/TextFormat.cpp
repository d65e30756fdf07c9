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

TextFormat TextFormat::of(const Theme& theme, bool isOnAccent) {
    const auto color = [&](ColorRole onWindow, ColorRole onAccent = ColorRole::OnAccent) {
        return theme.color(isOnAccent ? onAccent : onWindow);
    };
    return {.font = theme.font(TextStyle::Body),
            .codeFont = theme.codeFont(),
            .text = color(ColorRole::Label),
            .link = color(ColorRole::Link),
            .codeBackground = theme.color(ColorRole::Field),
            .selection = color(ColorRole::Selection, ColorRole::SelectionOnAccent),
            .focusRing = color(ColorRole::FocusRing)};
}

std::unique_ptr<QTextLayout> TextFormat::layout(const AttributedString& content,
                                                bool rightToLeft) const {
    auto layout = std::make_unique<QTextLayout>(displayed(content.text), font);
    QTextOption option(rightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(QFontMetricsF(font).horizontalAdvance(u' ') * 8);
    layout->setTextOption(option);
    QList<QTextLayout::FormatRange> formats;
    for (const AttributedString::Range& range : content.ranges) {
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
        formats.append({static_cast<int>(range.start), static_cast<int>(range.length), format});
    }
    layout->setFormats(formats);
    layout->setCacheEnabled(true);
    return layout;
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
