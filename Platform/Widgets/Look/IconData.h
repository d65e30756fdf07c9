// SPDX-License-Identifier: MIT
#pragma once

#include <span>

namespace platform {

/// One path of an icon's drawing, in the square from (0, 0) to (16, 16).
struct IconPart {
    const char* name;   ///< the icon; its parts follow each other
    const char* path;   ///< path data as in SVG
    double strokeWidth; ///< 0: filled
    bool isEvenOdd;
};

/// The parts of all icons.
std::span<const IconPart> iconParts();

} // namespace platform
