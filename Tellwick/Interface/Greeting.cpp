// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/Greeting.h"

#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Tellwick/Core/AppConfig.h"

#include <QBoxLayout>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

namespace {

/// The welcome, in a bubble as a reply has one.
QWidget* welcomeBubble(const Theme& theme) {
    auto* welcome = new Label(theme, AppConfig::welcomeMessage(), TextStyle::Body);
    welcome->setWrapping(true);
    welcome->setAlignment(Qt::AlignHCenter);
    auto* bubble = new platform::Surface(theme, ColorRole::GreetingBubble, Theme::greetingRadius);
    auto* inside = new QVBoxLayout(bubble);
    inside->setContentsMargins(Theme::bubblePaddingX, Theme::bubblePaddingY, Theme::bubblePaddingX,
                               Theme::bubblePaddingY);
    inside->addWidget(welcome);
    return bubble;
}

} // namespace

Greeting::Greeting(const Theme& theme, QWidget* modes) {
    auto* content = new QWidget;
    content->setMaximumWidth(Theme::columnWidth);
    auto* centring = new QHBoxLayout(this);
    centring->setContentsMargins({});
    centring->addWidget(content);
    auto* column = new QVBoxLayout(content);
    column->setSpacing(12);
    column->setContentsMargins(Theme::defaultPadding, Theme::defaultPadding + 60,
                               Theme::defaultPadding, Theme::defaultPadding);
    const auto centred = [column](QWidget* widget) {
        column->addWidget(widget, 0, Qt::AlignHCenter);
    };

    auto* brain = new Label(theme, {}, TextStyle::Body, ColorRole::SecondaryLabel);
    brain->setIcon(u"brain"_s, 52);
    centred(brain);
    auto* name =
        new Label(theme, AppConfig::appName(), TextStyle::Title2, ColorRole::Label, QFont::Medium);
    name->setHeading();
    centred(name);
    centred(
        new Label(theme, AppConfig::tagline(), TextStyle::Subheadline, ColorRole::SecondaryLabel));

    auto* welcome = new QVBoxLayout;
    welcome->setContentsMargins(24, 8, 24, 0);
    welcome->addWidget(welcomeBubble(theme));
    column->addLayout(welcome);

    auto* model =
        new Label(theme, AppConfig::modelLabel(), TextStyle::Caption, ColorRole::TertiaryLabel);
    model->setIcon(u"cpu"_s);
    centred(model);
    column->addSpacing(4);
    column->addWidget(modes);
    column->addStretch(1);
}

} // namespace tellwick
