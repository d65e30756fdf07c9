// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Divider.h"

#include "Platform/Observation/Observer.h"

#include <QPainter>
#include <QStyle>

namespace platform {

Divider::Divider(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    observe(this, [this] {
        [[maybe_unused]] const auto tracked = m_theme.color(ColorRole::Divider);
        update();
    });
}

void Divider::setLeadingInset(int inset) {
    if (inset != m_leadingInset) {
        m_leadingInset = inset;
        update();
    }
}

void Divider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto line = rect().adjusted(m_leadingInset, 0, 0, 0);
    painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), line),
                     m_theme.color(ColorRole::Divider));
}

} // namespace platform
