// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/PullDownButton.h"

#include "Platform/Widgets/Overlays/OverlayHost.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace platform {

PullDownButton::PullDownButton(const Theme& theme, const QString& name, QString icon,
                               OverlayHost& host, QWidget* parent)
    : Button(theme, Look::Icon, name, std::move(icon), parent)
    , m_host(host) {}

void PullDownButton::setEntries(std::function<std::vector<MenuEntry>()> entries) {
    m_entries = std::move(entries);
}

void PullDownButton::openMenu(bool startsAtFirst) {
    if (m_menu != nullptr || !m_entries)
        return;
    auto menu = std::make_unique<Menu>(theme(), text(), m_entries(), this);
    menu->setStartsAtFirst(startsAtFirst);
    const auto announce = [](PullDownButton* button) {
        QAccessible::State changed;
        changed.expanded = true;
        QAccessibleStateChangeEvent event(button, changed);
        QAccessible::updateAccessibility(&event);
    };
    setDown(true);
    const QPointer<PullDownButton> self(this);
    m_menu = m_host.present(std::move(menu), [self, announce] {
        if (self != nullptr) {
            self->m_menu = nullptr;
            self->setDown(false);
            announce(self);
        }
    });
    announce(this);
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
    openMenu(true);
}

void PullDownButton::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        openMenu(true);
        break;
    default:
        Button::keyPressEvent(event);
    }
}

void PullDownButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        openMenu(false);
}

void PullDownButton::mouseMoveEvent(QMouseEvent* event) {
    auto* row = m_menu == nullptr ? nullptr : m_menu->rowAt(event->globalPosition().toPoint());
    if (row != nullptr && !row->hasFocus())
        row->setFocus(Qt::MouseFocusReason);
}

void PullDownButton::mouseReleaseEvent(QMouseEvent* event) {
    if (m_menu != nullptr) {
        if (auto* row = m_menu->rowAt(event->globalPosition().toPoint()))
            row->click();
    }
}

} // namespace platform
