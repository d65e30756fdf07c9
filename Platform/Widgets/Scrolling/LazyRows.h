// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUuid>

class QWidget;

namespace platform {

/// What a LazyColumn shows: the rows by number, from 0 at the top, each with a key that stays its
/// own. Implemented by the column's owner. Main thread only.
class LazyRows {
public:
    virtual ~LazyRows() = default;

    virtual qsizetype count() const = 0;

    /// The identity of a row: a row that has moved is found again by it. Called for every row at
    /// every LazyColumn::reload(), so it has to be cheap.
    virtual QUuid key(qsizetype row) const = 0;

    /// Makes the widget of a row that comes near the visible area, showing the row's content. Its
    /// height is its heightForWidth() or, if it has none, its size hint's. The column destroys it.
    virtual QWidget* make(qsizetype row, QWidget* parent) = 0;

    /// Shows the row's present content in the widget that make() has made for it.
    virtual void update(qsizetype row, QWidget* widget) = 0;

    /// Shows in a row's widget whether it is the one that the keyboard is at.
    virtual void setCurrent(QWidget* widget, bool isCurrent) = 0;

    /// A guess at the height of a row that has no widget, in pixels. It need not be good: the
    /// column learns the height before the row is seen. Cheap, for it is asked of all rows.
    virtual int estimatedHeight(qsizetype row, int width) const = 0;

    /// What assistive technology reads out for a row, also while it has no widget.
    virtual QString accessibleName(qsizetype row) const = 0;

    /// Whether a widget far from the visible area must not be destroyed: it holds something of the
    /// user's, a selection for instance. One with the keyboard focus is kept in any case.
    virtual bool isInUse(const QWidget* widget) const = 0;
};

} // namespace platform
