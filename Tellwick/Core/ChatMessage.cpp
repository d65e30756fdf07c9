// SPDX-License-Identifier: MIT
#include "Tellwick/Core/ChatMessage.h"

namespace tellwick {

ChatMessage::ChatMessage(Role role, platform::TextSnapshot content)
    : content(std::move(content))
    , m_id(QUuid::createUuid())
    , m_role(role) {}

} // namespace tellwick
