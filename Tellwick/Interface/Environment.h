// SPDX-License-Identifier: MIT
#pragma once

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
};

/// What every screen of a window draws on: the services, and the layer on which that window shows
/// its popovers, sheets and alerts. Handed down from the window to each view that it builds.
struct Environment : Services {
    platform::OverlayHost& overlays;
};

} // namespace tellwick
