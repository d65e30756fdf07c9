// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/GreetingBubble.h"

#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QVBoxLayout>

namespace tellwick {

using platform::ColorRole;
using platform::Theme;

GreetingBubble::GreetingBubble(const Theme& theme, const QString& text, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme) {
    auto* label = new platform::Label(theme, text, platform::TextStyle::Body);
    label->setWrapping(true);
    label->setAlignment(Qt::AlignHCenter);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::bubblePaddingX, Theme::bubblePaddingY, Theme::bubblePaddingX,
                               Theme::bubblePaddingY);
    layout->addWidget(label);
}

void GreetingBubble::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    platform::fillRounded(painter, rect(), Theme::greetingRadius,
                          m_theme.color(ColorRole::GreetingBubble));
}

} // namespace tellwick
