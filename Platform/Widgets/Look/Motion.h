// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"

#include <chrono>

namespace platform {

/// The one switch of all animations. They are off until somebody who knows the user's wish turns
/// them on, so tests never wait for one.
class Motion {
public:
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }

    /// How long an animation of the given length is to take now: its length, or no time at all.
    std::chrono::milliseconds duration(std::chrono::milliseconds length) const {
        return m_enabled ? length : std::chrono::milliseconds::zero();
    }

private:
    Observed<bool> m_enabled{false};
};

} // namespace platform
