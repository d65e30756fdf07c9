// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/FindBar.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/LineField.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Tellwick/Interface/ConversationFind.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

FindBar::FindBar(const Environment& environment, ConversationFind& find)
    : m_theme(environment.theme)
    , m_find(find)
    , m_field(new platform::LineField(m_theme, u"Find"_s)) {
    platform::addEditMenu(*m_field, m_theme, environment.overlays);
    connect(m_field, &QLineEdit::textEdited, this,
            [this](const QString& text) { m_find.setText(text, m_place ? m_place() : 0); });

    auto* summary = new Label(m_theme, {}, TextStyle::Caption, ColorRole::SecondaryLabel);
    platform::observe(summary, [this, summary] { summary->setText(m_find.summary()); });

    const auto button = [this](const QString& name, const QString& icon) {
        auto* made = new Button(m_theme, Button::Look::Icon, name, icon);
        made->setSymbolPoints(11);
        made->setToolTip(name);
        return made;
    };
    auto* previous = button(u"Previous Match"_s, u"chevron.up"_s);
    previous->setAction([this] { m_find.goBack(); });
    auto* next = button(u"Next Match"_s, u"chevron.down"_s);
    next->setAction([this] { m_find.goOn(); });
    for (Button* step : {previous, next})
        platform::observe(step, [this, step] { step->setEnabled(m_find.current().has_value()); });
    auto* close = button(u"Close"_s, u"xmark"_s);
    close->setAction([this] { end(); });

    auto* row = new QHBoxLayout(this);
    row->setSpacing(2);
    row->setContentsMargins(Theme::defaultPadding, 6, Theme::defaultPadding / 2, 6);
    row->addWidget(m_field, 1);
    row->addSpacing(Theme::defaultSpacing);
    row->addWidget(summary);
    row->addSpacing(Theme::defaultSpacing);
    for (Button* each : {previous, next, close})
        row->addWidget(each);
}

void FindBar::begin() {
    show();
    m_find.setText(m_field->text(), m_place ? m_place() : 0);
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

void FindBar::end() {
    hide();
    m_find.setText({});
    if (m_closed)
        m_closed();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && modifiers == Qt::NoModifier)
        m_find.goOn();
    else if (isReturn && modifiers == Qt::ShiftModifier)
        m_find.goBack();
    else if (event->key() == Qt::Key_Escape)
        end();
    else
        QWidget::keyPressEvent(event);
}

void FindBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.color(ColorRole::Header));
    painter.fillRect(QRect(0, height() - 1, width(), 1), m_theme.color(ColorRole::Divider));
}

} // namespace tellwick
