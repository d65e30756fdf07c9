// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/EmojiFont.h"

#include <QSyntaxHighlighter>

namespace platform {

/// Shows the emoji of an editor's document in the font for emoji. The text itself stays as it is.
class EmojiHighlighter final : public QSyntaxHighlighter {
    Q_OBJECT

public:
    /// `font` outlives the document, which owns the highlighter.
    EmojiHighlighter(QTextDocument* document, const EmojiFont& font)
        : QSyntaxHighlighter(document)
        , m_font(font) {}

protected:
    void highlightBlock(const QString& text) override {
        QList<QTextLayout::FormatRange> formats;
        m_font.addFormats(text, formats);
        for (const QTextLayout::FormatRange& range : formats)
            setFormat(range.start, range.length, range.format);
    }

private:
    const EmojiFont& m_font;
};

} // namespace platform
