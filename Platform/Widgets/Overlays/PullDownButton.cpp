// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/PullDownButton.h"

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

PullDownButton::PullDownButton(const Theme& theme, const QString& name, const QString& icon,
                               OverlayHost& host, std::function<std::vector<MenuEntry>()> entries)
    : Button(theme, Look::Icon, name, icon)
    , m_host(host)
    , m_entries(std::move(entries)) {}

void PullDownButton::openMenu() {
    if (m_menu != nullptr)
        return;
    auto menu = std::make_unique<Menu>(theme(), text(), m_entries(), QPoint(), this);
    auto* shown = menu.get();
    m_host.present(std::move(menu), [self = QPointer(this)] {
        if (self != nullptr)
            self->setMenu(nullptr);
    });
    setMenu(shown);
}

void PullDownButton::openMenuAtFirst() {
    openMenu();
    m_menu->focusRow(0);
}

void PullDownButton::setMenu(Menu* menu) {
    m_menu = menu;
    setDown(menu != nullptr);
    QAccessible::State changed;
    changed.expanded = true;
    tellChanged(this, changed);
}

void PullDownButton::addAccessibleState(QAccessible::State& state) const {
    Button::addAccessibleState(state);
    state.hasPopup = true;
    state.expandable = true;
    state.expanded = m_menu != nullptr;
    state.collapsed = m_menu == nullptr;
}

QStringList PullDownButton::accessibleActions() const {
    return {QAccessibleActionInterface::showMenuAction(),
            QAccessibleActionInterface::pressAction()};
}

void PullDownButton::keyPressEvent(QKeyEvent* event) {
    constexpr std::array<int, 4> opening{Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter,
                                         Qt::Key_Down};
    if (std::ranges::find(opening, event->key()) != opening.end())
        openMenuAtFirst();
    else
        Button::keyPressEvent(event);
}

void PullDownButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        openMenu();
}

Button* PullDownButton::rowUnder(const QMouseEvent* event) const {
    return m_menu == nullptr ? nullptr : m_menu->rowAt(event->globalPosition().toPoint());
}

void PullDownButton::mouseMoveEvent(QMouseEvent* event) {
    if (auto* row = rowUnder(event))
        row->setFocus(Qt::MouseFocusReason);
}

void PullDownButton::mouseReleaseEvent(QMouseEvent* event) {
    if (auto* row = rowUnder(event))
        row->click();
}

} // namespace platform
