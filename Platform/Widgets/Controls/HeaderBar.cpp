// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/HeaderBar.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

#include <utility>

namespace platform {

namespace {

constexpr int buttonsMargin = 13; // between the window's buttons and its edge
constexpr int buttonsGap = 6;     // more than between other items, before the texts

} // namespace

HeaderBar::HeaderBar(const Theme& theme, const QString& title)
    : m_theme(theme)
    , m_heading(new Label(theme, title, TextStyle::Body, ColorRole::Label, QFont::DemiBold))
    , m_subtitle(new Label(theme, {}, TextStyle::Subheadline, ColorRole::SecondaryLabel))
    , m_trailing(new QHBoxLayout)
    , m_row(new QHBoxLayout(this)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_heading->setHeading();

    auto* texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addStretch();
    texts->addWidget(m_heading);
    texts->addWidget(m_subtitle);
    texts->addStretch();
    m_trailing->setSpacing(2);
    m_row->setSpacing(Theme::defaultSpacing);
    m_row->addLayout(texts, 1);
    m_row->addLayout(m_trailing);

    setWindowButtons(std::nullopt);

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

void HeaderBar::setWindowButtons(const std::optional<WindowButtonLayout>& buttons) {
    qDeleteAll(m_windowButtons);
    m_windowButtons.clear();
    m_isTitleBar = buttons.has_value();
    const auto add = [this](const QList<WindowButton>& kinds, int at, int otherwise) {
        if (kinds.isEmpty())
            return otherwise;
        m_windowButtons.append(new WindowButtons(m_theme, kinds, this));
        m_row->insertWidget(at, m_windowButtons.constLast(), 0, Qt::AlignVCenter);
        return buttonsMargin;
    };
    const auto layout = buttons.value_or(WindowButtonLayout());
    const int right = add(layout.right, -1, Theme::defaultPadding / 2);
    const int left = add(layout.left, 0, Theme::defaultPadding);
    if (!layout.left.isEmpty())
        m_windowButtons.constLast()->layout()->setContentsMargins(0, 0, buttonsGap, 0);
    m_row->setContentsMargins(left, 7, right, 8);
    for (auto* shown : std::as_const(m_windowButtons))
        shown->show();
    follow();
}

bool HeaderBar::isPartOfTitleBar(const QWidget* widget) {
    const QWidget* part = nullptr;
    for (; widget != nullptr; part = std::exchange(widget, widget->parentWidget()))
        if (const auto* header = qobject_cast<const HeaderBar*>(widget))
            return header->m_isTitleBar && header->m_trailing->indexOf(part) < 0;
    return false;
}

bool HeaderBar::event(QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::WindowActivate || type == QEvent::WindowDeactivate || type == QEvent::Show)
        follow();
    return QWidget::event(event);
}

void HeaderBar::setDimmed(bool isDimmed) {
    m_isDimmed = isDimmed;
    follow();
}

void HeaderBar::follow() {
    const bool isQuiet = m_isTitleBar && !m_isDimmed && !isActiveWindow();
    for (auto* buttons : std::as_const(m_windowButtons))
        buttons->setQuiet(isQuiet);
    m_heading->setColorRole(isQuiet ? ColorRole::TertiaryLabel : ColorRole::Label);
    m_subtitle->setColorRole(isQuiet ? ColorRole::TertiaryLabel : ColorRole::SecondaryLabel);
}

void HeaderBar::moveWindow() {
    if (auto* handle = window()->windowHandle())
        handle->startSystemMove();
}

void HeaderBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    // A move takes the pointer away: a title bar waits for it, or no click would become a double
    // click.
    if (m_isTitleBar)
        m_pressed = event->position().toPoint();
    else
        moveWindow();
}

void HeaderBar::mouseMoveEvent(QMouseEvent* event) {
    if (!m_pressed || (event->position().toPoint() - *m_pressed).manhattanLength() <
                          QApplication::startDragDistance())
        return;
    m_pressed.reset();
    moveWindow();
}

void HeaderBar::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_pressed.reset();
}

void HeaderBar::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!m_isTitleBar)
        mousePressEvent(event);
    else if (event->button() == Qt::LeftButton)
        WindowButtons::toggleMaximized(*window());
}

} // namespace platform
