// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace platform {

/// How long the engine may take. The first token of a long prompt on a slow machine takes minutes,
/// as may the model's loading: what counts is whether the engine works.
struct EngineLimits {
    /// After this long without a request the engine gives its memory back; the next request makes
    /// it load the model again.
    std::chrono::seconds idleTime = std::chrono::minutes(5);
    /// An engine that is waited for and does nothing for so long hangs.
    std::chrono::milliseconds longestStandstill = std::chrono::minutes(2);
    /// An engine that works and says nothing for so long works in vain.
    std::chrono::milliseconds longestSilence = std::chrono::minutes(30);
    /// How often a ready engine may refuse one request, and the pause before it is asked again.
    int maximumRefusals = 50;
    std::chrono::milliseconds refusalPause = std::chrono::milliseconds(100);
};

} // namespace platform
