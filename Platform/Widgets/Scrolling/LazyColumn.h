// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/AbstractScrollArea.h"
#include "Platform/Widgets/Scrolling/LazyRows.h"

#include <QList>

class QAccessibleInterface;

namespace platform {

/// A vertical scroll area over many rows, of which only those near the visible part exist as
/// widgets.
///
/// The rows stand below each other in a centred column of limited width. What is visible stays
/// where it is when rows above it come, go or change their height, and when a guessed height turns
/// out wrong. A column whose end is visible keeps its end visible when it is resized.
///
/// With the keyboard focus in the column, Up, Down, Home and End go from row to row. The column
/// keeps the focus, the current row shows it. Of a row that is higher than the column, Up and Down
/// first show the rest.
///
/// For assistive technology it is a list with an item for each row, which says what
/// LazyRows::accessibleName() says (a row's widget with an interface of its own keeps that). The
/// item of a row without a widget has its name and its place only.
class LazyColumn final : public AbstractScrollArea {
    Q_OBJECT

public:
    /// `theme` and `rows` outlive the column.
    LazyColumn(const Theme& theme, LazyRows& rows, QWidget* parent = nullptr);

    /// Takes over the rows as they are now: finds by their keys those that came, went or moved, and
    /// has the widgets that exist updated. Costs a comparison of keys for each row.
    void reload();

    /// The widget of a row, none while the row is far from the visible area.
    QWidget* widgetOf(qsizetype row) const { return m_rows.value(row).widget; }
    /// The row of a widget that is one or lies in one, none (-1) for others.
    qsizetype rowOf(const QWidget* widget) const;
    /// The row of a key, looked for at `guess` first; none (-1) for others.
    qsizetype rowWithKey(const QUuid& key, qsizetype guess = 0) const;
    /// Where a row stands, in the column's coordinates; guessed far from the visible area.
    QRect rowRect(qsizetype row) const;

    /// The row that the keyboard is at, none (-1) while it is elsewhere.
    qsizetype currentRow() const { return hasFocus() ? rowWithKey(m_current) : -1; }

    /// Brings a row into view at once; returns its widget.
    QWidget* showRow(qsizetype row);
    /// The first row that is at least partly in view.
    qsizetype firstVisibleRow() const { return firstBelow(offset()); }

    /// Whether more rows are awaited, for assistive technology.
    bool isBusy() const { return m_isBusy; }
    void setBusy(bool isBusy);

    const LazyRows& rows() const { return m_source; }

protected:
    int contentLength() const override;
    void layOut() override;
    /// Notes the anchor, what stays where it is: the first visible row whose height is no guess.
    void offsetChanged() override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Row {
        QUuid key;
        int height = 0;
        QWidget* widget = nullptr;
        bool isMeasured = false; // and the height no guess
        mutable int top = 0;
    };

    static QAccessibleInterface* makeAccessible(const QString& className, QObject* object);

    bool build(qsizetype first, qsizetype last);
    void measure(qsizetype row);
    void setHeight(qsizetype row, int height);
    int top(qsizetype row) const;
    int bottom(qsizetype row) const { return top(row) + m_rows[row].height; }
    qsizetype firstBelow(int y) const;
    void release(int from, int to);
    void orderTabs();
    int rowWidth() const;
    void setCurrentRow(qsizetype row);
    void showCurrent();

    LazyRows& m_source;
    QList<Row> m_rows;
    mutable qsizetype m_known = 0; // tops before this row are right
    int m_width = -1;              // of a row, that the heights belong to
    QUuid m_anchor;
    qsizetype m_anchorRow = 0; // when it was noted
    int m_anchorY = 0;         // where the anchor's top is, below the upper edge
    QUuid m_current;           // where the keyboard is, or was last
    bool m_isBusy = false;
    bool m_isLayingOut = false;
    bool m_hasSize = false; // nothing is built for a size that is still to come
};

} // namespace platform
