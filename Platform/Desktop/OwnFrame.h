// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>

QT_BEGIN_NAMESPACE
class QMargins;
class QWindow;
QT_END_NAMESPACE

namespace platform {

/// Tells the desktop how much of a frameless window's edge lies outside what the user takes for the
/// window: the room for its shadow. The window keeps its content and grows or shrinks by the room.
using SetFrameMargins = std::function<void(QWindow&, const QMargins&)>;

/// What a window needs that has to draw its own title bar and frame; none where the desktop draws
/// them, as X11's window managers and most Wayland compositors do, or where the toolkit has to,
/// because a window cannot have its own. Asked once, after the application object has been made.
SetFrameMargins ownFrame();

} // namespace platform
