// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextBoundaries.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace platform {
namespace {

/// How far a word is looked for to either side: text without blanks must not cost its whole length.
constexpr qsizetype longestWord = 2048;

TextSpan wordAt(QStringView text, qsizetype position) {
    const qsizetype from = std::max<qsizetype>(position - longestWord, 0);
    const QStringView window = text.mid(from, 2 * longestWord);
    const qsizetype at = std::min(position - from, window.size() - 1);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, window);
    finder.setPosition(at);
    const qsizetype start = finder.isAtBoundary() ? at : finder.toPreviousBoundary();
    finder.setPosition(at);
    const qsizetype end = finder.toNextBoundary();
    return {from + std::max<qsizetype>(start, 0), from + (end < 0 ? window.size() : end)};
}

TextSpan paragraphAt(QStringView text, qsizetype position) {
    TextSpan span{position, position};
    while (span.start > 0 && !isLineBreak(text[span.start - 1]))
        --span.start;
    while (span.end < text.size() && !isLineBreak(text[span.end]))
        ++span.end;
    return span;
}

} // namespace

bool isLineBreak(QChar character) {
    return character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

TextSpan unitAt(QStringView text, qsizetype position, TextUnit unit) {
    position = std::clamp<qsizetype>(position, 0, text.size());
    if (unit == TextUnit::Character || text.isEmpty())
        return {position, position};
    return unit == TextUnit::Word ? wordAt(text, position) : paragraphAt(text, position);
}

} // namespace platform
