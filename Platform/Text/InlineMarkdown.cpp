// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdown.h"

#include "Platform/Text/InlineMarkdownBlock.h"

#include <algorithm>

namespace platform {
namespace {

bool isBlank(QChar character) {
    return character == u' ' || character == u'\t';
}

/// One line of a text: its break (LF, CR or CR LF) belongs to it.
struct Line {
    qsizetype breakAt = 0;
    qsizetype end = 0; ///< behind the break
    bool blank = true;

    /// Whether it stays as it is when more text follows: a CR at the end may become a CR LF.
    bool isWhole(QStringView source) const {
        return breakAt < end &&
               (end < source.size() || source[breakAt] == u'\n' || end - breakAt == 2);
    }
};

Line lineAt(QStringView source, qsizetype start) {
    Line line;
    qsizetype at = start;
    while (at < source.size() && !isMarkdownBreak(source[at])) {
        line.blank = line.blank && isBlank(source[at]);
        ++at;
    }
    line.breakAt = at;
    const QStringView behind = source.mid(at);
    line.end = at + (behind.isEmpty() ? 0 : behind.startsWith(u"\r\n") ? 2 : 1);
    return line;
}

/// Where a block that begins at `start` and is longer than the limit is cut.
qsizetype cut(QStringView source, qsizetype start) {
    const qsizetype limit = start + InlineMarkdown::maximumBlockLength;
    for (qsizetype at = limit; at > start; --at) {
        const bool insidePair = source[at - 1] == u'\r' && source[at] == u'\n';
        if (isMarkdownBreak(source[at - 1]) && !insidePair)
            return at;
    }
    for (qsizetype at = limit; at > start + InlineMarkdown::maximumBlockLength / 2; --at)
        if (isBlank(source[at - 1]))
            return at;
    return source[limit].isLowSurrogate() && source[limit - 1].isHighSurrogate() ? limit - 1
                                                                                 : limit;
}

/// The end of the block whose first line, not blank, begins at `start`: never looks further than
/// the limit and one character, so what was decided stays decided when the text grows.
qsizetype blockEnd(QStringView source, qsizetype start) {
    const qsizetype limit = start + InlineMarkdown::maximumBlockLength;
    const QStringView window = source.left(std::min(source.size(), limit + 1));
    qsizetype end = start;
    while (end < window.size()) {
        const Line line = lineAt(window, end);
        if (line.blank && (line.end <= limit || line.end == source.size()))
            break;
        if (end > start && CodeFence::openedBy(window.sliced(end, line.breakAt - end)))
            break;
        end = line.end;
    }
    return end > limit ? cut(source, start) : end;
}

} // namespace

AttributedString InlineMarkdown::parse(QStringView source) {
    Position position;
    return parseOn(source, position);
}

AttributedString InlineMarkdown::parseOn(QStringView source, Position& position) {
    AttributedString result;
    const qsizetype base = position.result;
    qsizetype at = position.source;
    std::optional<CodeFence> fence = position.fence;
    while (at < source.size()) {
        const Line line = lineAt(source.left(std::min(source.size(), at + maximumBlockLength)), at);
        const QStringView content = source.sliced(at, line.breakAt - at);
        const bool wasOpen = fence.has_value();
        if (!wasOpen)
            fence = CodeFence::openedBy(content);
        if (fence) {
            if (wasOpen && fence->isClosedBy(content))
                fence.reset();
            // The last line's break is no code.
            result.append(source.sliced(at, (fence ? line.end : line.breakAt) - at),
                          AttributedString::Code | AttributedString::Fenced);
            if (!fence)
                result.append(source.sliced(line.breakAt, line.end - line.breakAt));
            if (line.isWhole(source) || line.end < source.size())
                position = {line.end, base + result.text.size(), fence};
            at = line.end;
        } else if (line.blank) {
            result.append(source.sliced(at, line.end - at));
            at = line.end;
        } else {
            position = {at, base + result.text.size(), {}};
            const qsizetype end = blockEnd(source, at);
            appendInlineMarkdownBlock(source.sliced(at, end - at), result);
            at = end;
        }
    }
    return result;
}

} // namespace platform
