// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/ListRow.h"

#include "Platform/Widgets/Controls/Accessible.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace platform {

namespace {

constexpr int paddingX = 14;
constexpr int paddingY = 9;
constexpr int lineGap = 2;
constexpr int markGap = 10;

using namespace Qt::StringLiterals;

} // namespace

ListRow::ListRow(const Theme& theme)
    : Button(theme, Look::ListRow, {}) {}

void ListRow::setDetail(const QString& detail) {
    if (detail != m_detail) {
        m_detail = detail;
        updateGeometry();
        update();
    }
}

void ListRow::setMark(const Mark& mark) {
    if (mark != m_mark) {
        m_mark = mark;
        update();
        QAccessibleEvent event(this, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&event);
    }
}

void ListRow::setSelected(bool isSelected) {
    if (isSelected != m_isSelected) {
        m_isSelected = isSelected;
        QAccessible::State changed;
        changed.selected = true;
        tellChanged(this, changed);
    }
}

void ListRow::addAccessibleState(QAccessible::State& state) const {
    Button::addAccessibleState(state);
    state.selectable = true;
    state.selected = m_isSelected;
}

QString ListRow::accessibleDetail() const {
    QStringList parts{m_detail, m_mark.name};
    parts.removeAll(QString());
    return parts.join(u", "_s);
}

QSize ListRow::sizeHint() const {
    auto size = title().size();
    if (!m_detail.isEmpty()) {
        const auto below = detail().size();
        size =
            QSize(std::max(size.width(), below.width()), size.height() + lineGap + below.height());
    }
    const auto minimum = static_cast<int>(theme().scaled(24)); // of a row without a detail
    return {size.width() + 2 * paddingX, std::max(size.height(), minimum) + 2 * paddingY};
}

IconAndText ListRow::title() const {
    auto title = iconAndText(theme(), {}, text(), TextStyle::Subheadline, QFont::Medium);
    title.elide = Qt::ElideMiddle; // names differ at their ends
    return title;
}

IconAndText ListRow::detail() const {
    return iconAndText(theme(), {}, m_detail, TextStyle::Caption, QFont::Normal);
}

IconAndText ListRow::mark() const {
    const bool isText = m_mark.icon.isEmpty();
    auto mark = iconAndText(theme(), m_mark.icon, isText ? m_mark.name : QString(),
                            TextStyle::Caption, QFont::Normal);
    if (!isText)
        mark.iconSize = theme().symbolSize(TextStyle::Body);
    return mark;
}

bool ListRow::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return Button::event(event);
    const int beside = m_mark == Mark() ? 0 : mark().size().width() + markGap;
    const bool isElided = title().size().width() > width() - 2 * paddingX - beside;
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       isElided ? text().toHtmlEscaped() : QString(), this);
    return true;
}

void ListRow::paintContent(QPainter& painter) const {
    const auto show = [&](const IconAndText& line, const QRect& part, ColorRole role) {
        line.paint(painter, theme(), QStyle::visualRect(layoutDirection(), rect(), part),
                   theme().color(role), layoutDirection());
    };
    auto area = rect().adjusted(paddingX, paddingY, -paddingX, -paddingY);
    if (m_mark != Mark()) {
        const auto mark = this->mark();
        auto end = area;
        end.setLeft(std::max(area.left(), area.right() + 1 - mark.size().width()));
        show(mark, end, m_mark.color);
        area.setRight(end.left() - markGap);
    }
    const auto title = this->title();
    if (!m_detail.isEmpty()) {
        const auto detail = this->detail();
        const auto top = area.top() + title.size().height();
        show(detail, {area.left(), top + lineGap, area.width(), detail.size().height()},
             ColorRole::SecondaryLabel);
        area.setBottom(top - 1);
    }
    show(title, area, ColorRole::Label);
}

} // namespace platform
