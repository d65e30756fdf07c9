// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ChatView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Divider.h"
#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/PullDownButton.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/AboutView.h"
#include "Tellwick/Interface/GreetingBubble.h"
#include "Tellwick/Interface/ModeBar.h"
#include "Tellwick/Interface/ModelsView.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QShortcut>
#include <QStackedLayout>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::observe;
using platform::Panel;
using platform::TextStyle;
using platform::Theme;

namespace {

constexpr qreal toolbarIconSize = 17;
constexpr qreal sendIconSize = 30;

/// Without blanks and tabs at both ends; line breaks stay.
QStringView withoutBlanks(QStringView text) {
    const auto isBlank = [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

} // namespace

ChatView::ChatView(const Environment& environment, ChatViewModel& vm, QWidget* parent)
    : QWidget(parent)
    , m_environment(environment)
    , m_vm(&vm)
    , m_rows(environment, *m_vm) {
    body();
}

ChatView::~ChatView() = default;

void ChatView::body() {
    auto* header = new platform::HeaderBar(m_environment.theme);
    header->setTitle(AppConfig::appName());
    observe(header, [this, header] { header->setSubtitle(m_vm->modelManager.selectedSubtitle()); });
    newChatButton(*header);
    menuButton(*header);

    auto* stack = new QVBoxLayout(this);
    stack->setSpacing(0);
    stack->setContentsMargins({});
    stack->addWidget(header);
    stack->addWidget(messageList(), 1);
    stack->addWidget(new platform::Divider(m_environment.theme));
    stack->addWidget(modeBar());
    stack->addWidget(inputBar());

    keyboardShortcuts();
    aboutSheet();
    modelsPopover();
    availabilityAlert();
}

void ChatView::newChatButton(platform::HeaderBar& placement) {
    auto* button =
        new Button(m_environment.theme, Button::Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
    button->setSymbolPoints(toolbarIconSize);
    button->setToolTip(u"New Chat (Ctrl+N)"_s);
    const auto newChat = [this] {
        m_vm->newChat();
        focusField();
    };
    button->setAction(newChat);
    observe(button, [this, button] { button->setEnabled(canStartNewChat()); });
    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_N), this);
    connect(shortcut, &QShortcut::activated, this, [this, newChat] {
        if (canStartNewChat() && !m_environment.overlays.isPresenting())
            newChat();
    });
    placement.addTrailing(button);
}

bool ChatView::canStartNewChat() const {
    return !m_vm->messages.value().isEmpty() || m_vm->isGenerating.value();
}

void ChatView::menuButton(platform::HeaderBar& placement) {
    const auto entries = [this]() -> std::vector<platform::MenuEntry> {
        return {{u"Models"_s, u"cpu"_s, [this] { m_showingModels = true; }},
                platform::MenuEntry::separator(),
                {u"About"_s, u"info.circle"_s, [this] { m_showingAbout = true; }}};
    };
    m_menuButton = new platform::PullDownButton(
        m_environment.theme, u"More"_s, u"ellipsis.circle"_s, m_environment.overlays, entries);
    m_menuButton->setSymbolPoints(toolbarIconSize);
    placement.addTrailing(m_menuButton);
}

QWidget* ChatView::messageList() {
    auto* list = new QWidget;
    auto* stack = new QStackedLayout(list);
    auto* empty = new platform::ScrollArea(m_environment.theme);
    auto* column = new platform::LazyColumn(m_environment.theme, m_rows);
    column->setAccessibleName(u"Conversation"_s);
    stack->addWidget(empty);
    stack->addWidget(column);

    // What the last run showed: the list follows changes, and does not scroll when it first
    // appears.
    struct Shown {
        qsizetype count = 0;
        platform::TextSnapshot lastText;
    };
    const auto shown = std::make_shared<std::optional<Shown>>();
    observe(list, [this, empty, column, stack, shown] {
        const QList<ChatMessage>& messages = m_vm->messages.value();
        if (messages.isEmpty() && !empty->content())
            empty->setContent(emptyState());
        stack->setCurrentWidget(messages.isEmpty() ? static_cast<QWidget*>(empty) : column);
        column->reload();
        Shown now{messages.size(),
                  messages.isEmpty() ? platform::TextSnapshot() : messages.last().content};
        const auto before = std::exchange(*shown, std::move(now));
        if (!before || messages.isEmpty())
            return;
        if (before->count != messages.size())
            column->scrollToEnd(true);
        // A scroll that is under way follows the growing end by itself.
        else if (!(before->lastText == messages.last().content) && !column->isScrollingToEnd())
            column->scrollToEnd(false);
    });
    // A reply is read out when it is whole, not word by word.
    observe(column, [this, column, wasGenerating = false]() mutable {
        const bool isGenerating = m_vm->isGenerating.value();
        const bool hasEnded = std::exchange(wasGenerating, isGenerating) && !isGenerating;
        const qsizetype last = hasEnded ? m_rows.count() - 1 : -1;
        if (QWidget* bubble = last >= 0 ? column->widgetOf(last) : nullptr)
            platform::announce(bubble, m_rows.accessibleName(last));
    });
    return list;
}

QWidget* ChatView::emptyState() {
    const Theme& theme = m_environment.theme;
    auto* state = new QWidget;
    auto* content = new QWidget;
    content->setMaximumWidth(Theme::columnWidth);
    auto* centring = new QHBoxLayout(state);
    centring->setContentsMargins({});
    centring->addWidget(content);
    auto* column = new QVBoxLayout(content);
    column->setSpacing(12);
    column->setContentsMargins(Theme::defaultPadding, Theme::defaultPadding + 60,
                               Theme::defaultPadding, Theme::defaultPadding);
    const auto centred = [column](QWidget* widget) {
        column->addWidget(widget, 0, Qt::AlignHCenter);
    };
    const auto label = [&theme](const QString& text, TextStyle style, ColorRole role) {
        auto* made = new Label(theme, text, style);
        made->setColorRole(role);
        return made;
    };

    auto* brain = label({}, TextStyle::Body, ColorRole::SecondaryLabel);
    brain->setIcon(u"brain"_s, 52);
    centred(brain);
    auto* name = label(AppConfig::appName(), TextStyle::Title2, ColorRole::Label);
    name->setWeight(QFont::Medium);
    name->setHeading(true);
    centred(name);
    centred(label(AppConfig::tagline(), TextStyle::Subheadline, ColorRole::SecondaryLabel));

    auto* greeting = new QVBoxLayout;
    greeting->setContentsMargins(24, 8, 24, 0);
    greeting->addWidget(new GreetingBubble(theme, AppConfig::welcomeMessage()));
    column->addLayout(greeting);

    auto* model = label(AppConfig::modelLabel(), TextStyle::Caption, ColorRole::TertiaryLabel);
    model->setIcon(u"cpu"_s);
    centred(model);
    column->addSpacing(4);
    column->addWidget(writingModeChips());
    column->addStretch(1);
    return state;
}

QWidget* ChatView::writingModeChips() {
    auto* chips = new QWidget;
    auto* row = new QHBoxLayout(chips);
    row->setSpacing(8);
    row->setContentsMargins(24, 0, 24, 0);
    for (const AppConfig::WritingMode& mode : AppConfig::writingModes()) {
        auto* chip = new Button(m_environment.theme, Button::Look::Chip, mode.label, mode.icon);
        chip->setAction([this, mode] { m_vm->setMode(mode); });
        observe(chip, [this, chip, mode] {
            const auto& active = m_vm->activeMode.value();
            chip->setChecked(active && active->id() == mode.id());
        });
        row->addWidget(chip);
    }
    auto* strip = new platform::ScrollArea(m_environment.theme, nullptr, Qt::Horizontal);
    strip->setAccessibleName(u"Writing modes"_s);
    strip->setContent(chips);
    return strip;
}

QWidget* ChatView::modeBar() {
    auto* bar = new ModeBar(m_environment.theme);
    bar->onClear([this] {
        m_vm->clearMode();
        focusField();
    });
    observe(bar, [this, bar] {
        const auto& mode = m_vm->activeMode.value();
        const bool isShown = mode && m_vm->messages.value().isEmpty();
        if (isShown)
            bar->setMode(*mode);
        bar->setVisible(isShown);
    });
    return bar;
}

QWidget* ChatView::inputBar() {
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setSpacing(8);
    row->setContentsMargins(12, 10, 12, 10);

    m_field = new platform::GrowingTextField(m_environment.theme);
    m_field->setPlaceholderText(u"Message"_s);
    m_field->setAccessibleName(u"Message"_s);
    m_field->onTextEdited([this](const QString& text) { m_vm->draft = text; });
    m_field->onSubmit([this] { m_vm->send(); });
    m_field->onContextMenu([this](QPoint position) { openEditMenu(position); });
    observe(m_field, [this] { m_field->setText(m_vm->draft.value()); });

    auto* button = new Button(m_environment.theme, Button::Look::Disc, {});
    button->setSymbolPoints(sendIconSize);
    button->setAction([this] {
        if (m_vm->isGenerating.value())
            m_vm->stop();
        else
            m_vm->send();
    });
    observe(button, [this, button] {
        const bool isGenerating = m_vm->isGenerating.value();
        button->setIcon(isGenerating ? u"stop.circle.fill"_s : u"arrow.up.circle.fill"_s);
        button->setName(isGenerating ? u"Stop"_s : u"Send"_s);
        button->setColorRole(sendButtonColor());
        button->setSymbolOpacity(button->colorRole() == ColorRole::SecondaryLabel ? 0.7 : 1.0);
    });

    row->addWidget(m_field, 1, Qt::AlignBottom);
    row->addWidget(button, 0, Qt::AlignBottom);
    return bar;
}

void ChatView::openEditMenu(QPoint globalPosition) {
    std::vector<platform::MenuEntry> entries;
    if (m_field->textCursor().hasSelection()) {
        entries.push_back({u"Cut"_s, {}, [this] { m_field->cut(); }});
        entries.push_back({u"Copy"_s, {}, [this] { m_field->copy(); }});
    }
    if (m_field->canPaste())
        entries.push_back({u"Paste"_s, {}, [this] { m_field->paste(); }});
    if (!m_vm->draft.value().isEmpty())
        entries.push_back({u"Select All"_s, {}, [this] { m_field->selectAll(); }});
    if (!entries.empty())
        m_environment.overlays.present(std::make_unique<platform::Menu>(
            m_environment.theme, u"Edit"_s, std::move(entries), globalPosition));
}

ColorRole ChatView::sendButtonColor() const {
    if (m_vm->isGenerating.value())
        return ColorRole::Red;
    return withoutBlanks(m_vm->draft.value()).isEmpty() ? ColorRole::SecondaryLabel
                                                        : ColorRole::Accent;
}

void ChatView::keyboardShortcuts() {
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* send = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        connect(send, &QShortcut::activated, this, [this] { m_vm->send(); });
    }
}

