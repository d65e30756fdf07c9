// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

namespace platform {
class Theme;
}

namespace tellwick {

/// What stands in the place of a conversation that has no message yet: who is there to answer, the
/// welcome, and below that the way to a writing mode.
class Greeting final : public QWidget {
    Q_OBJECT

public:
    /// `theme` outlives it. Takes `modes`, what offers the writing modes.
    Greeting(const platform::Theme& theme, QWidget* modes);
};

} // namespace tellwick
