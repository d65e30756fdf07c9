// SPDX-License-Identifier: MIT
#pragma once

#include <QChar>
#include <QFlags>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <vector>

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

/// Plain text with ranges of inline style: what a parser hands over and a view draws.
///
/// The ranges are sorted, not empty, do not overlap, and neighbours that touch differ; text between
/// them has no style. Positions count UTF-16 units. A value type: equal when text and ranges are.
struct AttributedString {
    enum Style {
        Strong = 1,
        Emphasis = 2,
        Code = 4,
        Strikethrough = 8,
        Link = 16,   ///< the range's `target` says where it leads
        Fenced = 32, ///< together with Code: whole lines of it
    };
    Q_DECLARE_FLAGS(Styles, Style)

    struct Range {
        qsizetype start = 0;
        qsizetype length = 0;
        Styles styles;
        QString target; ///< of a link as the author wrote it, neither checked nor normalised

        qsizetype end() const { return start + length; }
        bool operator==(const Range&) const = default;
    };

    QString text;
    std::vector<Range> ranges;

    /// Appends `piece` in one style; it joins the last range where both are alike.
    void append(QStringView piece, Styles styles = {}, const QString& target = {});

    /// Appends all of `other`, its ranges moved to their new place.
    void append(const AttributedString& other);

    /// Drops everything from `length` on; the cost follows what is dropped.
    void truncate(qsizetype length);

    /// The part of `length` units that begins at `start`, with the ranges inside it.
    AttributedString mid(qsizetype start, qsizetype length) const;

    /// The index of the first range that ends after `position`, or the number of ranges.
    std::size_t firstRangeEndingAfter(qsizetype position) const;

    bool operator==(const AttributedString&) const = default;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(AttributedString::Styles)

/// The first position at which two texts differ, in a character or in the style of one: the length
/// of the shorter where one begins with the other, none (-1) where they are equal.
qsizetype firstDifference(const AttributedString& a, const AttributedString& b);

} // namespace platform
