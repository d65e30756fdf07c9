// SPDX-License-Identifier: MIT
#include "Tellwick/Conversations/ChatSession.h"

#include <algorithm>

namespace tellwick {

using namespace Qt::StringLiterals;
using Role = ChatMessage::Role;

platform::FetchDescriptor<ChatSession> ChatSession::newestFirst() {
    return {{&ChatSession::updatedAt}};
}

QList<ChatMessage> ChatSession::messages() const {
    const QStringList& storedRoles = roles.value();
    const QStringList& storedContents = contents.value();
    const qsizetype count = std::min(storedRoles.size(), storedContents.size());
    QList<ChatMessage> messages;
    messages.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        const Role role = storedRoles[i] == u"user" ? Role::user : Role::assistant;
        messages.append(ChatMessage(role, platform::TextSnapshot(storedContents[i])));
    }
    return messages;
}

void ChatSession::setMessages(const QList<ChatMessage>& messages) {
    QStringList newRoles;
    QStringList newContents;
    newRoles.reserve(messages.size());
    newContents.reserve(messages.size());
    for (const ChatMessage& message : messages) {
        newRoles.append(message.role() == Role::user ? u"user"_s : u"assistant"_s);
        newContents.append(message.content.toString());
    }
    roles = std::move(newRoles);
    contents = std::move(newContents);
}

void ChatSession::touch(const QDateTime& now) {
    updatedAt = std::max(now, updatedAt.value().addMSecs(1));
}

platform::ModelContainer conversationStore(const QString& dataFolder) {
    return platform::ModelContainer(dataFolder + u"/conversation.sqlite"_s,
                                    platform::RecordType::of<ChatSession>());
}

} // namespace tellwick
