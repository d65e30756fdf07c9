// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Button.h"
#include "Tellwick/Core/ModelInfo.h"

namespace platform {
class IconView;
class Label;
} // namespace platform

namespace tellwick {

class ModelBackend;

/// One model in the list: its name, its detail where it has one, and a mark at the trailing end.
/// The whole row is one button.
class ModelRow final : public platform::Button {
    Q_OBJECT

public:
    ModelRow(const platform::Theme& theme, const ModelBackend& backend, bool isSelected,
             std::function<void()> onSelect, QWidget* parent = nullptr);

    /// Shows another model, or the same in another state, in the same row.
    void show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect);

    QSize sizeHint() const override;
    QAccessible::Role accessibleRole() const override { return QAccessible::RadioButton; }
    QString accessibleDetail() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    platform::Label* m_name;
    platform::Label* m_detail;
    platform::Label* m_unavailable;
    platform::IconView* m_checkmark;
};

} // namespace tellwick
