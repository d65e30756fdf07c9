// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Alert.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Scrolling/ScrollView.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace platform {

namespace {

constexpr qreal bodyWidth = 300; // goes with the text
constexpr int padding = 20;
constexpr int air = 16;

} // namespace

Alert::Alert(const Theme& theme, const QString& title, const QString& message,
             const QString& button)
    : OverlaySurface(theme, title)
    , m_message(message)
    , m_scroll(new ScrollView(theme, this))
    , m_button(new Button(theme, Button::Look::Default, button, {}, this)) {
    auto* texts = new QWidget;
    auto* column = new QVBoxLayout(texts);
    column->setContentsMargins(padding, padding, padding, 0);
    column->setSpacing(8);
    auto* heading = new Label(theme, title, TextStyle::Body, texts);
    heading->setWeight(QFont::DemiBold);
    auto* body = new Label(theme, message, TextStyle::Subheadline, texts);
    for (auto* label : {heading, body}) {
        label->setWrapping(true);
        label->setTextAlignment(Qt::AlignHCenter);
        column->addWidget(label);
    }
    column->addStretch();
    m_scroll->setContent(texts);

    m_button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_button->setAction([this] { dismiss(); });
    auto* layout = new QVBoxLayout(this);
    const auto margins = contentsMargins();
    setContentsMargins(0, 0, 0, 0);
    layout->setContentsMargins(margins);
    layout->setSpacing(0);
    layout->addWidget(m_scroll, 1);
    auto* foot = new QVBoxLayout;
    foot->setContentsMargins(padding, 16, padding, padding);
    foot->addWidget(m_button);
    layout->addLayout(foot);
}

QRect Alert::place(const QRect& area) {
    const auto fitting =
        std::min(static_cast<int>(theme().scaled(bodyWidth)), area.width() - 2 * air);
    const auto foot = 16 + m_button->sizeHint().height() + padding;
    const auto height = std::min(m_scroll->heightForWidth(fitting) + foot, area.height() - 2 * air);
    QRect body(0, 0, fitting, height);
    body.moveCenter(area.center());
    return body;
}

QWidget* Alert::initialFocus() {
    return m_button;
}

void Alert::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        dismiss();
    OverlaySurface::keyPressEvent(event);
}

} // namespace platform
