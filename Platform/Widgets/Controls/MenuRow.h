// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"

namespace platform {

/// An entry of a menu. The one with the focus is highlighted; the pointer brings the focus along.
class MenuRow final : public Button {
    Q_OBJECT

public:
    MenuRow(const Theme& theme, const QString& title, QString icon, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }
    QAccessible::Role accessibleRole() const override { return QAccessible::MenuItem; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    QString m_icon;
};

} // namespace platform
