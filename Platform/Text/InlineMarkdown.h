// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"
#include "Platform/Text/CodeFence.h"

#include <QStringView>

namespace platform {

/// Reads the inline markup of Markdown and nothing else.
///
/// Interpreted are strong, emphasis, code spans, links, autolinks in angle brackets, strikethrough
/// (two tildes), backslash escapes and character references, as CommonMark tells them. Headings,
/// lists, quotes, rules, tables and raw HTML stay as they were typed. So does a fenced block of
/// code, fences included: all of it is code, from the line that opens it to the one that closes it
/// or, as long as there is none, to the end.
///
/// Every blank and every line break of the source comes out again, also those that CommonMark
/// drops; only what belongs to the markup itself goes, the blanks between a link's target and its
/// title or the backslash of a hard line break for instance.
///
/// An image's description is shown in its place or, where it has none, its address. A construct
/// that is not closed is literal; one ends with its block, and a block at a blank line. A block
/// longer than `maximumBlockLength` is read in pieces of that length, cut at a line's start or else
/// after a blank, which bounds what hostile text can cost.
class InlineMarkdown {
public:
    /// In UTF-16 units. Far beyond any paragraph that people or models write.
    static constexpr qsizetype maximumBlockLength = 16384;

    /// The whole of `source`, parsed. Any thread.
    static AttributedString parse(QStringView source);

    /// Where in a text the parser stands: before it, nothing changes any more when text is
    /// appended.
    struct Position {
        qsizetype source = 0;                ///< start of the last block in the source
        qsizetype result = 0;                ///< start of the same block in the parsed text
        std::optional<CodeFence> fence = {}; ///< of the block of code that is open there
    };

    /// Parses `source` from `position` (its beginning, or a position that an earlier call with a
    /// shorter beginning of the same text left there) and moves `position` to the last block.
    static AttributedString parseOn(QStringView source, Position& position);
};

} // namespace platform
