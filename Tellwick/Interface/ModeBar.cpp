// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModeBar.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QHBoxLayout>
#include <QPainter>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

ModeBar::ModeBar(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_label(new Label(theme, {}, TextStyle::Caption))
    , m_clear(new Button(theme, Button::Look::Disc, u"Clear mode"_s, u"xmark.circle.fill"_s)) {
    m_label->setWeight(QFont::Medium);
    m_label->setColorRole(ColorRole::Accent);
    m_clear->setSymbolOpacity(0.75);
    auto* row = new QHBoxLayout(this);
    row->setSpacing(Theme::defaultSpacing);
    row->setContentsMargins(16, 8, 16, 8);
    row->addWidget(m_label);
    row->addStretch(1);
    row->addWidget(m_clear);
}

void ModeBar::setMode(const AppConfig::WritingMode& mode) {
    m_label->setText(mode.label);
    m_label->setIcon(mode.icon);
}

void ModeBar::onClear(std::function<void()> clear) {
    m_clear->setAction(std::move(clear));
}

void ModeBar::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), m_theme.color(ColorRole::ModeBar));
}

} // namespace tellwick
