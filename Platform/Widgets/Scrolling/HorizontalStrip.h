// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QHBoxLayout;

namespace platform {

/// A row of widgets that scrolls sideways where it does not fit, without scroll bars, and stands in
/// the middle where it does. Wheel, touchpad and dragging move it; a widget in it that takes the
/// focus is brought into view.
class HorizontalStrip final : public QWidget {
    Q_OBJECT

public:
    /// @param spacing between the widgets, @param padding before the first and behind the last;
    /// pixels.
    HorizontalStrip(int spacing, int padding, QWidget* parent = nullptr);

    /// Adds a widget behind the others. Takes ownership.
    void add(QWidget* widget);

    /// How far the row is moved towards its start, 0 to maximum(), in pixels.
    int offset() const { return m_offset; }
    int maximum() const;
    void setOffset(int offset);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void place();
    void reveal(const QWidget* widget);

    QWidget* m_row;
    QHBoxLayout* m_layout;
    int m_offset = 0;
    int m_pressedX = 0;
    int m_pressedOffset = 0;
    bool m_isDragging = false;
};

} // namespace platform
