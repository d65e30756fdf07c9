// SPDX-License-Identifier: MIT
#pragma once

#include "Setup/SetupState.h"
#include "Setup/StatusRow.h"

#include <QWidget>

namespace platform {
class Button;
class ListRow;
class Theme;
} // namespace platform

namespace setup {

/// The model: which one, from where and into which folder, and how far it is. While one is being
/// fetched, the others are out of sight.
class ModelSection final : public QWidget {
    Q_OBJECT

public:
    /// The state has its offers, and outlives the section, as do theme and actions.
    ModelSection(const platform::Theme& theme, const SetupState& state,
                 const SetupActions& actions);

    StatusRow& status() { return *m_status; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* offerRow(qsizetype index);
    QWidget* ownFileRow();
    QWidget* fileButton();
    void askForFile();

    const ModelOffer& chosen() const;
    bool isUnderWay() const;
    /// Whether a file of the user's own is what serves.
    bool usesOwnFile() const;
    QString footer() const;
    StatusRow::Status current() const;
    StatusRow::Status failed() const;
    /// What the button does now.
    void goOn();

    const platform::Theme& m_theme;
    const SetupState& m_state;
    const SetupActions& m_actions;
    StatusRow* m_status;
    platform::Observed<bool> m_triedFile{false}; ///< the last thing asked for
};

} // namespace setup
