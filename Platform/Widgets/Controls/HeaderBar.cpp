// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/HeaderBar.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

namespace platform {

HeaderBar::HeaderBar(const Theme& theme, const QString& title)
    : m_theme(theme)
    , m_subtitle(new Label(theme, {}, TextStyle::Subheadline, ColorRole::SecondaryLabel))
    , m_trailing(new QHBoxLayout) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto* heading = new Label(theme, title, TextStyle::Body, ColorRole::Label, QFont::DemiBold);
    heading->setHeading();

    auto* texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addStretch();
    texts->addWidget(heading);
    texts->addWidget(m_subtitle);
    texts->addStretch();
    m_trailing->setSpacing(2);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Theme::defaultPadding, 7, Theme::defaultPadding / 2, 8);
    row->setSpacing(Theme::defaultSpacing);
    row->addLayout(texts, 1);
    row->addLayout(m_trailing);

    observe(this, [this] { setMinimumHeight(static_cast<int>(m_theme.scaled(50))); });
}

void HeaderBar::setSubtitle(const QString& subtitle) {
    m_subtitle->setText(subtitle);
}

void HeaderBar::addTrailing(QWidget* item) {
    m_trailing->addWidget(item, 0, Qt::AlignVCenter);
}

void HeaderBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.color(ColorRole::Header));
    painter.fillRect(QRect(0, height() - 1, width(), 1), m_theme.color(ColorRole::Divider));
}

void HeaderBar::mousePressEvent(QMouseEvent* event) {
    auto* handle = window()->windowHandle();
    if (event->button() == Qt::LeftButton && handle != nullptr)
        handle->startSystemMove();
}

} // namespace platform
