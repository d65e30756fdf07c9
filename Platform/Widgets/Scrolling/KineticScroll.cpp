// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/KineticScroll.h"

#include <algorithm>
#include <cmath>

namespace platform {
namespace {

constexpr qint64 window = 100;       // milliseconds that tell the speed of the fingers
constexpr qreal halfLife = 220;      // milliseconds in which the speed halves
constexpr qreal leastStart = 0.15;   // pixels a millisecond; slower fingers meant to stop
constexpr qreal leastSpeed = 0.02;   // of a movement that is not seen any more
constexpr qreal greatestSpeed = 8.0; // pixels a millisecond

} // namespace

void KineticScroll::moved(qreal distance, qint64 time) {
    m_velocity = 0;
    m_samples.push_back({time, distance});
    while (m_samples.front().time < time - window)
        m_samples.pop_front();
}

bool KineticScroll::released(qint64 time) {
    while (!m_samples.empty() && m_samples.front().time < time - window)
        m_samples.pop_front();
    qreal distance = 0;
    for (const Sample& sample : m_samples)
        distance += sample.distance;
    const bool several = m_samples.size() > 1;
    const qreal span =
        several ? static_cast<qreal>(std::max<qint64>(time - m_samples.front().time, 16)) : 1;
    m_samples.clear();
    const qreal speed = several ? distance / span : 0;
    m_velocity =
        std::abs(speed) < leastStart ? 0 : std::clamp(speed, -greatestSpeed, greatestSpeed);
    m_time = time;
    return isRunning();
}

qreal KineticScroll::advance(qint64 time) {
    const auto elapsed = static_cast<qreal>(std::max<qint64>(time - m_time, 0));
    m_time = std::max(time, m_time);
    const qreal decay = std::exp2(-elapsed / halfLife);
    const qreal distance = m_velocity * (1 - decay) * halfLife / std::log(2.0);
    m_velocity *= decay;
    if (std::abs(m_velocity) < leastSpeed)
        m_velocity = 0;
    return distance;
}

void KineticScroll::stop() {
    m_velocity = 0;
    m_samples.clear();
}

} // namespace platform
