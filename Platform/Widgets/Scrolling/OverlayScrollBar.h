// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QAbstractSlider>
#include <QBasicTimer>

namespace platform {

/// A thin vertical scroll bar that lies over the content it scrolls.
///
/// It is seen for a moment after the user has scrolled (its owner calls flash()) and while the
/// pointer is over it; it takes no room and no focus. Used as any slider: range, page step, value.
class OverlayScrollBar : public QAbstractSlider, public AccessibleElement {
    Q_OBJECT

public:
    explicit OverlayScrollBar(const Theme& theme, QWidget* parent = nullptr);

    /// Shows the bar for a moment.
    void flash();
    bool isShown() const { return m_isShown; }

    /// Where the thumb stands; empty when there is nothing to scroll.
    QRect thumb() const;

    QSize sizeHint() const override;

    QAccessible::Role accessibleRole() const override { return QAccessible::ScrollBar; }
    /// Not there for assistive technology while there is nothing to scroll.
    void addAccessibleState(QAccessible::State& state) const override;

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void sliderChange(SliderChange change) override;
    void timerEvent(QTimerEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    int travel() const;

    const Theme& m_theme;
    bool m_isShown = false;
    bool m_isHovered = false;
    int m_grip = 0; // between the pointer and the thumb's top
    QBasicTimer m_hide;
};

} // namespace platform
