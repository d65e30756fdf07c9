// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/ListRow.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace platform {

namespace {

constexpr int paddingX = 14;
constexpr int paddingY = 9;
constexpr int lineGap = 2;
constexpr int markGap = 10;

using namespace Qt::StringLiterals;

} // namespace

ListRow::ListRow(const Theme& theme, QWidget* parent)
    : Button(theme, Look::ListRow, {}, {}, parent) {}

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
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
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
    const auto title = iconAndText(theme(), {}, text(), TextStyle::Subheadline, QFont::Medium);
    auto size = title.size();
    if (!m_detail.isEmpty()) {
        const auto detail =
            iconAndText(theme(), {}, m_detail, TextStyle::Caption, QFont::Normal).size();
        size = QSize(std::max(size.width(), detail.width()),
                     size.height() + lineGap + detail.height());
    }
    const auto minimum = static_cast<int>(theme().scaled(24)); // of a row without a detail
    return {size.width() + 2 * paddingX, std::max(size.height(), minimum) + 2 * paddingY};
}

void ListRow::paintContent(QPainter& painter) const {
    auto area = rect().adjusted(paddingX, paddingY, -paddingX, -paddingY);
    const auto visual = [&](const QRect& part) {
        return QStyle::visualRect(layoutDirection(), rect(), part);
    };
    if (m_mark != Mark()) {
        auto mark =
            iconAndText(theme(), m_mark.icon, m_mark.text, TextStyle::Caption, QFont::Normal);
        if (m_mark.text.isEmpty())
            mark.iconSize = theme().symbolSize(TextStyle::Body);
        auto place = area;
        place.setLeft(std::max(area.left(), area.right() + 1 - mark.size().width()));
        const auto color = theme().color(m_mark.color);
        mark.paint(painter, theme(), visual(place), color, layoutDirection());
        area.setRight(place.left() - markGap);
    }
    const auto primary = theme().color(ColorRole::Label);
    const auto title = iconAndText(theme(), {}, text(), TextStyle::Subheadline, QFont::Medium);
    if (m_detail.isEmpty()) {
        title.paint(painter, theme(), visual(area), primary, layoutDirection());
        return;
    }
    const auto secondary = theme().color(ColorRole::SecondaryLabel);
    const auto detail = iconAndText(theme(), {}, m_detail, TextStyle::Caption, QFont::Normal);
    auto line = area;
    line.setHeight(title.size().height());
    title.paint(painter, theme(), visual(line), primary, layoutDirection());
    line = QRect(area.left(), line.bottom() + 1 + lineGap, area.width(), detail.size().height());
    detail.paint(painter, theme(), visual(line), secondary, layoutDirection());
}

} // namespace platform
