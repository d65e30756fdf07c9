// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpBody.h"

#include "Platform/Http/HttpError.h"

namespace platform {

HttpBody::HttpBody(HttpExchangeOwner::Opened opened)
    : m_head(std::move(opened.head))
    , m_exchange(std::move(opened.exchange)) {}

Task<void> HttpBody::fill() {
    while (!m_hasEnded && !m_lines.hasLine()) {
        if (m_lines.pendingBytes() > maximumLineLength)
            throw HttpError(HttpError::Kind::TooLarge);
        const QByteArray bytes = co_await m_exchange.readBody();
        if (bytes.isEmpty()) {
            m_lines.finish();
            m_hasEnded = true;
        } else {
            m_lines.append(bytes);
        }
    }
}

} // namespace platform
