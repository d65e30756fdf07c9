// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/LineField.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

namespace platform {
namespace {

constexpr int paddingX = 8;
constexpr int paddingY = 4;

} // namespace

LineField::LineField(const Theme& theme, const QString& name, QWidget* parent)
    : QLineEdit(parent)
    , m_theme(theme) {
    setFrame(false);
    setTextMargins(paddingX, 0, paddingX, 0);
    setPlaceholderText(name);
    setAccessibleName(name);
    setContextMenuPolicy(Qt::NoContextMenu); // of the toolkit's
    observe(this, [this] { applyTheme(); });
}

void LineField::applyTheme() {
    setPalette(fieldPalette(m_theme, palette()));
    setFont(m_theme.font(TextStyle::Body));
    updateGeometry();
    update();
}

QSize LineField::sizeHint() const {
    return {240, fontMetrics().height() + 2 * paddingY};
}

QSize LineField::minimumSizeHint() const {
    return {60, sizeHint().height()};
}

void LineField::focusInEvent(QFocusEvent* event) {
    m_showsFocusRing = showsFocusRing(event->reason(), m_showsFocusRing);
    QFocusEvent quiet(event->type(), Qt::OtherFocusReason); // or a key selects all
    QLineEdit::focusInEvent(&quiet);
}

void LineField::focusOutEvent(QFocusEvent* event) {
    const bool isClick = event->reason() == Qt::MouseFocusReason;
    QFocusEvent quiet(event->type(), isClick ? event->reason() : Qt::PopupFocusReason);
    QLineEdit::focusOutEvent(&quiet);
}

void LineField::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape)
        event->ignore();
    else
        QLineEdit::keyPressEvent(event);
}

void LineField::paintEvent(QPaintEvent* event) {
    {
        QPainter painter(this);
        paintField(painter, m_theme, rect(), Theme::controlRadius, m_showsFocusRing && hasFocus());
    }
    QLineEdit::paintEvent(event);
}

} // namespace platform
