// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QVariantAnimation>

#include <functional>

class QScroller;
class QWidget;

namespace platform {

/// What moves an area by itself, slowing down: a notch or a key, the way to its end, and the
/// run-out after fingers have left a touchpad. One of them at a time; the run-out of a touch on the
/// screen is QScroller's. Where motion is disabled, all is done at once, and nothing runs out.
/// Distances are pixels, times milliseconds.
class ScrollMotion final : public QVariantAnimation {
public:
    /// `motion` outlives it; `move` is told by how much to move, `toEnd` asked how far the end is.
    ScrollMotion(const Motion& motion, std::function<void(qreal)> move,
                 std::function<qreal()> toEnd, QWidget* area);

    /// Goes on by so much; adds to what the last step has still to go.
    void step(qreal distance);

    /// Goes to the end in 0.2 s, wherever it is then.
    void goToEnd();
    bool isGoingToEnd() const { return m_isToEnd && state() == Running; }

    /// Fingers on a touchpad have moved the content.
    void fingersMoved(qreal distance, quint64 time);
    /// They have left it: it goes on as fast as they were, if they were. Returns whether there were
    /// any.
    bool fingersLeft(quint64 time);

    /// Ends any movement of its own.
    void halt();
    /// Ends the run-out of a touch, too.
    void haltAll();

protected:
    void updateCurrentValue(const QVariant& progress) override;

private:
    void go(qreal distance, std::chrono::milliseconds length);

    const Motion& m_motion;
    QScroller* const m_touch;
    const std::function<void(qreal)> m_move;
    const std::function<qreal()> m_toEnd;
    bool m_isToEnd = false;
    qreal m_left = 0; // of the distance
    qreal m_progress = 0;
    qreal m_speed = 0;     // of the fingers, pixels a millisecond
    quint64 m_movedAt = 0; // the fingers
};

} // namespace platform
