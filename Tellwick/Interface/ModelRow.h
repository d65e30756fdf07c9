// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/ListRow.h"

namespace tellwick {

class ModelBackend;

/// One model in the list: its name, its detail where it has one, and at the trailing end
/// "Unavailable" or the checkmark of the selection. The whole row is one button.
class ModelRow final : public platform::ListRow {
    Q_OBJECT

public:
    ModelRow(const platform::Theme& theme, const ModelBackend& backend, bool isSelected,
             std::function<void()> onSelect);

    /// Shows another model, or the same in another state, in the same row.
    void show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect);
};

} // namespace tellwick
