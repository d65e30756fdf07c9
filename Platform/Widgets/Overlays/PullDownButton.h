// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Overlays/Menu.h"

#include <QPointer>

#include <functional>
#include <vector>

namespace platform {

class OverlayHost;

/// A symbol that opens a menu: on the press of the pointer, whose release over an entry chooses it,
/// or by Space, Return and Down.
class PullDownButton final : public Button {
    Q_OBJECT

public:
    /// The host outlives the button's use. `entries` is asked each time the menu opens.
    PullDownButton(const Theme& theme, const QString& name, const QString& icon, OverlayHost& host,
                   std::function<std::vector<MenuEntry>()> entries);

    QAccessible::Role accessibleRole() const override { return QAccessible::ButtonMenu; }
    void addAccessibleState(QAccessible::State& state) const override;
    QStringList accessibleActions() const override;
    void performAccessibleAction() override { openMenuAtFirst(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void openMenu();
    void openMenuAtFirst();
    void setMenu(Menu* menu);
    /// The row of the open menu that a pressed pointer has been drawn to; none: null.
    Button* rowUnder(const QMouseEvent* event) const;

    OverlayHost& m_host;
    std::function<std::vector<MenuEntry>()> m_entries;
    QPointer<Menu> m_menu;
};

} // namespace platform
