// SPDX-License-Identifier: MIT
#include "Setup/SetupView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Setup/ModelSection.h"
#include "Setup/SetupTexts.h"
#include "Setup/StatusRow.h"

#include <QDir>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace setup {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::observe;
using platform::TextStyle;
using platform::Theme;
using Kind = StatusRow::Kind;

SetupView::SetupView(const Theme& theme, const WindowButtonsWished& windowButtons,
                     const SetupState& state, SetupActions actions)
    : Surface(theme, ColorRole::Popover)
    , m_state(state)
    , m_actions(std::move(actions))
    , m_header(new platform::HeaderBar(theme, texts::windowTitle()))
    , m_scroll(new platform::ScrollArea(theme))
    , m_model(new ModelSection(theme, state, m_actions))
    , m_engine(new StatusRow(theme, texts::engine()))
    , m_notNow(new Button(theme, Button::Look::Quiet, texts::notNow()))
    , m_open(new Button(theme, Button::Look::Quiet, texts::openTellwick()))
    , m_bottom(bottomBar()) {
    setWindowTitle(texts::windowTitle());
    setMinimumSize(360, 360);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_scroll->setContent(content());
    auto* column = new QVBoxLayout(this);
    column->setSpacing(0);
    column->setContentsMargins({});
    column->addWidget(m_header);
    column->addWidget(m_scroll, 1);
    column->addWidget(new platform::Divider(theme));
    column->addWidget(m_bottom);

    observe(m_header, [this, &windowButtons] {
        m_header->setWindowButtons(windowButtons.value());
        m_header->setVisible(windowButtons.value().has_value());
    });
    observe(this, [this] {
        static_cast<void>(m_theme.color(ColorRole::Popover));
        update();
    });
    observe(m_bottom, [this] {
        m_notNow->setVisible(!isReady() && !isUnderWay());
        for (Button* button : {m_model->status().button(), m_engine->button(), m_open})
            button->setDefault(button == defaultButton());
    });
    for (StatusRow* row : {&m_model->status(), m_engine})
        row->onFocusLost([this](Qt::FocusReason reason) { m_open->setFocus(reason); });
}

SetupView::~SetupView() {
    // They read the actions to their end.
    delete m_scroll;
    delete m_bottom;
}

QSize SetupView::sizeHint() const {
    constexpr qreal column = 440; // points: larger text wants a wider one
    const int width = std::max(defaultWidth, qRound(m_theme.scaled(column)));
    return {width, (m_header->isHidden() ? 0 : m_header->sizeHint().height()) +
                       m_scroll->heightForWidth(width) + 1 + m_bottom->sizeHint().height()};
}

// What stands in the window

QWidget* SetupView::content() {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setSpacing(20);
    column->setContentsMargins(Theme::defaultPadding, 28, Theme::defaultPadding, 24);
    column->addWidget(hero());
    column->addSpacing(4);
    column->addWidget(m_model);
    column->addWidget(engineSection());
    column->addStretch();
    return content;
}

QWidget* SetupView::hero() {
    auto* brain = new Label(m_theme, {}, TextStyle::Body, ColorRole::Accent);
    brain->setIcon(u"brain"_s, 48);
    auto* heading =
        new Label(m_theme, texts::heading(), TextStyle::Title2, ColorRole::Label, QFont::Bold);
    heading->setHeading();
    auto* text = new Label(m_theme, texts::introduction(), TextStyle::Subheadline,
                           ColorRole::SecondaryLabel);
    text->setWrapping(true);
    text->setAlignment(Qt::AlignHCenter);
    auto* hero = new QWidget;
    auto* column = new QVBoxLayout(hero);
    column->setSpacing(Theme::defaultSpacing);
    column->setContentsMargins(24, 0, 24, 0);
    column->addWidget(brain, 0, Qt::AlignHCenter);
    column->addWidget(heading, 0, Qt::AlignHCenter);
    column->addWidget(text);
    observe(hero, [this, heading, text] {
        heading->setText(isReady() ? texts::headingReady() : texts::heading());
        text->setText(isReady() ? texts::readyToOpen() : texts::introduction());
    });
    return hero;
}

QWidget* SetupView::engineSection() {
    auto* section = new platform::InsetSection(m_theme, texts::engine(), texts::engineFooter());
    section->addRow(m_engine);
    m_engine->button()->setAction([this] { m_actions.installEngine(); });
    observe(section, [this, section] { showEngine(section); });
    return section;
}

/// Of an engine that was there from the beginning, nobody needs to hear.
void SetupView::showEngine(QWidget* section) {
    const auto phase = m_state.engine.value();
    m_engineWasMissing = m_engineWasMissing || phase != EnginePhase::Ready;
    section->setVisible(m_engineWasMissing);
    switch (phase) {
    case EnginePhase::Missing:
        m_engine->show(
            {.text = texts::withShortPaths(m_state.engineOffer.value(), QDir::homePath()),
             .button = texts::install()});
        break;
    case EnginePhase::Installing:
        m_engine->show({.text = texts::installing(), .hasBar = true, .fraction = std::nullopt});
        break;
    case EnginePhase::Failed:
        m_engine->show({.kind = Kind::Problem,
                        .text = m_state.engineProblem.value(),
                        .button = texts::tryAgain()});
        break;
    case EnginePhase::Ready:
        m_engine->show({.kind = Kind::Done, .text = texts::ready()});
        break;
    }
}

QWidget* SetupView::bottomBar() {
    m_notNow->setAction([this] { leaveBy(m_actions.notNow); });
    m_open->setAction([this] { leaveBy(m_actions.openTellwick); });
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(Theme::defaultPadding, 12, Theme::defaultPadding, 12);
    row->setSpacing(Theme::defaultSpacing);
    row->addWidget(m_notNow);
    row->addStretch();
    row->addWidget(m_open);
    return bar;
}

// What can be done

bool SetupView::isReady() const {
    return m_state.model.value() == ModelPhase::Ready &&
           m_state.engine.value() == EnginePhase::Ready;
}

bool SetupView::isUnderWay() const {
    const auto model = m_state.model.value();
    return model == ModelPhase::Fetching || model == ModelPhase::Checking ||
           m_state.engine.value() == EnginePhase::Installing;
}

Button* SetupView::defaultButton() const {
    if (isReady())
        return m_open;
    const auto model = m_state.model.value();
    if (model == ModelPhase::Offered || model == ModelPhase::Paused || model == ModelPhase::Failed)
        return m_model->status().button();
    const auto engine = m_state.engine.value();
    if (engine == EnginePhase::Missing || engine == EnginePhase::Failed)
        return m_engine->button();
    return nullptr;
}

void SetupView::leaveBy(const std::function<void()>& action) {
    action();
    if (!isUnderWay())
        window()->close();
}

void SetupView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    Button* button = defaultButton();
    if (isReturn && isPlain && !event->isAutoRepeat() && button)
        button->click();
    else if (event->key() == Qt::Key_Escape && isPlain)
        window()->close();
    else
        QWidget::keyPressEvent(event);
}

void SetupView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    Button* button = defaultButton();
    if (!event->spontaneous())
        (button ? button : m_open)->setFocus();
}

void SetupView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous() && m_state.model.value() == ModelPhase::Fetching)
        m_actions.pause();
}

} // namespace setup
