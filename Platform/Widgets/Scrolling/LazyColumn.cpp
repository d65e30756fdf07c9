// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/LazyColumn.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Scrolling/LazyColumnAccessible.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include <QAccessible>
#include <QApplication>
#include <QHash>
#include <QScroller>

#include <algorithm>

namespace platform {

LazyColumn::LazyColumn(const Theme& theme, LazyRows& rows, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_source(rows)
    , m_bar(new OverlayScrollBar(theme, this))
    , m_heights(Theme::defaultPadding, Theme::rowSpacing) {
    QAccessible::installFactory(makeLazyColumnAccessible); // once, however often it is called
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    QScroller::grabGesture(this, QScroller::TouchGesture);
    m_clock.start();
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(
        &m_animation, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& value) {
            const qreal left = m_remaining * (1 - value.toReal());
            moveTo(maximumScroll() - qRound(left));
        });
    connect(
        m_bar, &QAbstractSlider::valueChanged, this,
        [this](int value) { setScrollPosition(value); });
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focusMoved(now); });
    reload();
}

LazyColumn::~LazyColumn() {
    // The focus leaves the rows when they are destroyed, and then this is no column any more.
    disconnect(qApp, nullptr, this, nullptr);
    QScroller::ungrabGesture(this);
}

int LazyColumn::rowWidth() const {
    return std::max(1, std::min(width(), Theme::columnWidth) - 2 * Theme::defaultPadding);
}

int LazyColumn::maximumScroll() const {
    return std::max(0, m_heights.total() - height());
}

// Rows

void LazyColumn::reload() {
    const auto count = static_cast<std::size_t>(m_source.count());
    std::size_t same = 0;
    const std::size_t common = std::min(count, m_rows.size());
    while (same < common && m_source.key(static_cast<qsizetype>(same)) == m_rows[same].key)
        ++same;
    if (same < count || same < m_rows.size()) {
        struct Known {
            Row row;
            int height;
        };
        QHash<QUuid, Known> old;
        std::vector<int> heights;
        heights.reserve(count);
        for (std::size_t i = 0; i < same; ++i)
            heights.push_back(m_heights.height(i));
        for (std::size_t i = same; i < m_rows.size(); ++i)
            old.insert(m_rows[i].key, {m_rows[i], m_heights.height(i)});
        m_rows.resize(same);
        const int width = rowWidth();
        for (std::size_t i = same; i < count; ++i) {
            const auto row = static_cast<qsizetype>(i);
            const QUuid key = m_source.key(row);
            const auto known = old.find(key);
            if (known != old.end()) {
                m_rows.push_back(known->row);
                heights.push_back(known->height);
                old.erase(known);
            } else {
                m_rows.push_back({key});
                heights.push_back(m_source.estimatedHeight(row, width));
            }
        }
        for (const Known& gone : std::as_const(old))
            destroy(gone.row.widget);
        m_heights.assign(std::move(heights));
    }
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        if (m_rows[i].widget)
            m_source.update(static_cast<qsizetype>(i), m_rows[i].widget);
    layOut(Hold::Anchor);
}

void LazyColumn::reloadRow(qsizetype row) {
    if (QWidget* widget = widgetOf(row)) {
        m_source.update(row, widget);
        layOut(Hold::Anchor);
    }
}

void LazyColumn::destroy(QWidget* widget) {
    if (!widget)
        return;
    widget->hide();
    widget->deleteLater(); // it may be what called
}

QWidget* LazyColumn::widgetOf(qsizetype row) const {
    const auto index = static_cast<std::size_t>(row);
    return row >= 0 && index < m_rows.size() ? m_rows[index].widget : nullptr;
}

qsizetype LazyColumn::rowOf(const QWidget* widget) const {
    while (widget && widget->parentWidget() != this)
        widget = widget->parentWidget();
    if (!widget)
        return -1;
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const Row& row) { return row.widget == widget; });
    return found == m_rows.end() ? -1 : found - m_rows.begin();
}

std::optional<std::size_t> LazyColumn::indexOf(const QUuid& key) const {
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.key == key; });
    return found == m_rows.end() ? std::nullopt
                                 : std::optional(static_cast<std::size_t>(found - m_rows.begin()));
}

qsizetype LazyColumn::rowWithKey(const QUuid& key) const {
    const auto index = indexOf(key);
    return index ? static_cast<qsizetype>(*index) : -1;
}

qsizetype LazyColumn::builtCount() const {
    return std::count_if(
        m_rows.begin(), m_rows.end(), [](const Row& row) { return row.widget; });
}

