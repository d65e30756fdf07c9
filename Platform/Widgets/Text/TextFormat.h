// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QTextLayout>

#include <memory>

namespace platform {

/// How styled text is drawn: its fonts and colours. Equal fonts make equal lines.
struct TextFormat {
    QFont font;
    QFont codeFont; ///< of code spans
    QColor text;
    QColor link;
    QColor codeBackground;
    QColor selection; ///< behind selected characters
    QColor focusRing;

    /// A layout, still without lines, of the part of `content` that begins at `start`.
    std::unique_ptr<QTextLayout> layout(const AttributedString& content, qsizetype start,
                                        qsizetype length, bool rightToLeft) const;

    /// The formats of that part.
    QList<QTextLayout::FormatRange> formats(const AttributedString& content, qsizetype start,
                                            qsizetype length) const;

    /// The height of a line of plain text, in whole pixels so that lines stay crisp.
    qreal lineHeight() const;
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
                          bool textGoesOn, int maximum);
};

} // namespace platform
