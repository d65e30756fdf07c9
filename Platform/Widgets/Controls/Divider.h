// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Surface.h"

namespace platform {

/// A horizontal line between two areas.
class Divider final : public Surface {
    Q_OBJECT

public:
    explicit Divider(const Theme& theme)
        : Surface(theme, ColorRole::Divider) {
        setFixedHeight(1);
    }
};

} // namespace platform
