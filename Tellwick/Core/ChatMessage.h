// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/TextSnapshot.h"

#include <QUuid>

namespace tellwick {

/// One message of the conversation in memory. A value; as a whole it has no equality.
class ChatMessage {
public:
    /// Who wrote the message.
    enum class Role { user, assistant };

    /// A message with a fresh identity, also when it is rebuilt from the store.
    ChatMessage(Role role, platform::TextSnapshot text)
        : content(std::move(text))
        , m_role(role) {}

    /// A random (version 4) UUID: the identity of the message. Copies are the same message.
    const QUuid& id() const { return m_id; }
    Role role() const { return m_role; }

    /// The message's text; replaced again and again while a reply streams in.
    platform::TextSnapshot content;

private:
    QUuid m_id = QUuid::createUuid();
    Role m_role;
};

} // namespace tellwick
