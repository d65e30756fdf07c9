// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Label.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QStyle>

#include <cmath>
#include <limits>
#include <utility>

namespace platform {

Label::Label(const Theme& theme, QString text, TextStyle style, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_text(std::move(text))
    , m_style(style) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    observe(this, [this] { applyTheme(); });
}

void Label::applyTheme() {
    m_font = m_theme.font(m_style, m_weight);
    [[maybe_unused]] const auto tracked = m_theme.color(m_role);
    changed();
}

void Label::changed() {
    m_measuredWidth = -1;
    m_natural = {};
    updateGeometry();
    update();
}

void Label::setText(const QString& text) {
    if (text != m_text) {
        m_text = text;
        changed();
        QAccessibleEvent event(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    }
}

void Label::setIcon(const QString& icon) {
    if (icon != m_icon) {
        m_icon = icon;
        changed();
    }
}

void Label::setTextStyle(TextStyle style, QFont::Weight weight) {
    if (style != m_style || weight != m_weight) {
        m_style = style;
        m_weight = weight;
        applyTheme();
    }
}

void Label::setColorRole(ColorRole role) {
    if (role != m_role) {
        m_role = role;
        update();
    }
}

void Label::setWrapping(bool isWrapping) {
    if (isWrapping != m_isWrapping) {
        m_isWrapping = isWrapping;
        auto policy = sizePolicy();
        policy.setHeightForWidth(isWrapping);
        // A fixed height would be that of the unbroken line.
        policy.setVerticalPolicy(isWrapping ? QSizePolicy::Preferred : QSizePolicy::Fixed);
        setSizePolicy(policy);
        changed();
    }
}

void Label::setTextAlignment(Qt::Alignment alignment) {
    if (alignment != m_alignment) {
        m_alignment = alignment;
        update();
    }
}

Qt::LayoutDirection Label::direction() const {
    return m_text.isRightToLeft() ? Qt::RightToLeft : layoutDirection();
}

QSizeF Label::layOut(QTextLayout& layout, qreal width) const {
    auto text = m_text;
    text.replace(u'\n', QChar::LineSeparator);
    layout.setText(text);
    layout.setFont(m_font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(direction());
    option.setAlignment(QStyle::visualAlignment(direction(), m_alignment));
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
    return size;
}

int Label::heightForWidth(int width) const {
    if (!m_isWrapping)
        return sizeHint().height();
    if (width != m_measuredWidth) {
        QTextLayout layout;
        m_measuredHeight = static_cast<int>(std::ceil(layOut(layout, width).height()));
        m_measuredWidth = width;
    }
    return m_measuredHeight;
}

QSize Label::sizeHint() const {
    if (!m_natural.isValid()) {
        if (m_isWrapping) {
            QTextLayout layout;
            const auto size = layOut(layout, std::numeric_limits<int>::max() / 256);
            m_natural = QSize(static_cast<int>(std::ceil(size.width())) + 1,
                              static_cast<int>(std::ceil(size.height())));
        } else {
            m_natural = iconAndText(m_theme, m_icon, m_text, m_style, m_weight).size();
        }
    }
    return m_natural;
}

QSize Label::minimumSizeHint() const {
    const auto natural = sizeHint();
    const auto few = static_cast<int>(std::lround(m_theme.scaled(40)));
    return {std::min(natural.width(), few), natural.height()};
}

int Label::firstBaseline() const {
    const QFontMetrics metrics(m_font);
    const auto free = m_isWrapping ? 0 : (height() - metrics.height()) / 2;
    return free + metrics.ascent();
}

QAccessible::Role Label::accessibleRole() const {
    return m_isHeading ? QAccessible::Heading : QAccessible::StaticText;
}

void Label::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto color = m_theme.color(m_role);
    if (m_isWrapping) {
        QTextLayout layout;
        layOut(layout, width());
        painter.setPen(color);
        layout.draw(&painter, {0, 0});
        return;
    }
    const auto line = iconAndText(m_theme, m_icon, m_text, m_style, m_weight);
    auto area = rect();
    const auto free = area.width() - line.size().width();
    const bool isCentered = m_alignment.testFlag(Qt::AlignHCenter);
    if (free > 0 && (isCentered || m_alignment.testFlag(Qt::AlignTrailing))) {
        const auto before = isCentered ? free / 2 : free;
        if (direction() == Qt::RightToLeft)
            area.setRight(area.right() - before);
        else
            area.setLeft(area.left() + before);
    }
    line.paint(painter, m_theme, area, color, direction());
}

} // namespace platform
