// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageList.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Scrolling/EdgeFade.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Interface/MessageBubble.h"

#include <QApplication>
#include <QKeyEvent>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::observe;
using platform::Theme;

MessageList::MessageList(const Environment& environment, const ChatViewModel& vm,
                         const ConversationFind& find, std::function<QWidget*()> makeEmptyState)
    : m_environment(environment)
    , m_vm(vm)
    , m_find(find) {
    auto* stack = new QStackedLayout;
    auto* empty = new platform::ScrollArea(environment.theme);
    m_column = new platform::LazyColumn(environment.theme, *this);
    m_column->setAccessibleName(u"Conversation"_s);
    stack->addWidget(empty);
    stack->addWidget(m_column);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins({});
    whole->addLayout(stack);
    m_top = new platform::EdgeFade(environment.theme, Qt::TopEdge, this);
    m_bottom = new platform::EdgeFade(environment.theme, Qt::BottomEdge, this);
    observe(
        m_top, [this] { m_top->setVisible(count() > 0 && !m_column->showsStart()); });
    observe(m_bottom, [this] { m_bottom->setVisible(count() > 0 && !m_column->showsEnd()); });
    makeJumpButton();
    observe(this, [this, stack, empty, make = std::move(makeEmptyState)] {
        if (count() == 0 && !empty->content()) {
            empty->setContent(make());
            // Tab comes to what is made late in its place.
            QWidget* last = empty->previousInFocusChain();
            while (last->focusPolicy() == Qt::NoFocus && last != window())
                last = last->previousInFocusChain();
            for (QWidget* inside : empty->content()->findChildren<QWidget*>())
                if (inside->focusPolicy() != Qt::NoFocus)
                    setTabOrder(std::exchange(last, inside), inside);
        }
        stack->setCurrentIndex(count() == 0 ? 0 : 1);
        for (QWidget* above : std::initializer_list<QWidget*>{m_top, m_bottom, m_jump})
            above->raise();
        m_column->reload();
        follow();
    });
    observe(
        m_column,
        [this, wasGenerating = false]() mutable {
            const bool isGenerating = m_vm.isGenerating.value();
            const bool hasEnded = std::exchange(wasGenerating, isGenerating) && !isGenerating;
            const qsizetype last = hasEnded ? count() - 1 : -1;
            if (QWidget* bubble = last >= 0 ? m_column->widgetOf(last) : nullptr)
                platform::announce(bubble, accessibleName(last));
        });
    observe(
        m_column, [this] { showMatch(); });
    observe(m_column, [this] { waitForFirstWord(); });
}

/// Follows changes; what is there when the list first appears scrolls nothing.
void MessageList::follow() {
    const qsizetype before = std::exchange(m_count, count());
    const auto text = count() == 0 ? platform::TextSnapshot() : message(count() - 1).content;
    const bool isNewText = std::exchange(m_lastText, text) != text;
    if (before < 0 || count() == 0)
        return;
    // A scroll that is under way follows the growing end by itself.
    if (before != count())
        m_column->scrollToEnd(true);
    else if (isNewText && !m_column->isScrollingToEnd() && !m_column->isHeldByUser())
        m_column->scrollToEnd(false);
}

void MessageList::makeJumpButton() {
    m_jump = new platform::Button(m_environment.theme, platform::Button::Look::Floating,
                                  u"Jump to newest"_s, u"arrow.down"_s);
    m_jump->setParent(this);
    m_jump->setToolTip(u"Jump to newest (Ctrl+End)"_s);
    m_jump->setAction([this] { m_column->scrollToEnd(true); });
    observe(m_jump, [this] { m_jump->setVisible(count() > 0 && !m_column->showsEnd()); });
}

void MessageList::waitForFirstWord() {
    const bool isWaiting =
        m_vm.isGenerating.value() && count() > 0 && message(count() - 1).content.isEmpty();
    if (!isWaiting) {
        m_waiting.stop();
        m_column->setBusy(false);
    } else if (!m_waiting.isActive()) {
        m_waiting.start(1000, this);
    }
}

void MessageList::timerEvent(QTimerEvent*) {
    m_waiting.stop();
    m_column->setBusy(true);
}

void MessageList::resizeEvent(QResizeEvent*) {
    m_top->setGeometry(0, 0, width(), platform::EdgeFade::depth);
    m_bottom->setGeometry(0, height() - platform::EdgeFade::depth, width(),
                          platform::EdgeFade::depth);
    constexpr int margin = 8;
    const QSize size = m_jump->sizeHint();
    m_jump->setGeometry({{(width() - size.width()) / 2, height() - size.height() - margin}, size});
}

/// Brings the current match into view and lights all that are there.
void MessageList::showMatch() {
    const auto current = m_find.current();
    const bool isNew = std::exchange(m_shownMatch, current) != current;
    for (qsizetype row = 0; row < m_count; ++row)
        if (QWidget* widget = m_column->widgetOf(row))
            light(row, *static_cast<MessageBubble*>(widget));
    if (!isNew || !current)
        return;
    auto* bubble = static_cast<MessageBubble*>(m_column->showRow(current->row));
    m_column->reveal(bubble, bubble->characterRect(current->start));
}

void MessageList::light(qsizetype row, MessageBubble& bubble) const {
    const bool isHere = m_shownMatch && m_shownMatch->row == row;
    bubble.setFound(m_find.text(), isHere ? std::optional(m_shownMatch->start) : std::nullopt);
}

bool MessageList::scrollByKey(const QKeyEvent& event) {
    return m_column->isVisible() && m_column->scrollByKey(event);
}

qsizetype MessageList::firstVisible() const {
    return m_column->firstVisibleRow();
}

void MessageList::keyPressEvent(QKeyEvent* event) {
    const qsizetype inside = m_column->rowOf(QApplication::focusWidget());
    const qsizetype row = inside < 0 ? m_column->currentRow() : inside;
    if (event->matches(QKeySequence::Copy) && row >= 0)
        static_cast<MessageBubble*>(m_column->widgetOf(row))->copyContent();
    else
        event->ignore();
}

const ChatMessage& MessageList::message(qsizetype row) const {
    return m_vm.messages.value().at(row);
}

qsizetype MessageList::count() const {
    return m_vm.messages.value().size();
}

QUuid MessageList::key(qsizetype row) const {
    return message(row).id();
}

QWidget* MessageList::make(qsizetype row, QWidget* parent) {
    auto* bubble = new MessageBubble(m_environment, message(row), parent);
    light(row, *bubble);
    return bubble;
}

void MessageList::update(qsizetype row, QWidget* widget) {
    auto* bubble = static_cast<MessageBubble*>(widget);
    bubble->setMessage(message(row));
    light(row, *bubble);
}

void MessageList::setCurrent(QWidget* widget, bool isCurrent) {
    static_cast<MessageBubble*>(widget)->setCurrent(isCurrent);
}

int MessageList::estimatedHeight(qsizetype row, int width) const {
    const qreal em = m_environment.theme.bodySize();
    const qreal lineLength = std::max(1.0, (width - Theme::bubbleFreeSide) / (em * 0.5));
    const qreal lines =
        1 + std::floor(static_cast<qreal>(message(row).content.size()) / lineLength);
    return static_cast<int>(lines * em * 1.3) + 2 * Theme::bubblePaddingY;
}

QString MessageList::accessibleName(qsizetype row) const {
    return MessageBubble::spokenText(message(row));
}

bool MessageList::isInUse(const QWidget* widget) const {
    const auto* text = widget->findChild<platform::TextView*>();
    return text && text->hasSelection();
}

} // namespace tellwick
