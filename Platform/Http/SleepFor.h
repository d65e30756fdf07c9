// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/NetworkThread.h"

#include <chrono>

namespace platform {

/// Lets time pass. Awaited on the network thread; goes with its task, without waiting.
Task<void> sleepFor(NetworkThread& network, std::chrono::milliseconds time);

} // namespace platform
