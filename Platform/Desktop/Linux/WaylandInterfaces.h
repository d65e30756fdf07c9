// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

#include <chrono>
#include <optional>

namespace platform {

/// The names of the interfaces that the Wayland compositor behind a socket announces; none where
/// there is no compositor or it does not answer within the limit.
///
/// Speaks the two requests that this takes over a connection of its own: the toolkit's connection
/// cannot be asked, and a library for it would be loaded by every start on X11, too.
std::optional<QByteArrayList> waylandInterfaces(const QByteArray& socketPath,
                                                std::chrono::milliseconds limit);

} // namespace platform
