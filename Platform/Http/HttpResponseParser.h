// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Http/HttpMessages.h"

#include <memory>

namespace platform {

/// Takes a response apart as its bytes arrive: the head, and the body without its framing (chunked,
/// of given length, or up to the end of the connection). Interim responses (status 1xx) are passed
/// over. Throws HttpError.
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

    /// The head, once it is whole; before that null.
    const HttpHead* head() const;

    /// Takes the bytes of the body that have come since the last call.
    QByteArray takeBody();

    /// Whether the whole response has been seen.
    bool isComplete() const;

private:
    class Parser;
    void parse();

    std::unique_ptr<Parser> m_parser;
    QByteArray m_unparsed;
};

} // namespace platform
