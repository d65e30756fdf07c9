// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/LazyColumn.h"

#include <QAccessible>
#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QScopedValueRollback>

#include <algorithm>

namespace platform {
namespace {

void discard(QWidget* widget) {
    if (!widget)
        return;
    widget->hide();
    widget->deleteLater(); // it may be what called
}

} // namespace

LazyColumn::LazyColumn(const Theme& theme, LazyRows& rows, QWidget* parent)
    : AbstractScrollArea(theme, parent, Qt::Vertical)
    , m_source(rows) {
    QAccessible::installFactory(makeAccessible); // once, however often it is called
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    reload();
}

// Rows

void LazyColumn::reload() {
    const qsizetype count = m_source.count();
    qsizetype same = 0;
    while (same < std::min(count, m_rows.size()) && m_source.key(same) == m_rows[same].key)
        ++same;
    QHash<QUuid, Row> others;
    for (qsizetype i = same; i < m_rows.size(); ++i)
        others.insert(m_rows[i].key, m_rows[i]);
    m_rows.resize(same);
    m_known = std::min(m_known, same);
    for (qsizetype i = same; i < count; ++i) {
        const QUuid key = m_source.key(i);
        m_rows.append(others.contains(key) ? others.take(key)
                                           : Row{key, m_source.estimatedHeight(i, rowWidth())});
    }
    for (const Row& gone : std::as_const(others))
        discard(gone.widget);
    for (qsizetype i = 0; i < count; ++i)
        if (m_rows[i].widget)
            m_source.update(i, m_rows[i].widget);
    layOut();
}

qsizetype LazyColumn::rowOf(const QWidget* widget) const {
    while (widget && widget->parentWidget() != this)
        widget = widget->parentWidget();
    const auto found = std::ranges::find(m_rows, widget, &Row::widget);
    return widget && found != m_rows.end() ? found - m_rows.begin() : -1;
}

qsizetype LazyColumn::rowWithKey(const QUuid& key, qsizetype guess) const {
    if (guess < m_rows.size() && m_rows[guess].key == key)
        return guess;
    const auto found = std::ranges::find(m_rows, key, &Row::key);
    return found != m_rows.end() ? found - m_rows.begin() : -1;
}

QRect LazyColumn::rowRect(qsizetype row) const {
    return {(width() - rowWidth()) / 2, top(row) - offset(), rowWidth(), m_rows[row].height};
}

// Heights. A new height costs nothing; the next question about a top adds up those from the first
// changed row on, so a column that grows at its end answers at once.

int LazyColumn::rowWidth() const {
    return std::max(1, std::min(width(), Theme::columnWidth) - 2 * Theme::defaultPadding);
}

void LazyColumn::setHeight(qsizetype row, int height) {
    if (std::exchange(m_rows[row].height, height) != height)
        m_known = std::min(m_known, row + 1);
}

int LazyColumn::top(qsizetype row) const {
    for (; m_known <= row; ++m_known)
        m_rows[m_known].top =
            m_known == 0 ? Theme::defaultPadding : bottom(m_known - 1) + Theme::rowSpacing;
    return m_rows[row].top;
}

int LazyColumn::contentLength() const {
    return Theme::defaultPadding +
           (m_rows.isEmpty() ? Theme::defaultPadding : bottom(m_rows.size() - 1));
}

/// The first row whose bottom lies below `y`, or the number of rows.
qsizetype LazyColumn::firstBelow(int y) const {
    if (!m_rows.isEmpty())
        top(m_rows.size() - 1);
    const auto row = std::ranges::partition_point(
        m_rows, [y](const Row& row) { return row.top + row.height <= y; });
    return row - m_rows.begin();
}

void LazyColumn::measure(qsizetype row) {
    const QWidget* widget = m_rows[row].widget;
    setHeight(row, widget->hasHeightForWidth() ? widget->heightForWidth(m_width)
                                               : widget->sizeHint().height());
    m_rows[row].isMeasured = true;
}

// Layout

void LazyColumn::layOut() {
    if (m_isLayingOut || !m_hasSize)
        return;
    const QScopedValueRollback guard(m_isLayingOut, true);
    const bool isNewWidth = std::exchange(m_width, rowWidth()) != rowWidth();
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].widget) {
            measure(i);
        } else if (isNewWidth) {
            m_rows[i].isMeasured = false;
            setHeight(i, m_source.estimatedHeight(i, m_width));
        }
    }
    // Building a row corrects its height, which can bring further rows into the zone.
    const int margin = height() / 2;
    do {
        const qsizetype anchor = rowWithKey(m_anchor, m_anchorRow);
        adoptOffset(anchor < 0 ? offset() : top(anchor) - m_anchorY);
    } while (build(firstBelow(offset() - margin), firstBelow(offset() + height() + margin)));
    release(offset() - 3 * margin, offset() + height() + 3 * margin);
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (QWidget* widget = m_rows[i].widget) {
            widget->setGeometry(rowRect(i));
            widget->show();
        }
    }
    updateBar();
    offsetChanged();
}

