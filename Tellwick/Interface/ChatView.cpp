// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ChatView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/PullDownButton.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/AboutView.h"
#include "Tellwick/Interface/FindBar.h"
#include "Tellwick/Interface/Greeting.h"
#include "Tellwick/Interface/MessageField.h"
#include "Tellwick/Interface/MessageList.h"
#include "Tellwick/Interface/ModelsView.h"

#include <QApplication>
#include <QBoxLayout>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QShortcut>

#include <algorithm>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::observe;
using platform::Panel;
using platform::Surface;
using platform::TextStyle;
using platform::Theme;

namespace {

constexpr qreal toolbarIconSize = 17;
constexpr int inputPadding = 12;

} // namespace

ChatView::ChatView(const Environment& environment, ChatViewModel& vm, QWidget* parent)
    : QWidget(parent)
    , m_environment(environment)
    , m_vm(vm)
    , m_find(vm) {
    body();
    shortcuts();
    showWhile(
        m_showingAbout,
        [this] {
            return Panel::sheet(m_environment.theme, u"About"_s, new AboutView(m_environment),
                                AboutView::width);
        });
    showWhile(
        m_showingModels,
        [this] {
            return Panel::popover(m_environment.theme, u"Models"_s,
                                  new ModelsView(m_environment, m_vm.modelManager),
                                  ModelsView::width, m_menuButton);
        });
    showWhile(m_vm.availabilityError, [this] {
        return Panel::alert(m_environment.theme, u"Apple Intelligence Unavailable"_s,
                            *m_vm.availabilityError.value(), u"OK"_s);
    });
}

void ChatView::body() {
    auto* header = new platform::HeaderBar(m_environment.theme, AppConfig::appName());
    observe(
        header, [this, header] { header->setSubtitle(m_vm.modelManager.selectedSubtitle()); });
    observe(header, [this, header] { header->setWindowButtons(m_environment.windowButtons); });
    newChatButton(*header);
    menuButton(*header);

    auto* stack = new QVBoxLayout(this);
    stack->setSpacing(0);
    stack->setContentsMargins({});
    stack->addWidget(header);
    stack->addWidget(findBar());
    stack->addWidget(messageList(), 1);
    stack->addWidget(new platform::Divider(m_environment.theme));
    auto* input = inputBar();
    stack->addWidget(modeBar());
    stack->addWidget(input);
}

void ChatView::shortcuts() {
    const auto on = [this](QKeyCombination keys, auto action) {
        auto* shortcut = new QShortcut(QKeySequence(keys), this);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter})
        on(
            Qt::CTRL | key, [this] { m_vm.send(); });
    on(Qt::CTRL | Qt::Key_F, [this] {
        if (!m_environment.overlays.isPresenting())
            m_findBar->begin();
    });
}

QWidget* ChatView::findBar() {
    m_findBar = new FindBar(m_environment, m_find);
    m_findBar->onAskedForPlace([this] { return m_list->firstVisible(); });
    m_findBar->onClosed([this] { focusField(); });
    m_findBar->hide();
    return m_findBar;
}

void ChatView::newChatButton(platform::HeaderBar& placement) {
    auto* button =
        new Button(m_environment.theme, Button::Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
    button->setSymbolPoints(toolbarIconSize);
    button->setToolTip(u"New Chat (Ctrl+N)"_s);
    button->setAction([this] {
        m_vm.newChat();
        focusField();
    });
    observe(button, [this, button] {
        button->setEnabled(!m_vm.messages.value().isEmpty() || m_vm.isGenerating.value());
    });
    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_N), this);
    connect(shortcut, &QShortcut::activated, button, [this, button] {
        if (!m_environment.overlays.isPresenting())
            button->click();
    });
    placement.addTrailing(button);
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
    m_list = new MessageList(m_environment, m_vm, m_find, [this] { return emptyState(); });
    return m_list;
}

QWidget* ChatView::emptyState() {
    return new Greeting(m_environment.theme, writingModeChips());
}

