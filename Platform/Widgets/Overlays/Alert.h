// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Overlays/OverlaySurface.h"

namespace platform {

class Button;
class ScrollView;

/// A message over the dimmed window, with one button. Closed by the button, Return or Escape, not
/// by a click beside it.
class Alert final : public OverlaySurface {
    Q_OBJECT

public:
    Alert(const Theme& theme, const QString& title, const QString& message, const QString& button);

    QRect place(const QRect& area) override;
    bool dimsGround() const override { return true; }
    bool closesOnOutsideClick() const override { return false; }
    QWidget* initialFocus() override;
    QAccessible::Event openingEvent() const override { return QAccessible::Alert; }
    QAccessible::Role accessibleRole() const override { return QAccessible::AlertMessage; }
    QString accessibleDetail() const override { return m_message; }

protected:
    ColorRole ground() const override { return ColorRole::Sheet; }
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString m_message;
    ScrollView* m_scroll;
    Button* m_button;
};

} // namespace platform