/// Makes the widgets of the rows up to and with `last`; returns whether there were any to make.
bool LazyColumn::build(qsizetype first, qsizetype last) {
    bool anything = false;
    for (qsizetype i = first; i < m_rows.size() && i <= last; ++i) {
        if (m_rows[i].widget)
            continue;
        m_rows[i].widget = m_source.make(i, this);
        m_rows[i].widget->ensurePolished();
        m_source.setCurrent(m_rows[i].widget, hasFocus() && m_rows[i].key == m_current);
        measure(i);
        anything = true;
    }
    if (anything)
        orderTabs();
    return anything;
}

/// Destroys the widgets outside of a zone that nobody needs.
void LazyColumn::release(int from, int to) {
    const qsizetype withFocus = rowOf(QApplication::focusWidget());
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        QWidget*& widget = m_rows[i].widget;
        const bool isNear = bottom(i) > from && top(i) < to;
        if (widget && !isNear && i != withFocus && !m_source.isInUse(widget))
            discard(std::exchange(widget, nullptr));
    }
}

void LazyColumn::offsetChanged() {
    m_anchor = {};
    qsizetype row = firstBelow(offset());
    if (row == m_rows.size())
        return;
    for (qsizetype i = row; i < m_rows.size() && top(i) < offset() + height(); ++i) {
        if (m_rows[i].isMeasured) {
            row = i;
            break;
        }
    }
    m_anchor = m_rows[row].key;
    m_anchorRow = row;
    m_anchorY = top(row) - offset();
}

/// The Tab key goes through the rows from top to bottom, in whatever order they were made.
void LazyColumn::orderTabs() {
    QWidget* last = this;
    for (const Row& row : m_rows) {
        if (!row.widget)
            continue;
        QWidgetList inside = row.widget->findChildren<QWidget*>();
        inside.prepend(row.widget);
        for (QWidget* widget : std::as_const(inside)) {
            if (widget->focusPolicy() == Qt::NoFocus)
                continue;
            setTabOrder(last, widget);
            last = widget;
        }
    }
}

// Keyboard

QWidget* LazyColumn::showRow(qsizetype row) {
    if (!m_rows[row].widget) // else reveal() goes no further than it must
        setOffset(top(row) - Theme::defaultPadding);
    reveal(m_rows[row].widget, m_rows[row].widget->rect());
    return m_rows[row].widget;
}

void LazyColumn::setCurrentRow(qsizetype row) {
    m_current = m_rows[row].key;
    showRow(row);
    showCurrent();
    QAccessibleEvent event(this, QAccessible::Focus);
    event.setChild(static_cast<int>(row));
    QAccessible::updateAccessibility(&event);
}

void LazyColumn::showCurrent() {
    for (const Row& row : std::as_const(m_rows))
        if (row.widget)
            m_source.setCurrent(row.widget, hasFocus() && row.key == m_current);
}

void LazyColumn::keyPressEvent(QKeyEvent* event) {
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const int key = event->key();
    const bool isOn = key == Qt::Key_Down || key == Qt::Key_End;
    const bool isStep = key == Qt::Key_Up || key == Qt::Key_Down;
    if (!isPlain || m_rows.isEmpty() || !(isStep || key == Qt::Key_Home || key == Qt::Key_End)) {
        AbstractScrollArea::keyPressEvent(event);
        return;
    }
    const qsizetype last = m_rows.size() - 1;
    const qsizetype inside = rowOf(QApplication::focusWidget());
    const qsizetype from = inside < 0 ? rowWithKey(m_current) : inside;
    const QRect shown = from < 0 ? QRect() : rowRect(from);
    const bool hasMore = isOn ? shown.bottom() >= height() : shown.top() < 0;
    if (isStep && hasMore && shown.intersects(rect()) && scrollByKey(*event))
        return;
    const qsizetype next = isOn ? from + 1 : from - 1;
    if (!hasFocus())
        setFocus(Qt::TabFocusReason);
    setCurrentRow(isStep ? std::clamp<qsizetype>(next, 0, last) : isOn ? last : 0);
}

void LazyColumn::focusInEvent(QFocusEvent* event) {
    AbstractScrollArea::focusInEvent(event);
    const bool isByKey =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && !m_rows.isEmpty()) {
        const qsizetype known = rowWithKey(m_current);
        const qsizetype lowest = std::min(firstBelow(offset() + height() - 1), m_rows.size() - 1);
        setCurrentRow(known < 0 ? lowest : known);
    }
    showCurrent();
}

void LazyColumn::focusOutEvent(QFocusEvent* event) {
    AbstractScrollArea::focusOutEvent(event);
    showCurrent();
}

void LazyColumn::paintEvent(QPaintEvent* event) {
    if (currentRow() < 0) // else that shows the focus
        AbstractScrollArea::paintEvent(event);
}

void LazyColumn::resizeEvent(QResizeEvent*) {
    const bool wasAtEnd = offset() > 0 && isAtEnd();
    m_hasSize = true;
    layOut();
    if (wasAtEnd)
        scrollToEnd(false);
}

} // namespace platform
