// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <utility>

namespace platform {

/// Header fields in order. Names compare without regard to case.
using HttpHeaders = QList<std::pair<QByteArray, QByteArray>>;

/// One request.
struct HttpRequest {
    // Declared, so that this is no aggregate: gcc 12 destroys one that is made in the operand of a
    // co_await twice.
    HttpRequest() = default;
    explicit HttpRequest(QByteArray wantedTarget)
        : target(std::move(wantedTarget)) {}

    QByteArray method = "GET";
    QByteArray target = "/"; ///< the path on the server, with its leading slash
    HttpHeaders headers;     ///< besides Host, Connection and Content-Length; no line breaks
    QByteArray body;

    /// How long the server may be silent, before the response's head and inside its body; each byte
    /// that arrives starts it anew. No other limit of time applies.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
};

/// Status and header fields of a response.
struct HttpHead {
    int status = 0;
    HttpHeaders headers;

    /// The value of the first field of that name, or a null array.
    QByteArray header(QByteArrayView name) const;
};

/// A response with its whole body.
struct HttpResponse {
    HttpHead head;
    QByteArray body;

    int status() const { return head.status; }
};

} // namespace platform