void ChatView::aboutSheet() {
    showWhile(
        m_showingAbout,
        [this] {
            return Panel::sheet(m_environment.theme, u"About"_s, new AboutView(m_environment),
                                AboutView::width);
        });
}

void ChatView::modelsPopover() {
    showWhile(
        m_showingModels,
        [this] {
            return Panel::popover(m_environment.theme, u"Models"_s,
                                  new ModelsView(m_environment, m_vm->modelManager),
                                  ModelsView::width, m_menuButton);
        });
}

void ChatView::showWhile(platform::Observed<bool>& flag,
                         std::function<std::unique_ptr<Panel>()> make) {
    observe(
        this,
        [this, &flag, make = std::move(make), panel = QPointer<Panel>()]() mutable {
            if (flag.value() == !panel.isNull())
                return;
            if (panel) {
                m_environment.overlays.dismiss(panel);
                return;
            }
            panel = m_environment.overlays.present(
                make(),
                [this, &flag] {
                    flag = false;
                    focusField();
                });
        });
}

void ChatView::availabilityAlert() {
    observe(
        this,
        [this, alert = QPointer<Panel>(), shown = QString()]() mutable {
            const std::optional<QString>& error = m_vm->availabilityError.value();
            if (error && alert && shown == *error)
                return;
            if (alert)
                m_environment.overlays.dismiss(alert);
            if (!error)
                return;
            shown = *error;
            alert = m_environment.overlays.present(
                Panel::alert(m_environment.theme, u"Apple Intelligence Unavailable"_s, shown,
                             u"OK"_s),
                [this, told = shown] {
                    // Another error may be what has closed it, and wants an alert of its own.
                    if (m_vm->availabilityError.value() == told)
                        m_vm->availabilityError = std::nullopt;
                    focusField();
                });
        });
}

void ChatView::focusField() {
    // What is open over the screen keeps the keyboard.
    if (!m_environment.overlays.isPresenting())
        m_field->setFocus(Qt::OtherFocusReason);
}

void ChatView::keyPressEvent(QKeyEvent* event) {
    // What nothing else in the window has a use for is the beginning of a message.
    const bool isTyped = !event->text().isEmpty() && event->text().front().isPrint() &&
                         !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (!isTyped || m_environment.overlays.isPresenting()) {
        QWidget::keyPressEvent(event);
        return;
    }
    focusField();
    m_field->insertPlainText(event->text());
}

} // namespace tellwick
