// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"

#include "Platform/Observation/Observer.h"

#include <QKeyEvent>

namespace platform {

Button::Button(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover); // repaints as the pointer comes and goes
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (const auto action = m_action) // a copy: the action may replace or destroy us
            action();
    });
    observe(this, [this] {
        [[maybe_unused]] const auto color = m_theme.color(ColorRole::Label);
        [[maybe_unused]] const auto size = m_theme.bodySize();
        updateGeometry();
        update();
    });
}

void Button::addAccessibleState(QAccessible::State& state) const {
    state.pressed = isDown();
    if (isCheckable()) {
        state.checkable = true;
        state.checked = isChecked();
        state.pressed = isChecked();
    }
}

QStringList Button::accessibleActions() const {
    return {QAccessibleActionInterface::pressAction()};
}

void Button::performAccessibleAction(const QString& name) {
    if (name == QAccessibleActionInterface::pressAction())
        click();
}

void Button::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (isReturn && isPlain && !event->isAutoRepeat())
        click();
    else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Select)
        QAbstractButton::keyPressEvent(event);
    else
        event->ignore(); // arrows would walk to a sibling of no relation
}

void Button::focusInEvent(QFocusEvent* event) {
    const auto reason = event->reason();
    if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
        reason == Qt::ShortcutFocusReason)
        m_showsFocusRing = true;
    else if (reason != Qt::ActiveWindowFocusReason)
        m_showsFocusRing = false;
    QAbstractButton::focusInEvent(event);
}

} // namespace platform
