// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <optional>

namespace platform {

/// The line that opens a fenced block of code: up to three blanks, then three or more back quotes
/// or tildes, as CommonMark tells it. Lines are given without their break.
struct CodeFence {
    QChar mark;
    qsizetype length = 0;

    /// The fence that a line opens, if it does.
    static std::optional<CodeFence> openedBy(QStringView line);

    /// Whether a line ends the block that this fence has opened.
    bool isClosedBy(QStringView line) const;

    bool operator==(const CodeFence&) const = default;
};

} // namespace platform
