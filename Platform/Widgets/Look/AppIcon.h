// SPDX-License-Identifier: MIT
#pragma once

class QIcon;
class QWidget;

namespace platform {

class Icons;

/// The icon of our programs, as packaging/tellwick.svg shows it.
QIcon appIcon(const Icons& icons);

/// Gives a window that icon as soon as it has been painted for the first time, which does not
/// wait for the icon. X11's window managers show it; a Wayland desktop takes it from the
/// desktop entry.
void setAppIcon(QWidget& window, const Icons& icons);

} // namespace platform
