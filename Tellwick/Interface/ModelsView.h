// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Interface/Environment.h"

#include <QWidget>

namespace platform {
class InsetSection;
}

namespace tellwick {

class ModelManager;

/// The models that can answer, and the choice among them: the on-device model first, then those of
/// the local server, with a button that reads the server's list again. Shown in a popover, which
/// scrolls and closes it. Each time it appears it asks the server for its list.
class ModelsView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 360;

    ModelsView(const Environment& environment, ModelManager& modelManager,
               QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* list();
    platform::InsetSection* onDeviceSection();
    platform::InsetSection* otherModelsSection();
    QWidget* refreshButton();
    QWidget* emptyListNotice();

    const Environment& m_environment;
    ModelManager& m_modelManager;
};

} // namespace tellwick
