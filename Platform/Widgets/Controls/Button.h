// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QAbstractButton>

#include <functional>

namespace platform {

/// What all buttons of the interface share: Return and Space press them, Tab reaches them, a click
/// leaves the focus where it was, and the ring shows when the keyboard came here.
///
/// A button never changes its own checked state: it shows the state that its owner sets.
class Button : public QAbstractButton, public AccessibleElement {
    Q_OBJECT

public:
    Button(const Theme& theme, QWidget* parent);

    /// What a press does, by pointer, key or assistive technology. Replaces the former action.
    void setAction(std::function<void()> action) { m_action = std::move(action); }

    QAccessible::Role accessibleRole() const override { return QAccessible::Button; }
    void addAccessibleState(QAccessible::State& state) const override;
    QString accessibleText() const override { return text(); }
    QStringList accessibleActions() const override;
    void performAccessibleAction(const QString& name) override;

protected:
    const Theme& theme() const { return m_theme; }
    bool showsFocusRing() const { return m_showsFocusRing && hasFocus(); }
    /// Whether the pointer is over the button and a click would press it.
    bool isHovered() const { return underMouse() && isEnabled(); }

    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void nextCheckState() override {}

private:
    const Theme& m_theme;
    std::function<void()> m_action;
    bool m_showsFocusRing = false;
};

} // namespace platform
