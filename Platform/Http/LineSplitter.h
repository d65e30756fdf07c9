// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

namespace platform {

/// Cuts a growing sequence of bytes into lines. A line ends with LF, CR LF or CR, and is there as
/// soon as the first byte of its end is; the end is no part of it. Looks at bytes only, so that a
/// character whose bytes come in two pieces stays whole.
class LineSplitter {
public:
    /// Adds bytes at the end.
    void append(QByteArrayView bytes);

    /// No more bytes will come: what stands after the last line end is a line as well, unless it is
    /// nothing.
    void finish() { m_isFinished = true; }

    /// Whether takeLine() has a line to give.
    bool hasLine();

    /// The next line, or none when its end has not come yet.
    std::optional<QByteArray> takeLine();

    /// The number of bytes that wait for their line's end or to be taken.
    qsizetype pendingBytes() const { return m_bytes.size() - m_start; }

private:
    bool isAtLineEnd() const;

    QByteArray m_bytes;
    qsizetype m_start = 0;   // where the next line begins
    qsizetype m_scanned = 0; // no line end stands between m_start and here
    bool m_afterCarriageReturn = false;
    bool m_isFinished = false;
};

} // namespace platform
