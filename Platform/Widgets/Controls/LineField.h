// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QLineEdit>

namespace platform {

/// A field for one line of text on a rounded background. Return and Escape are left to its parents.
/// Only a click elsewhere drops the selection; a menu or the way there and back by key does not.
class LineField final : public QLineEdit {
    Q_OBJECT

public:
    /// `theme` outlives the field. `name` is its placeholder and what assistive technology calls
    /// it.
    LineField(const Theme& theme, const QString& name, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    bool m_showsFocusRing = false;
};

} // namespace platform
