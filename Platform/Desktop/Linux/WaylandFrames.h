// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

namespace platform {

/// Whether the Wayland compositor behind a socket draws the frame of a window that leaves it the
/// choice; none where there is no compositor, or it does not say within the limit.
///
/// Many a compositor can do it, and does not: that is known once it has answered a window. So one
/// is made, of the application's name, and is gone with the answer, before it could be shown.
///
/// Speaks the few requests that this takes over a connection of its own: the toolkit's connection
/// cannot be asked, and a library for it would be loaded by every start on X11, too.
std::optional<bool> waylandDrawsFrames(const QByteArray& socketPath, const QByteArray& application,
                                       std::chrono::milliseconds limit);

} // namespace platform
