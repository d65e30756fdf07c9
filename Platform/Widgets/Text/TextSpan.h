// SPDX-License-Identifier: MIT
#pragma once

#include <QChar>

#include <algorithm>

namespace platform {

/// A range of UTF-16 units of a text.
struct TextSpan {
    qsizetype start = 0;
    qsizetype end = 0;

    bool isEmpty() const { return start >= end; }
    qsizetype length() const { return end - start; }
    /// What of it lies in a text of `size` units.
    TextSpan within(qsizetype size) const {
        return {std::clamp<qsizetype>(start, 0, size), std::clamp<qsizetype>(end, 0, size)};
    }
    bool operator==(const TextSpan&) const = default;
};

/// Whether a character ends a line of text.
inline bool isLineBreak(QChar character) {
    return character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

} // namespace platform
