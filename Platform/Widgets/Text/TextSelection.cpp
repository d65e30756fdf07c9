// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextSelection.h"

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

TextSpan unitAt(QStringView text, qsizetype position, TextUnit unit) {
    position = std::clamp<qsizetype>(position, 0, text.size());
    if (unit == TextUnit::Character || text.isEmpty())
        return {position, position};
    return unit == TextUnit::Word ? wordAt(text, position) : paragraphAt(text, position);
}

} // namespace

TextSelection::TextSelection(QStringView text, qsizetype position, TextUnit unit)
    : m_began(unitAt(text, position, unit))
    , m_reached(m_began)
    , m_unit(unit) {}

TextSelection TextSelection::extended(QStringView text, qsizetype position) const {
    TextSelection longer = *this;
    longer.m_reached = unitAt(text, position, m_unit);
    return longer;
}

void TextSelection::limit(qsizetype length) {
    m_began = m_began.within(length);
    m_reached = m_reached.within(length);
}

TextSpan TextSelection::span() const {
    return {std::min(m_began.start, m_reached.start), std::max(m_began.end, m_reached.end)};
}

} // namespace platform
