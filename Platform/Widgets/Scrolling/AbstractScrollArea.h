// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"
#include "Platform/Widgets/Scrolling/ScrollMotion.h"

#include <QWidget>

class QScrollPrepareEvent;

namespace platform {

class OverlayScrollBar;

/// A widget whose content may be longer than itself: the one way to scroll. ScrollArea has one
/// widget as its content, LazyColumn many rows. A vertical area has a bar over its trailing edge, a
/// horizontal one none.
///
/// Every area scrolls by the wheel (so many lines a notch as the desktop says, gliding), by the
/// touchpad and by touch (running out), and, with the focus anywhere inside, by the arrow keys; a
/// vertical one by Page Up, Page Down, Space, Home, End and its bar, too; a horizontal one by being
/// dragged. What the focus moves to is brought into view. Where motion is disabled, nothing glides
/// or runs out. Main thread only.
class AbstractScrollArea : public QWidget {
    Q_OBJECT

public:
    /// `theme` outlives the area.
    AbstractScrollArea(const Theme& theme, QWidget* parent, Qt::Orientation orientation);
    ~AbstractScrollArea() override;

    /// The innermost area that a widget lies in; none (null) if it lies in none.
    static AbstractScrollArea* around(const QWidget* widget);

    /// How far the content has moved towards its start, in pixels: 0 to maximum().
    int offset() const { return m_offset; }
    int maximum() const;
    /// Whether the end is in view, or was when the content was last laid out.
    bool isAtEnd() const { return m_offset >= m_laidOut; }
    /// Whether the start is in view. Tracked by observe().
    bool showsStart() const { return m_showsStart.value(); }
    /// The same of the end, also while scrollToEnd() is on its way. Tracked by observe().
    bool showsEnd() const { return m_showsEnd.value(); }
    /// Whether the user has scrolled away from the end, by whatever means, and has not come back.
    bool isHeldByUser() const { return m_isHeldByUser; }
    /// Scrolls at once, for the user, and ends any other movement.
    void setOffset(int offset);

    /// Brings the end into view: at once, or in 0.2 s easing out where motion is enabled. The
    /// moving end of a content that grows meanwhile is followed.
    void scrollToEnd(bool animated);
    /// Whether an animated scrollToEnd() is under way.
    bool isScrollingToEnd() const { return m_motion.isGoingToEnd(); }

    /// Scrolls by a key that means that (see above); returns whether it does.
    bool scrollByKey(const QKeyEvent& event);

    /// Brings a part of a widget inside into view, as little as is needed.
    void reveal(const QWidget* inside, const QRect& part);

protected:
    /// How long the whole content is, in pixels.
    virtual int contentLength() const = 0;
    /// Puts the content where size and offset say; ends with a call of updateBar().
    virtual void layOut() = 0;
    /// Called before layOut() when the offset was changed on purpose.
    virtual void offsetChanged() {}

    /// Sets the offset within its limits; for layOut(), so nothing is laid out.
    void adoptOffset(int offset);
    void updateBar();

    bool isVertical() const { return m_orientation == Qt::Vertical; }
    /// The same place seen from the other side where text goes from right to left.
    QRect mirrored(const QRect& rect) const;

    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent*) override { layOut(); }
    void wheelEvent(QWheelEvent* event) override;

private:
    bool isMirrored() const { return !isVertical() && isRightToLeft(); }
    template <class Point>
    auto along(const Point& point) const {
        return isVertical() ? point.y() : point.x();
    }
    int length() const { return isVertical() ? height() : width(); }
    qreal wheelDistance(const QPoint& delta, Qt::KeyboardModifiers modifiers) const;
    int lineStep() const;
    int pageStep() const;
    void moveTo(int offset, bool isByUser);
    void scrollBy(qreal distance);
    void prepareTouch(QScrollPrepareEvent& event);

    const Theme& m_theme;
    const Qt::Orientation m_orientation;
    OverlayScrollBar* m_bar = nullptr; // of a vertical area
    int m_offset = 0;
    int m_laidOut = 0; // the maximum then
    Observed<bool> m_showsStart{true};
    Observed<bool> m_showsEnd{true};
    bool m_isHeldByUser = false;
    qreal m_fraction = 0; // of a pixel that was moved beyond m_offset
    ScrollMotion m_motion;
    qreal m_touched = 0; // where a touch, or its run-out, has the content
    bool m_showsFocusRing = false;
};

} // namespace platform
