// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QColor>
#include <QFont>
#include <QTextLayout>

#include <limits>
#include <memory>

namespace platform {

/// How styled text is drawn: its fonts, its colours and its margin. Equal fonts make equal lines.
struct TextFormat {
    QFont font;
    QFont codeFont; ///< of code spans
    QColor text;
    QColor link;
    QColor codeBackground;
    QColor selection; ///< behind selected characters
    QColor found;     ///< behind what was looked for
    QColor foundCurrent;
    QColor focusRing;
    qreal margin = 0;                     ///< beside all lines, for the backgrounds of code
    const EmojiFont* emojiFont = nullptr; ///< none: emoji are drawn as the text is

    /// The margin of the theme's: a part of what its owner leaves free around the text.
    static constexpr int themeMargin = 6;
    /// The theme's, for text on a background of the window or on the accent's fill.
    static TextFormat of(const Theme& theme, bool isOnAccent);

    /// A layout of a text, still without lines.
    std::unique_ptr<QTextLayout> layout(const AttributedString& content, bool rightToLeft) const;

    /// The height of a line, 1.35 times the em, in whole pixels so that lines stay crisp.
    qreal lineHeight() const;

    /// From top to bottom of the room that a line of a layout takes, in the layout's coordinates.
    struct Extent {
        qreal top;
        qreal height;
    };
    Extent extentOf(const QTextLine& line) const;

    /// Puts a line into the room that begins at `top`.
    void place(QTextLine& line, qreal top) const;

private:
    qreal baseline() const;
    bool isOnGrid(const QTextLine& line) const;
};

/// The lines of a layout, in pixels.
struct TextLines {
    int count = 0;
    qsizetype length = 0; ///< in characters
    qreal height = 0;
    qreal width = 0; ///< of the widest

    /// Breaks a layout of `format` into lines of at most `width`, `maximum` of them. Where the text
    /// goes on behind the layout, the last of several lines may not be complete and does not count.
    ///
    /// A line in which another font is a little taller, for code or an emoji, stands on the same
    /// grid as all others.
    static TextLines make(QTextLayout& layout, const TextFormat& format, qreal width,
                          bool textGoesOn, int maximum = std::numeric_limits<int>::max());
};

} // namespace platform
