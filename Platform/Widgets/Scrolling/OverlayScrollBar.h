// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QBasicTimer>
#include <QScrollBar>
#include <QVariantAnimation>

namespace platform {

/// A thin vertical scroll bar that lies over the content it scrolls.
///
/// It is seen for a moment after the user has scrolled (its owner calls flash()) and while the
/// pointer is over it, and then fades; it takes no room and no focus, and is hidden while there is
/// nothing to scroll.
class OverlayScrollBar final : public QScrollBar {
    Q_OBJECT

public:
    explicit OverlayScrollBar(const Theme& theme, QWidget* parent = nullptr);

    /// Shows the bar for a moment.
    void flash();

    /// Where the thumb stands.
    QRect thumb() const;

protected:
    void enterEvent(QEnterEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void sliderChange(SliderChange change) override;
    void timerEvent(QTimerEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    const Theme& m_theme;
    QBasicTimer m_shown;
    QVariantAnimation m_fade; // what is seen of it, from 1 to 0
};

} // namespace platform
