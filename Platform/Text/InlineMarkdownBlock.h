// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"

#include <QStringView>

namespace platform {

/// Whether a character ends a line of Markdown.
inline bool isMarkdownBreak(QChar character) {
    return character == u'\n' || character == u'\r';
}

/// Parses one block, a run of lines without a blank one between them, and appends what it shows to
/// `result`. The block is appended as it stands should the parser fail for want of memory.
void appendInlineMarkdownBlock(QStringView block, AttributedString& result);

} // namespace platform
