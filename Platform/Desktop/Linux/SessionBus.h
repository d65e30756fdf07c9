// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>

#include <optional>

namespace platform {

/// The connection to the user's session bus that the whole program shares; none where the session
/// has no bus.
///
/// Asks for it only where a bus is there for certain: asking without one would start a bus, which
/// takes long and outlives the program. Blocks for as long as the bus takes to answer; Qt opens the
/// same connection, in the same way, when the first window is shown.
std::optional<QDBusConnection> sessionBus();

} // namespace platform
