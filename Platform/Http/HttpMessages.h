// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <utility>

namespace platform {

/// One request.
struct HttpRequest {
    // Declared, so that this is no aggregate: gcc 12 destroys one that is made in the operand of a
    // co_await twice.
    HttpRequest() = default;
    explicit HttpRequest(QByteArray wantedTarget)
        : target(std::move(wantedTarget)) {}

    QByteArray method = "GET";
    QByteArray target = "/"; ///< the path on the server, with its leading slash
    /// Header fields besides Host, Connection and Content-Length; without line breaks.
    QList<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// How long the server may be silent, before the response's head and inside its body; each byte
    /// that arrives starts it anew. No other limit of time applies.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
};

/// A response with its whole body.
struct HttpResponse {
    int status;
    QByteArray body;
};

} // namespace platform
