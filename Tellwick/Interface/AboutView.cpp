// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/AboutView.h"

#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Tellwick/Core/AppConfig.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QUrl>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

namespace {

Label* paragraph(const Theme& theme, const QString& text, TextStyle style,
                 ColorRole role = ColorRole::Label) {
    auto* made = new Label(theme, text, style, role);
    made->setWrapping(true);
    return made;
}

QVBoxLayout* column(int spacing, const QMargins& padding) {
    auto* layout = new QVBoxLayout;
    layout->setSpacing(spacing);
    layout->setContentsMargins(padding);
    return layout;
}

QLayout* header(const Theme& theme) {
    auto* brain = new Label(theme, {}, TextStyle::Body, ColorRole::Accent);
    brain->setIcon(u"brain"_s, 64);
    auto* name = new Label(theme, AppConfig::appName(), TextStyle::LargeTitle, ColorRole::Label,
                           QFont::Bold);
    name->setHeading();
    const QString version = QCoreApplication::applicationVersion();
    auto* layout = column(12, {0, 32, 0, 24});
    for (auto* line : {brain, name,
                       new Label(theme, "Version "_L1 + (version.isEmpty() ? u"1.0"_s : version),
                                 TextStyle::Subheadline, ColorRole::SecondaryLabel)})
        layout->addWidget(line, 0, Qt::AlignHCenter);
    return layout;
}

QLayout* description(const Theme& theme) {
    auto* rows = column(10, {0, 4, 0, 4});
    for (const auto& [icon, text] :
         {std::pair(u"lock.shield"_s, u"Fully private — nothing leaves your device"_s),
          {u"wifi.slash"_s, u"Works completely offline"_s},
          {u"person.slash"_s, u"No account or sign-in required"_s},
          {u"cpu"_s, u"Powered by Apple Intelligence, or other local models if available"_s}})
        rows->addWidget(new AboutRow(theme, icon, text, ColorRole::Accent));
    auto* layout = column(16, {24, 24, 24, 24});
    layout->addWidget(paragraph(theme, AppConfig::appDescription(), TextStyle::Body));
    layout->addLayout(rows);
    return layout;
}

QLayout* limitations(const Theme& theme) {
    auto* heading = new Label(theme, u"Limitations"_s.toUpper(), TextStyle::Footnote,
                              ColorRole::SecondaryLabel, QFont::DemiBold);
    heading->setHeading();
    heading->setAccessibleName(u"Limitations"_s); // capitals get spelled when they are read out
    auto* rows = column(10, {});
    for (const auto& [icon, text] :
         {std::pair(u"calendar.badge.exclamationmark"_s,
                    u"Knowledge cutoff — may not know recent events"_s),
          {u"hand.raised"_s,
           u"Content guardrails — some topics may be declined or answered cautiously"_s},
          {u"exclamationmark.triangle"_s,
           u"Not a substitute for medical, legal, or financial advice"_s}})
        rows->addWidget(new AboutRow(theme, icon, text, ColorRole::OrangeSymbol));
    auto* layout = column(12, {24, 24, 24, 24});
    layout->addWidget(heading);
    layout->addLayout(rows);
    layout->addSpacing(4);
    layout->addWidget(
        paragraph(theme, AppConfig::disclaimer(), TextStyle::Caption, ColorRole::SecondaryLabel));
    return layout;
}

QLayout* footer(const Environment& environment) {
    auto* layout = column(4, {0, 20, 0, 20});
    layout->addWidget(AboutView::websiteLine(environment, AppConfig::website()), 0,
                      Qt::AlignHCenter);
    layout->addWidget(new Label(environment.theme, AppConfig::copyright(), TextStyle::Caption,
                                ColorRole::SecondaryLabel),
                      0, Qt::AlignHCenter);
    return layout;
}

} // namespace

AboutView::AboutView(const Environment& environment) {
    const Theme& theme = environment.theme;
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins({});
    layout->addLayout(header(theme));
    for (auto* part : {description(theme), limitations(theme), footer(environment)}) {
        layout->addWidget(new platform::Divider(theme));
        layout->addLayout(part);
    }
}

QWidget* AboutView::websiteLine(const Environment& environment, const QString& website) {
    const QUrl url(website, QUrl::StrictMode);
    QString host = url.host();
    if (!url.isValid() || host.isEmpty())
        return new Label(environment.theme, website, TextStyle::Footnote, ColorRole::Label,
                         QFont::Medium);
    if (host.startsWith("www."_L1)) // which says nothing
        host.remove(0, 4);
    auto* link = new Button(environment.theme, Button::Look::Link, host);
    link->setAction([&opener = environment.urlOpener, url] { opener.open(url); });
    return link;
}

AboutRow::AboutRow(const Theme& theme, const QString& icon, const QString& text, ColorRole color) {
    auto* layout = new QHBoxLayout(this);
    layout->setSpacing(10);
    layout->setContentsMargins({});
    auto* symbol = new Label(theme, {}, TextStyle::Subheadline, color);
    symbol->setIcon(icon);
    symbol->setMinimumWidth(20);
    layout->addWidget(symbol, 0, Qt::AlignTop);
    layout->addWidget(paragraph(theme, text, TextStyle::Subheadline), 1);
}

} // namespace tellwick
