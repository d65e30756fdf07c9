// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QTextLayout>

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

    /// The formats of the part of `content` that begins at `start`, for a QTextLayout of that part.
    QList<QTextLayout::FormatRange> formats(const AttributedString& content, qsizetype start,
                                            qsizetype length) const;

    /// The height of a line of plain text, in whole pixels so that lines stay crisp.
    qreal lineHeight() const;
};

} // namespace platform
