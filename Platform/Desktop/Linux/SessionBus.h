// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>

#include <optional>

namespace platform {

/// The connection to the user's session bus that the whole program shares; none where the session
/// has no bus: asking without one would start a bus, which takes long and outlives the program.
/// Blocks for as long as the bus takes to answer, as Qt does when the first window is shown.
std::optional<QDBusConnection> sessionBus();

} // namespace platform
