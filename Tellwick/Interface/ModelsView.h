// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/ListRow.h"
#include "Tellwick/Backends/ModelManager.h"
#include "Tellwick/Interface/Environment.h"

#include <QWidget>

namespace platform {
class InsetSection;
}

namespace tellwick {

/// One model in the list: its name, its detail where it has one, and at the trailing end
/// "Unavailable" or the checkmark of the selection. The whole row is one button.
class ModelRow final : public platform::ListRow {
    Q_OBJECT

public:
    using ListRow::ListRow;

    /// Shows a model, or the same in another state.
    void show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect);
};

/// The models that can answer, and the choice among them: the on-device model first, then those of
/// the local server, with a button that reads the server's list again. Shown in a popover, which
/// scrolls and closes it. Each time it appears it asks the server for its list.
class ModelsView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 360;

    ModelsView(const Environment& environment, ModelManager& modelManager);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* list();
    platform::InsetSection* onDeviceSection();
    platform::InsetSection* otherModelsSection();
    QWidget* refreshButton();
    QWidget* emptyListNotice();
    void showIn(ModelRow& row, const ModelManager::Backend& backend);

    const Environment& m_environment;
    ModelManager& m_modelManager;
};

} // namespace tellwick
