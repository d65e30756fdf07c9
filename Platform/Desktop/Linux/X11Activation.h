// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

QT_BEGIN_NAMESPACE
class QWindow;
QT_END_NAMESPACE

namespace platform {

/// Asks an X11 window manager to give a window the focus, as the user who started the program again
/// wants it, and tells the desktop that this start is over. Does nothing where the window is no X11
/// window.
///
/// @param startupId what the desktop gave to that start; ends in the time of the user's action.
void activateOnX11(const QWindow& window, const QByteArray& startupId);

} // namespace platform
