// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <memory>
#include <optional>

namespace platform {

/// Takes a response apart as its bytes arrive: the status, and the body without its framing
/// (chunked, of given length, or up to the end of the connection). Interim responses (status 1xx)
/// are passed over. Throws HttpError.
class HttpResponseParser {
public:
    /// The most that a head may hold; beyond it the server is not a sane one.
    static constexpr quint32 maximumHeadSize = 64 * 1024;

    HttpResponseParser();
    ~HttpResponseParser();

    /// Takes what the connection delivered next.
    void append(QByteArrayView bytes);

    /// The connection ended. Throws when the response is incomplete by its own framing.
    void finish();

    /// The status, once the head is whole.
    std::optional<int> status() const;

    /// Takes the bytes of the body that have come since the last call.
    QByteArray takeBody();

    /// Whether the whole response has been seen.
    bool isComplete() const;

private:
    struct Parser;
    bool isOnHold(QByteArrayView unparsed) const;

    std::unique_ptr<Parser> m_parser;
    QByteArray m_unparsed;
};

} // namespace platform
