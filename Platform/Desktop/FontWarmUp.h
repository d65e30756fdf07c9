// SPDX-License-Identifier: MIT
#pragma once

#include <thread>

namespace platform {

/// Reads the system's font configuration on a thread of its own. The first text that a program
/// measures waits for it: begun before the application object is made, the reading is done by the
/// time that the display has been connected.
std::jthread warmUpFonts();

} // namespace platform
