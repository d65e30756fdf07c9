// SPDX-License-Identifier: MIT
#include "Platform/Http/LineSplitter.h"

#include <algorithm>
#include <utility>

namespace platform {

void LineSplitter::append(QByteArrayView bytes) {
    // Taken lines are cut off here and not one by one, so that each byte is moved a few times at
    // most.
    if (m_start > 0) {
        m_bytes.remove(0, m_start);
        m_scanned -= m_start;
        m_start = 0;
    }
    m_bytes.append(bytes);
}

bool LineSplitter::isAtLineEnd() const {
    return m_scanned < m_bytes.size();
}

bool LineSplitter::hasLine() {
    if (m_start < m_bytes.size() && std::exchange(m_afterCarriageReturn, false) &&
        m_bytes[m_start] == '\n')
        m_scanned = ++m_start; // the second half of the line end before
    const auto end = std::find_if(m_bytes.cbegin() + m_scanned, m_bytes.cend(),
                                  [](char byte) { return byte == '\n' || byte == '\r'; });
    m_scanned = end - m_bytes.cbegin();
    return isAtLineEnd() || (m_isFinished && m_start < m_bytes.size());
}

std::optional<QByteArray> LineSplitter::takeLine() {
    if (!hasLine())
        return std::nullopt;
    const QByteArray line = m_bytes.sliced(m_start, m_scanned - m_start);
    if (isAtLineEnd()) {
        m_afterCarriageReturn = m_bytes[m_scanned] == '\r';
        ++m_scanned;
    }
    m_start = m_scanned;
    return line;
}

} // namespace platform
