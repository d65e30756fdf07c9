// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/PullDownButton.h"

#include "Platform/Widgets/Overlays/OverlayHost.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace platform {

PullDownButton::PullDownButton(const Theme& theme, const QString& name, const QString& icon,
                               OverlayHost& host, std::function<std::vector<MenuEntry>()> entries,
                               QWidget* parent)
    : Button(theme, Look::Icon, name, icon, parent)
    , m_host(host)
    , m_entries(std::move(entries)) {}

void PullDownButton::openMenu() {
    if (m_menu != nullptr)
        return;
    const auto closed = [self = QPointer(this)] {
        if (self != nullptr)
            self->setMenu(nullptr);
    };
    setMenu(m_host.present(std::make_unique<Menu>(theme(), text(), m_entries(), QPoint(), this),
                           closed));
}

void PullDownButton::openMenuAtFirst() {
    openMenu();
    m_menu->focusFirst();
}

void PullDownButton::setMenu(Menu* menu) {
    m_menu = menu;
    setDown(menu != nullptr);
    QAccessible::State changed;
    changed.expanded = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
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

void PullDownButton::performAccessibleAction(const QString& /*name*/) {
    openMenuAtFirst();
}

void PullDownButton::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        openMenuAtFirst();
        break;
    default:
        Button::keyPressEvent(event);
    }
}

void PullDownButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        openMenu();
}

void PullDownButton::mouseMoveEvent(QMouseEvent* event) {
    auto* row = m_menu == nullptr ? nullptr : m_menu->rowAt(event->globalPosition().toPoint());
    if (row != nullptr && !row->hasFocus())
        row->setFocus(Qt::MouseFocusReason);
}

void PullDownButton::mouseReleaseEvent(QMouseEvent* event) {
    auto* row = m_menu == nullptr ? nullptr : m_menu->rowAt(event->globalPosition().toPoint());
    if (row != nullptr)
        row->click();
}

} // namespace platform
