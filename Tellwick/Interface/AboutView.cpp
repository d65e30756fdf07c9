// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/AboutView.h"

#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Divider.h"
#include "Platform/Widgets/Controls/Label.h"
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

Label* label(const Theme& theme, const QString& text, TextStyle style,
             ColorRole role = ColorRole::Label) {
    auto* made = new Label(theme, text, style);
    made->setColorRole(role);
    return made;
}

Label* paragraph(const Theme& theme, const QString& text, TextStyle style,
                 ColorRole role = ColorRole::Label) {
    auto* made = label(theme, text, style, role);
    made->setWrapping(true);
    return made;
}

QVBoxLayout* column(int spacing, const QMargins& padding) {
    auto* layout = new QVBoxLayout;
    layout->setSpacing(spacing);
    layout->setContentsMargins(padding);
    return layout;
}

/// The program's version as shown.
QString version() {
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? u"1.0"_s : version;
}

/// The host of an address, without the "www." that says nothing.
QString bareDomain(const QUrl& url) {
    const QString host = url.host();
    return host.startsWith("www."_L1) ? host.sliced(4) : host;
}

} // namespace

AboutView::AboutView(const Environment& environment, QWidget* parent)
    : QWidget(parent)
    , m_environment(environment) {
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins({});
    layout->addLayout(header());
    layout->addWidget(new platform::Divider(environment.theme));
    layout->addLayout(description());
    layout->addWidget(new platform::Divider(environment.theme));
    layout->addLayout(limitations());
    layout->addWidget(new platform::Divider(environment.theme));
    layout->addLayout(footer());
}

QLayout* AboutView::header() {
    const Theme& theme = m_environment.theme;
    auto* layout = column(12, {0, 32, 0, 24});
    auto* brain = label(theme, {}, TextStyle::Body, ColorRole::Accent);
    brain->setIcon(u"brain"_s, 64);
    auto* name = label(theme, AppConfig::appName(), TextStyle::LargeTitle);
    name->setWeight(QFont::Bold);
    name->setHeading(true);
    layout->addWidget(brain, 0, Qt::AlignHCenter);
    layout->addWidget(name, 0, Qt::AlignHCenter);
    layout->addWidget(
        label(theme, "Version "_L1 + version(), TextStyle::Subheadline, ColorRole::SecondaryLabel),
        0, Qt::AlignHCenter);
    return layout;
}

QLayout* AboutView::description() {
    const Theme& theme = m_environment.theme;
    auto* layout = column(16, {24, 24, 24, 24});
    layout->addWidget(paragraph(theme, AppConfig::appDescription(), TextStyle::Body));
    auto* rows = column(10, {0, 4, 0, 4});
    rows->addWidget(
        new AboutRow(theme, u"lock.shield"_s, u"Fully private — nothing leaves your device"_s));
    rows->addWidget(new AboutRow(theme, u"wifi.slash"_s, u"Works completely offline"_s));
    rows->addWidget(new AboutRow(theme, u"person.slash"_s, u"No account or sign-in required"_s));
    rows->addWidget(new AboutRow(
        theme, u"cpu"_s, u"Powered by Apple Intelligence, or other local models if available"_s));
    layout->addLayout(rows);
    return layout;
}

QLayout* AboutView::limitations() {
    const Theme& theme = m_environment.theme;
    auto* layout = column(12, {24, 24, 24, 24});
    auto* heading =
        label(theme, u"Limitations"_s.toUpper(), TextStyle::Footnote, ColorRole::SecondaryLabel);
    heading->setWeight(QFont::DemiBold);
    heading->setHeading(true);
    heading->setAccessibleName(
        u"Limitations"_s); // capitals are for the eye; read out, they get spelled
    layout->addWidget(heading);
    auto* rows = column(10, {});
    rows->addWidget(new AboutRow(theme, u"calendar.badge.exclamationmark"_s,
                                 u"Knowledge cutoff — may not know recent events"_s,
                                 ColorRole::Orange));
    rows->addWidget(
        new AboutRow(theme, u"hand.raised"_s,
                     u"Content guardrails — some topics may be declined or answered cautiously"_s,
                     ColorRole::Orange));
    rows->addWidget(new AboutRow(theme, u"exclamationmark.triangle"_s,
                                 u"Not a substitute for medical, legal, or financial advice"_s,
                                 ColorRole::Orange));
    layout->addLayout(rows);
    auto* disclaimer = column(0, {0, 4, 0, 0});
    disclaimer->addWidget(
        paragraph(theme, AppConfig::disclaimer(), TextStyle::Caption, ColorRole::SecondaryLabel));
    layout->addLayout(disclaimer);
    return layout;
}

QLayout* AboutView::footer() {
    auto* layout = column(4, {0, 20, 0, 20});
    layout->addWidget(websiteLine(m_environment, AppConfig::website()), 0, Qt::AlignHCenter);
    layout->addWidget(label(m_environment.theme, AppConfig::copyright(), TextStyle::Caption,
                            ColorRole::SecondaryLabel),
                      0, Qt::AlignHCenter);
    return layout;
}

QWidget* AboutView::websiteLine(const Environment& environment, const QString& website) {
    const QUrl url(website, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty()) {
        auto* text = label(environment.theme, website, TextStyle::Footnote);
        text->setWeight(QFont::Medium);
        return text;
    }
    auto* link = new Button(environment.theme, Button::Look::Link, bareDomain(url));
    link->setAction([&opener = environment.urlOpener, url] { opener.open(url); });
    return link;
}

AboutRow::AboutRow(const Theme& theme, const QString& icon, const QString& text, ColorRole color) {
    auto* layout = new QHBoxLayout(this);
    layout->setSpacing(10);
    layout->setContentsMargins({});
    auto* symbol = label(theme, {}, TextStyle::Subheadline, color);
    symbol->setIcon(icon);
    symbol->setMinimumWidth(20);
    layout->addWidget(symbol, 0, Qt::AlignTop);
    layout->addWidget(paragraph(theme, text, TextStyle::Subheadline), 1);
}

} // namespace tellwick
