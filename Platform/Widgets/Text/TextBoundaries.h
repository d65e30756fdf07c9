// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

namespace platform {

/// A range of UTF-16 units of a text.
struct TextSpan {
    qsizetype start = 0;
    qsizetype end = 0;

    bool isEmpty() const { return start >= end; }
    qsizetype length() const { return end - start; }
    bool operator==(const TextSpan&) const = default;
};

/// Whether a character ends a line of text.
bool isLineBreak(QChar character);

/// The characters that a single, a double and a triple click select.
enum class TextUnit { Character, Word, Paragraph };

/// The unit of `text` around a position: an empty span for Character; for Word the word, or the run
/// of blanks, or the sign there; for Paragraph the paragraph without its line break.
TextSpan unitAt(QStringView text, qsizetype position, TextUnit unit);

} // namespace platform
