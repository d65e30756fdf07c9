// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/ScrollMotion.h"

#include <QScroller>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace std::chrono_literals;

namespace platform {
namespace {

constexpr auto stepLength = 120ms;
constexpr auto endLength = 200ms;
constexpr auto runOutLength = 950ms;
constexpr qreal runOutTime = runOutLength.count() / 3.0; // a run begins at 3 times its mean speed
constexpr qreal halfLife = 15;                           // of a speed's weight
constexpr quint64 restTime = 80;     // fingers that rest so long before they leave meant to stop,
constexpr qreal minimumSpeed = 0.15; // and so did slower ones
constexpr qreal maximumSpeed = 8;

} // namespace

ScrollMotion::ScrollMotion(const Motion& motion, std::function<void(qreal)> move,
                           std::function<qreal()> toEnd, QWidget* area)
    : QVariantAnimation(area)
    , m_motion(motion)
    , m_touch(QScroller::scroller(area))
    , m_move(std::move(move))
    , m_toEnd(std::move(toEnd)) {
    setStartValue(0.0);
    setEndValue(1.0);
    setEasingCurve(QEasingCurve::OutCubic);
    connect(m_touch, &QScroller::stateChanged, this, [this](QScroller::State state) {
        if (state == QScroller::Scrolling && !m_motion.isEnabled())
            m_touch->stop();
    });
}

void ScrollMotion::halt() {
    stop();
    m_isToEnd = false;
    m_left = 0;
    m_speed = 0;
}

void ScrollMotion::haltAll() {
    halt();
    if (m_touch->state() == QScroller::Scrolling)
        m_touch->stop();
}

void ScrollMotion::step(qreal distance) {
    const qreal left = m_left * distance > 0 && !m_isToEnd ? m_left : 0;
    halt();
    go(left + distance, stepLength);
}

void ScrollMotion::goToEnd() {
    halt();
    m_isToEnd = true;
    go(m_toEnd(), endLength);
}

void ScrollMotion::go(qreal distance, std::chrono::milliseconds length) {
    m_left = distance;
    m_progress = 0;
    const auto duration = static_cast<int>(m_motion.duration(length).count());
    if (duration > 0) {
        setDuration(duration);
        start();
    } else {
        m_move(std::exchange(m_left, 0));
    }
}

/// Goes by a distance and not to a place: what lies above may become longer meanwhile.
void ScrollMotion::updateCurrentValue(const QVariant& progress) {
    if (state() != Running || m_progress >= 1)
        return;
    const qreal now = progress.toReal();
    const qreal share = (now - m_progress) / (1 - m_progress);
    m_progress = now;
    const qreal distance = (m_isToEnd ? m_toEnd() : m_left) * share;
    m_left -= distance;
    m_move(distance);
}

void ScrollMotion::fingersMoved(qreal distance, quint64 time) {
    stop();
    m_isToEnd = false;
    const auto elapsed = static_cast<qreal>(std::clamp<quint64>(time - m_movedAt, 1, restTime));
    const qreal weight = std::exp2(-elapsed / halfLife); // of what they did before
    m_speed = weight * m_speed + (1 - weight) * distance / elapsed;
    m_movedAt = time;
}

bool ScrollMotion::fingersLeft(quint64 time) {
    const qreal speed = std::clamp(std::exchange(m_speed, 0), -maximumSpeed, maximumSpeed);
    const bool meantToStop = time > m_movedAt + restTime || std::abs(speed) < minimumSpeed;
    if (!meantToStop && m_motion.isEnabled())
        go(speed * runOutTime, runOutLength);
    return speed != 0;
}

} // namespace platform
