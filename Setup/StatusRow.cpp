// SPDX-License-Identifier: MIT
#include "Setup/StatusRow.h"

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/ProgressBar.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace setup {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

namespace {

constexpr int paddingX = 14; // as the rows of a list
constexpr int paddingY = 10;

Label* symbol(const Theme& theme, const QString& icon, ColorRole role) {
    auto* made = new Label(theme, {}, TextStyle::Body, role);
    made->setIcon(icon);
    return made;
}

} // namespace

StatusRow::StatusRow(const Theme& theme, const QString& name)
    : m_name(name)
    , m_done(symbol(theme, u"checkmark.circle"_s, ColorRole::Accent))
    , m_problem(symbol(theme, u"exclamationmark.triangle"_s, ColorRole::OrangeSymbol))
    , m_text(new Label(theme, {}, TextStyle::Subheadline))
    , m_bar(new platform::ProgressBar(theme, name))
    , m_button(new Button(theme, Button::Look::Quiet, {})) {
    m_text->setWrapping(true);
    m_button->installEventFilter(this);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(7);
    texts->addStretch();
    texts->addWidget(m_bar);
    texts->addWidget(m_text);
    texts->addStretch();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(paddingX, paddingY, paddingX - 2, paddingY);
    row->setSpacing(Theme::defaultSpacing);
    row->addWidget(m_done);
    row->addWidget(m_problem);
    row->addLayout(texts, 1);
    row->addSpacing(Theme::defaultSpacing);
    row->addWidget(m_button);
    show(Status());
}

void StatusRow::show(const Status& status) {
    m_done->setVisible(status.kind == Kind::Done);
    m_problem->setVisible(status.kind == Kind::Problem);
    m_bar->setVisible(status.hasBar);
    m_bar->setFraction(status.fraction);
    const auto spoken = status.spoken.isEmpty() ? status.text : status.spoken;
    if (m_text->accessibleName() != spoken)
        say(spoken);
    m_text->setText(status.text);
    if (status.button.isEmpty() && m_button->hasFocus() && m_focusLost)
        m_focusLost(m_button->showsFocus() ? Qt::TabFocusReason : Qt::OtherFocusReason);
    m_button->setVisible(!status.button.isEmpty());
    if (!status.button.isEmpty())
        m_button->setName(status.button);
    m_button->setAccessibleDescription(m_name);
    // With the button and without, nothing below it moves.
    setMinimumHeight(m_button->sizeHint().height() + 2 * paddingY);
}

/// A text with an accessible name of its own tells nobody when it changes.
void StatusRow::say(const QString& text) {
    const bool isFirst = m_text->accessibleName().isEmpty();
    m_text->setAccessibleName(text);
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0) // before, the change of the name says it
    if (!isFirst)
        platform::announce(m_text, text);
#else
    static_cast<void>(isFirst);
#endif
}

/// What the second press of a double click finds is another button than it was meant for.
bool StatusRow::eventFilter(QObject* watched, QEvent* event) {
    return (watched == m_button && event->type() == QEvent::MouseButtonDblClick) ||
           QWidget::eventFilter(watched, event);
}

} // namespace setup
