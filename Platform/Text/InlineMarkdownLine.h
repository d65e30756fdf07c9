// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringView>

#include <vector>

namespace platform {

/// Whether a character ends a line of Markdown.
inline bool isMarkdownBreak(QChar character) {
    return character == u'\n' || character == u'\r';
}

/// A block of text as one single line for a parser of whole documents, so that it reads the inline
/// markup and nothing else.
///
/// A line break stands there as a form feed, which the parser takes for white space and no more: no
/// second line can become a heading, a list item, a fence or an underline, and none of the blanks
/// around the break is dropped. A letter and a blank before the line, a blank and a letter behind
/// it make it a paragraph whatever it begins with, and are white space to the emphasis beside them.
struct InlineMarkdownLine {
    /// How many bytes stand before the block and behind it.
    static constexpr qsizetype margin = 2;

    QByteArray bytes; ///< UTF-8
    std::vector<qsizetype>
        positions; ///< of each byte's character in the block; one more at the end

    explicit InlineMarkdownLine(QStringView block);

private:
    void hideSingleTildes();
    void hideBrokenTargets();
};

} // namespace platform
