// SPDX-License-Identifier: MIT
#pragma once

#include <QPainterPath>

#include <optional>
#include <string_view>

namespace platform {

/// Reads path data as SVG writes it (the commands M L H V C S Q T A Z, absolute and relative, with
/// its terse number forms); none if it is malformed.
std::optional<QPainterPath> svgPath(std::string_view data);

} // namespace platform
