// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"
#include "Platform/Widgets/Scrolling/KineticScroll.h"
#include "Platform/Widgets/Scrolling/LazyRows.h"
#include "Platform/Widgets/Scrolling/RowHeights.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

#include <optional>
#include <vector>

namespace platform {

class OverlayScrollBar;

/// A scrolling column of many rows, of which only those near the visible area exist as widgets.
///
/// The rows stand below each other in a centred column of limited width. What is visible stays
/// where it is when rows above it come, go or change their height, and when a guessed height turns
/// out wrong. A column whose end is visible keeps its end visible when it is resized.
///
/// Wheel, touchpad (running out), touch, the scroll bar, and with the focus anywhere inside Up,
/// Down, Page Up, Page Down, Home and End scroll it. A widget inside that asks for a new height
/// with updateGeometry() gets it by the next turn of the event loop.
class LazyColumn : public QWidget {
    Q_OBJECT

public:
    /// `theme` and `rows` outlive the column.
    LazyColumn(const Theme& theme, LazyRows& rows, QWidget* parent = nullptr);
    ~LazyColumn() override;

    /// Takes over the rows as they are now: finds by their keys those that came, went or moved, and
    /// has the widgets that exist updated. Costs a comparison of keys for each row.
    void reload();

    /// Has one row's widget updated, if it exists.
    void reloadRow(qsizetype row);

    /// Brings the end into view: at once, or in 0.2 s easing out where motion is enabled. The
    /// moving end of a column that grows meanwhile is followed.
    void scrollToBottom(bool animated);

    /// Brings a row into view, as little as is needed.
    void scrollToRow(qsizetype row);

    /// Brings a part of a widget inside into view, as little as is needed.
    void reveal(const QWidget* inside, const QRect& part);

    /// Scrolls for one of the keys that scroll, as if the column had the focus; false for others.
    bool scrollForKey(int key);

    int scrollPosition() const { return m_scroll; }
    int maximumScroll() const;
    void setScrollPosition(int position);
    bool isAtBottom() const { return m_scroll >= maximumScroll(); }
    bool isScrollAnimated() const { return m_animation.state() == QVariantAnimation::Running; }

    /// The widget of a row, none while the row is far from the visible area.
    QWidget* widgetOf(qsizetype row) const;
    /// The row of a widget that is one or lies in one, none (-1) for others.
    qsizetype rowOf(const QWidget* widget) const;
    qsizetype rowWithKey(const QUuid& key) const;
    /// How many rows have widgets.
    qsizetype builtCount() const;
    /// Where a row stands, in the column's coordinates; guessed far from the visible area.
    QRect rowRect(qsizetype row) const;

    const LazyRows& rows() const { return m_source; }
    OverlayScrollBar& scrollBar() { return *m_bar; }

protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct Row {
        QUuid key;
        QWidget* widget = nullptr;
        bool isMeasured = false;
    };
    /// The row that stays where it is, and how far below the upper edge its top is.
    struct Anchor {
        QUuid key;
        int offset = 0;
    };
    enum class Hold { Anchor, Bottom };

    void layOut(Hold hold);
    bool build(std::size_t first, std::size_t last);
    bool measure(std::size_t row);
    void release(int from, int to);
    void place();
    void destroy(QWidget* widget);
    void orderTabs();
    void noteAnchor();
    std::optional<std::size_t> indexOf(const QUuid& key) const;
    void restoreAnchor();
    int rowWidth() const;
    void moveTo(int position);
    void scrollBy(qreal distance);
    void stopMotion();
    void followSelection();
    void focusMoved(QWidget* now);

    const Theme& m_theme;
    LazyRows& m_source;
    OverlayScrollBar* m_bar;
    std::vector<Row> m_rows;
    RowHeights m_heights;
    int m_width = -1; // of a row, that the heights belong to
    int m_scroll = 0;
    qreal m_fraction = 0; // of a pixel that the wheel has moved beyond m_scroll
    Anchor m_anchor;
    bool m_isLayingOut = false;
    bool m_hasSize = false; // nothing is built for a size that is still to come

    QVariantAnimation m_animation;
    int m_remaining = 0; // to the bottom when the animation began
    KineticScroll m_kinetic;
    QBasicTimer m_kineticTimer;
    QElapsedTimer m_clock;
    QBasicTimer m_selectionTimer; // while a selection is drawn beyond an edge
    QPointF m_selectionPoint;     // on the screen
    bool m_showsFocus = false;
};

} // namespace platform
