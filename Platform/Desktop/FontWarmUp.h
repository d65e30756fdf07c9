// SPDX-License-Identifier: MIT
#pragma once

#include <thread>

namespace platform {

/// Reads the system's font configuration on a thread of its own, for as long as the object lives at
/// most.
///
/// The first text that a program measures waits for it: 8 of the 30 ms that our first frame takes
/// beyond an empty window's. Made before the application object, the reading is done by the time
/// that the display has been connected.
class FontWarmUp final {
public:
    FontWarmUp();

private:
    std::jthread m_thread;
};

} // namespace platform
