// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"

namespace platform {

/// A capsule with a symbol and a label that is on or off: a toggle button. Its owner sets the state
/// with setChecked(); a press only runs the action.
class Chip final : public Button {
    Q_OBJECT

public:
    Chip(const Theme& theme, const QString& label, QString icon, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// The accessibility bus of Qt 6.4 has no toggle buttons, and few screen readers say of a plain
    /// button that it is pressed: so it is said here, too.
    QString accessibleDetail() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_icon;
};

} // namespace platform
