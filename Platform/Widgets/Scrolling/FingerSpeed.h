// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <deque>

namespace platform {

/// How fast the fingers on a touchpad move. Times are milliseconds of any clock, distances pixels.
class FingerSpeed {
public:
    void moved(qreal distance, quint64 time) {
        forgetBefore(time);
        m_movements.push_back({time, distance});
    }

    /// The speed, in pixels a millisecond, of fingers that leave at `time`: none (0) of those that
    /// rested before, or moved so slowly that they meant to stop.
    qreal leave(quint64 time) {
        forgetBefore(time);
        qreal distance = 0;
        for (const Movement& movement : m_movements)
            distance += movement.distance;
        const bool several = m_movements.size() > 1;
        const quint64 elapsed =
            several ? std::max<quint64>(time - m_movements.front().time, 16) : 1;
        const qreal speed = several ? distance / static_cast<qreal>(elapsed) : 0;
        m_movements.clear();
        return std::abs(speed) < minimum ? 0 : std::clamp(speed, -maximum, maximum);
    }

    bool isKnown() const { return !m_movements.empty(); }
    void clear() { m_movements.clear(); }

private:
    static constexpr quint64 recently = 100; // what counts
    static constexpr qreal minimum = 0.15;
    static constexpr qreal maximum = 8;

    struct Movement {
        quint64 time;
        qreal distance;
    };

    void forgetBefore(quint64 time) {
        while (!m_movements.empty() && m_movements.front().time + recently < time)
            m_movements.pop_front();
    }

    std::deque<Movement> m_movements;
};

} // namespace platform
