// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextLinks.h"

using namespace Qt::StringLiterals;

namespace platform {

std::optional<QUrl> openableAddress(const QString& target) {
    // Checked before it is parsed: most targets that are no address do not even look like one.
    const bool known = target.startsWith("http://"_L1, Qt::CaseInsensitive) ||
                       target.startsWith("https://"_L1, Qt::CaseInsensitive) ||
                       target.startsWith("mailto:"_L1, Qt::CaseInsensitive);
    if (!known)
        return std::nullopt;
    const QUrl url(target);
    if (!url.isValid() || (url.scheme() != "mailto"_L1 && url.host().isEmpty()))
        return std::nullopt;
    return url;
}

TextLink linkAt(const AttributedString& text, qsizetype character) {
    const auto& ranges = text.ranges;
    const std::size_t found = character < 0 ? ranges.size() : text.firstRangeEndingAfter(character);
    if (found >= ranges.size() || ranges[found].start > character ||
        !(ranges[found].styles & AttributedString::Link))
        return {};
    const AttributedString::Range& range = ranges[found];
    const auto address = openableAddress(range.target);
    if (!address)
        return {};
    // A link in several styles is several ranges that touch.
    TextSpan span{range.start, range.end()};
    const auto joins = [&](const AttributedString::Range& other) {
        return (other.styles & AttributedString::Link) && other.target == range.target;
    };
    std::size_t first = found;
    while (first > 0 && joins(ranges[first - 1]) && ranges[first - 1].end() == span.start)
        span.start = ranges[--first].start;
    std::size_t last = found;
    while (last + 1 < ranges.size() && joins(ranges[last + 1]) &&
           ranges[last + 1].start == span.end)
        span.end = ranges[++last].end();
    return {span, *address};
}

TextLink linkFrom(const AttributedString& text, qsizetype position) {
    for (std::size_t i = text.firstRangeEndingAfter(position); i < text.ranges.size(); ++i) {
        const TextLink link = linkAt(text, text.ranges[i].start);
        if (!link.isNone() && link.span.start >= position)
            return link;
    }
    return {};
}

TextLink linkUpTo(const AttributedString& text, qsizetype position) {
    for (std::size_t i = text.firstRangeEndingAfter(position); i > 0; --i) {
        const TextLink link = linkAt(text, text.ranges[i - 1].start);
        if (!link.isNone() && link.span.end <= position)
            return link;
    }
    return {};
}

} // namespace platform
