// SPDX-License-Identifier: MIT
#include "Platform/Text/CodeFence.h"

#include <algorithm>

namespace platform {
namespace {

constexpr qsizetype minimumLength = 3;
constexpr qsizetype maximumIndent = 3; // of a line that is no code by its indent

/// The marks that a line begins with, and what stands behind them; length 0 where there are none.
struct Marks {
    CodeFence fence;
    QStringView rest;
};

Marks marksOf(QStringView line) {
    qsizetype indent = 0;
    while (indent < std::min(line.size(), maximumIndent) && line[indent] == u' ')
        ++indent;
    line = line.sliced(indent);
    if (line.isEmpty() || (line.front() != u'`' && line.front() != u'~'))
        return {};
    const auto end = std::find_if(line.begin(), line.end(),
                                  [mark = line.front()](QChar c) { return c != mark; });
    const qsizetype length = end - line.begin();
    return {{line.front(), length}, line.sliced(length)};
}

} // namespace

std::optional<CodeFence> CodeFence::openedBy(QStringView line) {
    const Marks marks = marksOf(line);
    // Back quotes with another one behind them are a code span.
    if (marks.fence.length < minimumLength ||
        (marks.fence.mark == u'`' && marks.rest.contains(u'`')))
        return std::nullopt;
    return marks.fence;
}

bool CodeFence::isClosedBy(QStringView line) const {
    const Marks marks = marksOf(line);
    return marks.fence.mark == mark && marks.fence.length >= length &&
           marks.rest.trimmed().isEmpty();
}

} // namespace platform
