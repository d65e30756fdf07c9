// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextFormat.h"

#include "Platform/Widgets/Text/TextLinks.h"

#include <QFontInfo>
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
            .found = color(ColorRole::Found, ColorRole::FoundOnAccent),
            .foundCurrent = color(ColorRole::FoundCurrent, ColorRole::FoundCurrentOnAccent),
            .focusRing = color(ColorRole::FocusRing),
            .margin = themeMargin,
            .emojiFont = &theme.emojiFont()};
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
    if (emojiFont)
        emojiFont->addFormats(content.text, formats);
    layout->setFormats(formats);
    layout->setCacheEnabled(true);
    return layout;
}

qreal TextFormat::lineHeight() const {
    constexpr qreal leading = 1.35;
    return std::ceil(
        std::max(QFontMetricsF(font).lineSpacing(), leading * QFontInfo(font).pixelSize()));
}

/// How far below its top a line's letters stand: what its height adds is above and below them.
qreal TextFormat::baseline() const {
    const QFontMetricsF metrics(font);
    const qreal added = lineHeight() - std::ceil(metrics.lineSpacing());
    return std::ceil(metrics.ascent()) + std::floor(added / 2);
}

/// Whether a line takes the usual height, also where another font in it is a little taller.
bool TextFormat::isOnGrid(const QTextLine& line) const {
    return line.height() <= std::max(lineHeight(), QFontMetricsF(font).lineSpacing() * 1.3);
}

TextFormat::Extent TextFormat::extentOf(const QTextLine& line) const {
    if (!isOnGrid(line))
        return {line.y(), std::ceil(line.height())};
    return {line.y() + std::ceil(line.ascent()) - baseline(), lineHeight()};
}

void TextFormat::place(QTextLine& line, qreal top) const {
    line.setPosition({0, isOnGrid(line) ? top + baseline() - std::ceil(line.ascent()) : top});
}

TextLines TextLines::make(QTextLayout& layout, const TextFormat& format, qreal width,
                          bool textGoesOn, int maximum) {
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
        format.place(line, lines.height);
        ++lines.count;
        lines.length = end;
        lines.height += format.extentOf(line).height;
        lines.width = std::max(lines.width, line.naturalTextWidth());
    }
    layout.endLayout();
    return lines;
}

} // namespace platform