QRect LazyColumn::rowRect(qsizetype row) const {
    const auto index = static_cast<std::size_t>(row);
    const int columnWidth = std::min(width(), Theme::columnWidth);
    const int x = (width() - columnWidth) / 2 + Theme::defaultPadding;
    return {x, m_heights.top(index) - m_scroll, rowWidth(), m_heights.height(index)};
}

// Layout

void LazyColumn::layOut(Hold hold) {
    if (m_isLayingOut || !m_hasSize)
        return;
    m_isLayingOut = true;
    if (m_width != rowWidth()) {
        m_width = rowWidth();
        for (std::size_t i = 0; i < m_rows.size(); ++i) {
            m_rows[i].isMeasured = false;
            if (!m_rows[i].widget)
                m_heights.setHeight(i,
                                    m_source.estimatedHeight(static_cast<qsizetype>(i), m_width));
        }
    }
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        if (m_rows[i].widget)
            measure(i);
    // Building a row corrects its height, which can bring further rows into the zone.
    const int margin = height() / 2;
    while (true) {
        if (hold == Hold::Bottom)
            m_scroll = maximumScroll();
        else
            restoreAnchor();
        if (!build(m_heights.firstBelow(m_scroll - margin),
                   m_heights.firstBelow(m_scroll + height() + margin)))
            break;
    }
    release(m_scroll - 3 * margin, m_scroll + height() + 3 * margin);
    place();
    noteAnchor();
    m_isLayingOut = false;
}

/// Makes the widgets of the rows up to and with `last`; returns whether there were any to make.
bool LazyColumn::build(std::size_t first, std::size_t last) {
    bool anything = false;
    for (std::size_t i = first; i < m_rows.size() && i <= last; ++i) {
        Row& row = m_rows[i];
        if (row.widget)
            continue;
        row.widget = m_source.make(static_cast<qsizetype>(i), this);
        row.widget->ensurePolished();
        measure(i);
        anything = true;
    }
    if (anything)
        orderTabs();
    return anything;
}

bool LazyColumn::measure(std::size_t index) {
    QWidget* widget = m_rows[index].widget;
    const int height =
        widget->hasHeightForWidth() ? widget->heightForWidth(m_width) : widget->sizeHint().height();
    m_rows[index].isMeasured = true;
    const bool differs = height != m_heights.height(index);
    m_heights.setHeight(index, height);
    return differs;
}

/// Destroys the widgets outside of a zone that nobody needs.
void LazyColumn::release(int from, int to) {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        Row& row = m_rows[i];
        if (!row.widget || (m_heights.bottom(i) > from && m_heights.top(i) < to))
            continue;
        const QWidget* focus = QApplication::focusWidget();
        const bool hasFocus = focus && (focus == row.widget || row.widget->isAncestorOf(focus));
        if (hasFocus || m_source.isInUse(row.widget))
            continue;
        destroy(row.widget);
        row.widget = nullptr;
    }
}

void LazyColumn::place() {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (QWidget* widget = m_rows[i].widget) {
            widget->setGeometry(rowRect(static_cast<qsizetype>(i)));
            if (widget->isHidden())
                widget->show();
        }
    }
    m_bar->setGeometry(width() - m_bar->sizeHint().width(), 0, m_bar->sizeHint().width(), height());
    m_bar->raise();
    const QSignalBlocker blocker(m_bar);
    m_bar->setRange(0, maximumScroll());
    m_bar->setPageStep(height());
    m_bar->setSingleStep(40);
    if (!m_bar->isSliderDown())
        m_bar->setValue(m_scroll);
}

/// What stays where it is at the next layout: the first visible row whose height is no guess.
void LazyColumn::noteAnchor() {
    m_anchor = {};
    std::size_t first = m_heights.firstBelow(m_scroll);
    if (first >= m_rows.size())
        return;
    for (std::size_t i = first; i < m_rows.size() && m_heights.top(i) < m_scroll + height(); ++i) {
        if (m_rows[i].isMeasured) {
            first = i;
            break;
        }
    }
    m_anchor = {m_rows[first].key, m_heights.top(first) - m_scroll};
}

void LazyColumn::restoreAnchor() {
    if (const auto index = indexOf(m_anchor.key))
        m_scroll = m_heights.top(*index) - m_anchor.offset;
    m_scroll = std::clamp(m_scroll, 0, maximumScroll());
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

void LazyColumn::resizeEvent(QResizeEvent* event) {
    m_hasSize = true;
    const int before = std::max(0, m_heights.total() - event->oldSize().height());
    const bool wasAtBottom = before > 0 && m_scroll >= before;
    layOut(wasAtBottom ? Hold::Bottom : Hold::Anchor);
}

} // namespace platform
