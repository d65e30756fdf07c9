// SPDX-License-Identifier: MIT
#include "Setup/TransferRate.h"

namespace setup {

void TransferRate::add(qint64 received, qint64 milliseconds) {
    constexpr qint64 lookedBack = 5'000;
    // What begins anew was not slow but is another transfer.
    if (!m_looks.isEmpty() && received < m_looks.constLast().received)
        reset();
    m_looks.append({milliseconds, received});
    while (m_looks.constFirst().milliseconds < milliseconds - lookedBack)
        m_looks.removeFirst();
}

qint64 TransferRate::perSecond() const {
    if (m_looks.size() < 2)
        return 0;
    const Look& first = m_looks.constFirst();
    const Look& last = m_looks.constLast();
    const qint64 time = last.milliseconds - first.milliseconds;
    return time > 0 ? (last.received - first.received) * 1'000 / time : 0;
}

} // namespace setup