QWidget* ChatView::writingModeChips() {
    auto* chips = new QWidget;
    auto* row = new QHBoxLayout(chips);
    row->setSpacing(8);
    row->setContentsMargins(24, 0, 24, 0);
    for (const AppConfig::WritingMode& mode : AppConfig::writingModes()) {
        auto* chip = new Button(m_environment.theme, Button::Look::Chip, mode.label, mode.icon);
        chip->setAction([this, mode] { m_vm.setMode(mode); });
        observe(chip, [this, chip, mode] {
            const auto& active = m_vm.activeMode.value();
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
    const Theme& theme = m_environment.theme;
    auto* bar = new Surface(theme, ColorRole::ModeBar);
    auto* label = new Label(theme, {}, TextStyle::Caption, ColorRole::Accent, QFont::Medium);
    auto* clear = new Button(theme, Button::Look::Disc, u"Clear mode"_s, u"xmark.circle.fill"_s);
    clear->setSymbolOpacity(0.75);
    clear->setAction([this] {
        m_vm.clearMode();
        focusField();
    });
    auto* row = new QHBoxLayout(bar);
    row->setSpacing(Theme::defaultSpacing);
    row->setContentsMargins(16, 8, 16, 8);
    row->addWidget(label);
    row->addStretch(1);
    row->addWidget(clear);
    auto* bordered = new QWidget;
    auto* column = new QVBoxLayout(bordered);
    column->setSpacing(0);
    column->setContentsMargins({});
    column->addWidget(bar);
    column->addWidget(new platform::Divider(theme));
    // The disc stands over the middle of Send.
    observe(clear, [this, clear] {
        static_cast<void>(m_environment.theme.bodySize());
        const int middle = inputPadding + m_field->lineHeight() / 2;
        clear->setFixedWidth(2 * (middle - 16) + 1);
    });
    observe(bordered, [this, bordered, label] {
        const auto& mode = m_vm.activeMode.value();
        const bool isShown = mode && m_vm.messages.value().isEmpty();
        if (isShown) {
            label->setText(mode->label);
            label->setIcon(mode->icon);
        }
        bordered->setVisible(isShown);
    });
    return bordered;
}

QWidget* ChatView::inputBar() {
    auto* bar = new QWidget;
    auto* content = new QWidget;
    content->setMaximumWidth(Theme::columnWidth);
    auto* centring = new QHBoxLayout(bar);
    centring->setContentsMargins({});
    centring->addWidget(content);
    // What can be pressed of the button is larger than its disc, which is as high as the field.
    constexpr int ring = Theme::focusRingWidth;
    auto* row = new QHBoxLayout(content);
    row->setSpacing(8 - ring);
    row->setContentsMargins(inputPadding, 10 - ring, inputPadding - ring, 10 - ring);

    m_field = new MessageField(m_environment, m_vm);
    m_field->takeCompositionsFrom(*m_list);
    auto* button = new Button(m_environment.theme, Button::Look::Disc, {});
    button->setAction([this] {
        if (m_vm.isGenerating.value())
            m_vm.stop();
        else
            m_vm.send();
    });
    observe(
        button,
        [this, button] {
            const bool isGenerating = m_vm.isGenerating.value();
            button->setIcon(isGenerating ? u"stop.circle.fill"_s : u"arrow.up.circle.fill"_s);
            button->setName(isGenerating ? u"Stop"_s : u"Send"_s);
            button->setColorRole(sendButtonColor());
            button->setSymbolOpacity(button->colorRole() == ColorRole::SecondaryLabel ? 0.5 : 1.0);
        });
    observe(button, [this, button] {
        button->setSymbolPoints(m_environment.theme.symbolPoints(m_field->lineHeight()));
    });

    auto* field = new QVBoxLayout;
    field->setContentsMargins(0, ring, 0, ring);
    field->addWidget(m_field);
    row->addLayout(field, 1);
    row->addWidget(button, 0, Qt::AlignBottom);
    return bar;
}

ColorRole ChatView::sendButtonColor() const {
    if (m_vm.isGenerating.value())
        return ColorRole::Red;
    const auto isBlank = [](QChar character) { // a line break is none
        return character == u'\t' || character.category() == QChar::Separator_Space;
    };
    const QString draft = m_vm.draft.value();
    return std::ranges::all_of(draft, isBlank) ? ColorRole::SecondaryLabel : ColorRole::AccentFill;
}

template <class State, class Make>
void ChatView::showWhile(platform::Observed<State>& state, Make make) {
    observe(
        this,
        [this, &state, make, panel = QPointer<Panel>(), shown = State()]() mutable {
            const State& wanted = state.value();
            if (wanted && panel && shown == wanted)
                return;
            m_environment.overlays.dismiss(panel);
            if (!wanted)
                return;
            shown = wanted;
            panel = m_environment.overlays.present(
                make(),
                [this, &state, shown] {
                    // Another state may be what has closed it, and wants a panel of its own.
                    if (state.value() == shown)
                        state = State();
                    focusField();
                });
        });
}

void ChatView::focusField() {
    if (!m_environment.overlays.isPresenting())
        m_field->setFocus(Qt::OtherFocusReason);
}

void ChatView::keyPressEvent(QKeyEvent* event) {
    if (m_environment.overlays.isPresenting()) {
        QWidget::keyPressEvent(event);
    } else if (event->key() == Qt::Key_Escape && m_findBar->isVisible()) {
        m_findBar->end();
    } else if (event->key() == Qt::Key_Escape) {
        m_vm.stop();
    } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        // The menu key comes as an event for the menu, this one does not.
        if (QWidget* focused = QApplication::focusWidget()) {
            const QPoint middle = focused->rect().center();
            QContextMenuEvent menu(QContextMenuEvent::Keyboard, middle,
                                   focused->mapToGlobal(middle));
            QCoreApplication::sendEvent(focused, &menu);
        }
    } else if (!m_field->takeTyping(*event) && !m_list->scrollByKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

} // namespace tellwick
