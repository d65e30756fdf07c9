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
    if (!ranges.empty()) {
        Range& last = ranges.back();
        if (last.end() == start && last.styles == styles && last.target == target) {
            last.length += piece.size();
            return;
        }
    }
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
    const qsizetype common = std::min(a.text.size(), b.text.size());
    const auto differing =
        std::mismatch(a.text.cbegin(), a.text.cbegin() + common, b.text.cbegin());
    qsizetype position = differing.first - a.text.cbegin();

    // Ranges are walked in step; the first pair that is not alike bounds the answer.
    std::size_t i = 0;
    while (i < a.ranges.size() && i < b.ranges.size() && a.ranges[i] == b.ranges[i])
        ++i;
    const bool more = i < a.ranges.size() || i < b.ranges.size();
    if (more) {
        qsizetype changed = position;
        if (i >= a.ranges.size()) {
            changed = b.ranges[i].start;
        } else if (i >= b.ranges.size()) {
            changed = a.ranges[i].start;
        } else {
            const AttributedString::Range& x = a.ranges[i];
            const AttributedString::Range& y = b.ranges[i];
            const bool sameBeginning =
                x.start == y.start && x.styles == y.styles && x.target == y.target;
            changed = sameBeginning ? std::min(x.end(), y.end()) : std::min(x.start, y.start);
        }
        position = std::min(position, changed);
    } else if (position == a.text.size() && position == b.text.size()) {
        return -1;
    }
    return position;
}

} // namespace platform
