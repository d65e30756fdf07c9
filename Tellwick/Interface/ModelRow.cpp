// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModelRow.h"

#include "Tellwick/Core/ModelBackend.h"

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::ColorRole;

ModelRow::ModelRow(const platform::Theme& theme, const ModelBackend& backend, bool isSelected,
                   std::function<void()> onSelect)
    : ListRow(theme) {
    show(backend, isSelected, std::move(onSelect));
}

void ModelRow::show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect) {
    const ModelInfo& info = backend.info();
    setName(info.name());
    setDetail(info.detail.value_or(QString()));
    setSelected(isSelected);
    setAction(std::move(onSelect));
    // That a model cannot be used matters more than that it is the chosen one.
    if (!backend.isAvailable())
        setMark({.text = u"Unavailable"_s,
                 .icon = {},
                 .color = ColorRole::Orange,
                 .name = u"Unavailable"_s});
    else if (isSelected)
        setMark({.text = {},
                 .icon = u"checkmark"_s,
                 .color = ColorRole::Accent,
                 .name = u"Selected"_s});
    else
        setMark({});
}

} // namespace tellwick
