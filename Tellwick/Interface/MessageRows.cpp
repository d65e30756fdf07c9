// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageRows.h"

#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Interface/MessageBubble.h"

#include <algorithm>

namespace tellwick {

using platform::Theme;

MessageRows::MessageRows(const Environment& environment, const ChatViewModel& vm)
    : m_environment(environment)
    , m_vm(vm) {}

const ChatMessage& MessageRows::message(qsizetype row) const {
    return m_vm.messages.value().at(row);
}

qsizetype MessageRows::count() const {
    return m_vm.messages.value().size();
}

QUuid MessageRows::key(qsizetype row) const {
    return message(row).id();
}

QWidget* MessageRows::make(qsizetype row, QWidget* parent) {
    return new MessageBubble(m_environment, message(row), parent);
}

void MessageRows::update(qsizetype row, QWidget* widget) {
    static_cast<MessageBubble*>(widget)->setMessage(message(row));
}

int MessageRows::estimatedHeight(qsizetype row, int width) const {
    const qreal em = m_environment.theme.bodySize();
    const qreal lineLength = std::max(1.0, (width - Theme::bubbleFreeSide) / (em * 0.5));
    const qreal lines =
        1 + std::floor(static_cast<qreal>(message(row).content.size()) / lineLength);
    return static_cast<int>(lines * em * 1.3) + 2 * Theme::bubblePaddingY;
}

QString MessageRows::accessibleName(qsizetype row) const {
    return MessageBubble::spokenText(message(row));
}

bool MessageRows::isInUse(const QWidget* widget) const {
    const auto* text = widget->findChild<platform::TextView*>();
    return text && text->hasSelection();
}

} // namespace tellwick
