// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QList>

namespace setup {

/// How fast something comes, over the last seconds.
class TransferRate {
public:
    TransferRate() { m_clock.start(); }

    /// Forgets what came before: another transfer begins.
    void reset() { m_looks.clear(); }
    /// Takes note of how much is there now; called about once a second.
    void add(qint64 received) { add(received, m_clock.elapsed()); }
    void add(qint64 received, qint64 milliseconds);

    /// In bytes a second; 0 while that is not known.
    qint64 perSecond() const;

private:
    struct Look {
        qint64 milliseconds;
        qint64 received;
    };
    QElapsedTimer m_clock;
    QList<Look> m_looks;
};

} // namespace setup
