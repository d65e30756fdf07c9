// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <deque>

namespace platform {

/// The run-out of a scrolling movement after the fingers have left the touchpad.
///
/// Fed with what the fingers moved, it tells how far the content goes on by itself, slowing down
/// until it rests. Times are milliseconds of any clock, distances pixels.
class KineticScroll {
public:
    /// The fingers moved the content by `distance` at `time`.
    void moved(qreal distance, qint64 time);

    /// The fingers left at `time`: returns whether the content goes on by itself.
    bool released(qint64 time);

    /// How far the content goes since the last call; call it while isRunning().
    qreal advance(qint64 time);

    bool isRunning() const { return m_velocity != 0; }
    void stop();

private:
    struct Sample {
        qint64 time;
        qreal distance;
    };
    std::deque<Sample> m_samples; // of the last moments
    qreal m_velocity = 0;         // pixels a millisecond
    qint64 m_time = 0;            // of the last advance
};

} // namespace platform
