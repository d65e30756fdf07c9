// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageList.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Interface/MessageBubble.h"

#include <QStackedLayout>

#include <algorithm>

namespace tellwick {

using platform::observe;
using platform::Theme;

MessageList::MessageList(const Environment& environment, const ChatViewModel& vm,
                         std::function<QWidget*()> makeEmptyState)
    : m_environment(environment)
    , m_vm(vm) {
    auto* stack = new QStackedLayout(this);
    auto* empty = new platform::ScrollArea(environment.theme);
    auto* column = new platform::LazyColumn(environment.theme, *this);
    column->setAccessibleName(QStringLiteral("Conversation"));
    stack->addWidget(empty);
    stack->addWidget(column);
    observe(this, [this, stack, empty, column, make = std::move(makeEmptyState)] {
        if (count() == 0 && !empty->content())
            empty->setContent(make());
        stack->setCurrentIndex(count() == 0 ? 0 : 1);
        column->reload();
        follow(*column);
    });
    observe(column, [this, column, wasGenerating = false]() mutable {
        const bool isGenerating = m_vm.isGenerating.value();
        const bool hasEnded = std::exchange(wasGenerating, isGenerating) && !isGenerating;
        const qsizetype last = hasEnded ? count() - 1 : -1;
        if (QWidget* bubble = last >= 0 ? column->widgetOf(last) : nullptr)
            platform::announce(bubble, accessibleName(last));
    });
}

/// Follows changes; what is there when the list first appears scrolls nothing.
void MessageList::follow(platform::LazyColumn& column) {
    const qsizetype before = std::exchange(m_count, count());
    const auto text = count() == 0 ? platform::TextSnapshot() : message(count() - 1).content;
    const bool isNewText = std::exchange(m_lastText, text) != text;
    if (before < 0 || count() == 0)
        return;
    // A scroll that is under way follows the growing end by itself.
    if (before != count())
        column.scrollToEnd(true);
    else if (isNewText && !column.isScrollingToEnd())
        column.scrollToEnd(false);
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
    return new MessageBubble(m_environment, message(row), parent);
}

void MessageList::update(qsizetype row, QWidget* widget) {
    static_cast<MessageBubble*>(widget)->setMessage(message(row));
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
