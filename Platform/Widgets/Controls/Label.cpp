// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Label.h"

#include "Platform/Observation/Observer.h"

#include <QPainter>
#include <QStyle>
#include <QtMath>

#include <algorithm>

namespace platform {

Label::Label(const Theme& theme, const QString& text, TextStyle style, ColorRole role,
             QFont::Weight weight)
    : m_theme(theme)
    , m_style(style)
    , m_weight(weight)
    , m_role(role) {
    setTextFormat(Qt::PlainText);
    setText(text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    observe(this, [this] {
        setFont(m_theme.font(m_style, m_weight));
        QPalette colors;
        colors.setColor(QPalette::WindowText, m_theme.color(m_role));
        setPalette(colors);
    });
}

void Label::setIcon(const QString& icon, qreal points) {
    m_icon = icon;
    m_points = points;
    if (isSymbolAlone()) {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        setAlignment(Qt::AlignHCenter);
    }
    updateGeometry();
    update();
}

void Label::setWrapping(bool isWrapping) {
    setWordWrap(isWrapping);
    auto policy = sizePolicy(); // a fixed height would be that of the unbroken line
    policy.setVerticalPolicy(isWrapping ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    setSizePolicy(policy);
}

Qt::LayoutDirection Label::direction() const {
    return text().isRightToLeft() ? Qt::RightToLeft : layoutDirection();
}

IconAndText Label::line() const {
    auto line = iconAndText(m_theme, m_icon, text(), m_style, m_weight);
    if (m_points > 0)
        line.iconSize = m_theme.symbolSize(m_points);
    return line;
}

QSize Label::layOut(QTextLayout& layout, qreal width) const {
    auto text = this->text();
    text.replace(u'\n', QChar::LineSeparator);
    layout.setText(text);
    layout.setFont(font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(direction());
    option.setAlignment(QStyle::visualAlignment(direction(), alignment()));
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    QSizeF size(0, 0);
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, size.height()});
        size.rheight() += line.height();
        size.setWidth(std::max(size.width(), line.naturalTextWidth()));
    }
    layout.endLayout();
    return {qCeil(size.width()), qCeil(size.height())};
}

int Label::heightForWidth(int width) const {
    if (!wordWrap())
        return sizeHint().height();
    QTextLayout layout;
    return layOut(layout, width).height();
}

QSize Label::sizeHint() const {
    if (!wordWrap())
        return line().size();
    QTextLayout layout;
    return layOut(layout, QWIDGETSIZE_MAX) + QSize(1, 0);
}

QSize Label::minimumSizeHint() const {
    const auto natural = sizeHint();
    return {std::min(natural.width(), qRound(m_theme.scaled(40))), natural.height()};
}

void Label::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto color = palette().color(QPalette::WindowText);
    if (wordWrap()) {
        QTextLayout layout;
        layOut(layout, width());
        painter.setPen(color);
        layout.draw(&painter, {0, 0});
        return;
    }
    const auto line = this->line();
    const auto free = std::max(0, width() - line.size().width());
    const auto before = alignment() & Qt::AlignHCenter ? free / 2
                        : alignment() & Qt::AlignRight ? free
                                                       : 0;
    const auto area = QStyle::visualRect(direction(), rect(), rect().adjusted(before, 0, 0, 0));
    line.paint(painter, m_theme, area, color, direction());
}

QAccessible::Role Label::accessibleRole() const {
    if (isSymbolAlone())
        return QAccessible::Client;
    return m_isHeading ? QAccessible::Heading : QAccessible::StaticText;
}

void Label::addAccessibleState(QAccessible::State& state) const {
    state.readOnly = !isSymbolAlone();
}

} // namespace platform
