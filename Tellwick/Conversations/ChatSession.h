// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/ModelContext.h"
#include "Tellwick/Core/ChatMessage.h"

namespace tellwick {

/// The record of the conversation in the store: when it was last written, and the roles and texts
/// of its messages as two lists side by side. A new record has no messages, and was written now.
/// Main thread.
class ChatSession final : public platform::PersistentModel {
public:
    /// The record type's name in the store.
    static QString recordName() { return QStringLiteral("ChatSession"); }

    /// The newest record first.
    static platform::FetchDescriptor<ChatSession> newestFirst();

    platform::DateAttribute updatedAt{*this, QStringLiteral("updatedAt"),
                                      QDateTime::currentDateTimeUtc()};
    /// "user" or "assistant" for each message.
    platform::TextListAttribute roles{*this, QStringLiteral("roles")};
    /// The text of each message.
    platform::TextListAttribute contents{*this, QStringLiteral("contents")};

    /// The messages that the record tells of, each with a fresh identity. Surplus elements of the
    /// longer list are passed over; a role text other than "user" reads as the assistant's.
    QList<ChatMessage> messages() const;

    /// Replaces both lists by those of these messages.
    void setMessages(const QList<ChatMessage>& messages);

    /// Sets `updatedAt` to `now`, or to just after what it was where the clock stands or has
    /// stepped back: it never goes back.
    void touch(const QDateTime& now = QDateTime::currentDateTimeUtc());
};

/// The store of a user's conversation, which is opened when it is first used.
///
/// @param dataFolder absolute path of the folder where the program keeps the user's data.
platform::ModelContainer conversationStore(const QString& dataFolder);

} // namespace tellwick
