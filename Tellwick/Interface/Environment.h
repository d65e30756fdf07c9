// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"
#include "Platform/Widgets/Controls/WindowButtons.h"

#include <optional>

namespace platform {
class OverlayHost;
class Theme;
class UrlOpener;
} // namespace platform

namespace tellwick {

/// What the screens ask of the desktop. One set for the program; all of it outlives the views.
struct Services {
    const platform::Theme& theme;
    const platform::UrlOpener& urlOpener;
    /// The buttons that the window's header has as its title bar; none: the desktop draws one.
    const platform::Observed<std::optional<platform::WindowButtonLayout>>& windowButtons;
};

/// What every screen of a window draws on: the services, and the layer on which that window shows
/// its popovers, sheets and alerts. Handed down from the window to each view that it builds.
struct Environment : Services {
    platform::OverlayHost& overlays;
};

} // namespace tellwick
