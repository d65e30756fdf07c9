// SPDX-License-Identifier: MIT
#include "Platform/Text/AttributedString.h"

#include <algorithm>

namespace platform {

void AttributedString::append(QStringView piece, Styles styles, const QString& target) {
    if (piece.isEmpty())
        return;
    const qsizetype start = text.size();
    text.append(piece);
    if (!styles)
        return;
    if (!ranges.empty() && ranges.back().end() == start && ranges.back().styles == styles &&
        ranges.back().target == target)
        ranges.back().length += piece.size();
    else
        ranges.push_back({start, piece.size(), styles, target});
}

void AttributedString::append(const AttributedString& other) {
    qsizetype done = 0;
    for (const Range& range : other.ranges) {
        append(QStringView(other.text).mid(done, range.start - done));
        append(QStringView(other.text).mid(range.start, range.length), range.styles, range.target);
        done = range.end();
    }
    append(QStringView(other.text).mid(done));
}

void AttributedString::truncate(qsizetype length) {
    if (length >= text.size())
        return;
    text.truncate(length);
    while (!ranges.empty() && ranges.back().start >= length)
        ranges.pop_back();
    if (!ranges.empty() && ranges.back().end() > length)
        ranges.back().length = length - ranges.back().start;
}

std::size_t AttributedString::firstRangeEndingAfter(qsizetype position) const {
    const auto found =
        std::partition_point(ranges.begin(), ranges.end(),
                             [position](const Range& range) { return range.end() <= position; });
    return static_cast<std::size_t>(found - ranges.begin());
}

AttributedString AttributedString::mid(qsizetype start, qsizetype length) const {
    AttributedString part;
    part.text = text.mid(start, length);
    const qsizetype end = start + part.text.size();
    for (std::size_t i = firstRangeEndingAfter(start); i < ranges.size(); ++i) {
        const Range& range = ranges[i];
        if (range.start >= end)
            break;
        const qsizetype from = std::max(range.start, start);
        const qsizetype to = std::min(range.end(), end);
        part.ranges.push_back({from - start, to - from, range.styles, range.target});
    }
    return part;
}

qsizetype firstDifference(const AttributedString& a, const AttributedString& b) {
    const auto [at, other] =
        std::mismatch(a.text.cbegin(), a.text.cend(), b.text.cbegin(), b.text.cend());
    const qsizetype position = at - a.text.cbegin();
    // The first ranges that are not alike bound the answer.
    const auto [x, y] =
        std::mismatch(a.ranges.begin(), a.ranges.end(), b.ranges.begin(), b.ranges.end());
    if (x == a.ranges.end() && y == b.ranges.end())
        return at == a.text.cend() && other == b.text.cend() ? -1 : position;
    if (x == a.ranges.end() || y == b.ranges.end())
        return std::min(position, x == a.ranges.end() ? y->start : x->start);
    const bool beginAlike =
        x->start == y->start && x->styles == y->styles && x->target == y->target;
    return std::min({position, beginAlike ? x->end() : x->start, beginAlike ? y->end() : y->start});
}

} // namespace platform
