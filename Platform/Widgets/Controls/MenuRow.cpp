// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/MenuRow.h"

#include "Platform/Widgets/Look/Painting.h"

#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace platform {

namespace {

constexpr int paddingX = 9;
constexpr int paddingY = 5;

} // namespace

MenuRow::MenuRow(const Theme& theme, const QString& title, QString icon, QWidget* parent)
    : Button(theme, parent)
    , m_icon(std::move(icon)) {
    setText(title);
    setMouseTracking(true); // moves, not entering: a menu that opens under the pointer waits
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize MenuRow::sizeHint() const {
    return iconAndText(theme(), m_icon, text(), TextStyle::Body, QFont::Normal).size() +
           QSize(2 * paddingX, 2 * paddingY);
}

void MenuRow::mouseMoveEvent(QMouseEvent* event) {
    if (!hasFocus() && rect().contains(event->position().toPoint()))
        setFocus(Qt::MouseFocusReason);
    Button::mouseMoveEvent(event);
}

void MenuRow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (hasFocus()) {
        fillRounded(painter, rect(), Theme::controlRadius - 1,
                    theme().color(ColorRole::AccentFill));
    }
    const auto text = theme().color(hasFocus() ? ColorRole::OnAccent : ColorRole::Label);
    iconAndText(theme(), m_icon, this->text(), TextStyle::Body, QFont::Normal)
        .paint(painter, theme(), rect().adjusted(paddingX, 0, -paddingX, 0), text, text,
               layoutDirection());
}

} // namespace platform
