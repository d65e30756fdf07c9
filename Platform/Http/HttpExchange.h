// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpEndpoint.h"
#include "Platform/Http/HttpMessages.h"
#include "Platform/Http/NetworkThread.h"

#include <exception>
#include <memory>

namespace platform {

/// One request and its response, over a connection of its own. Everything here runs on the network
/// thread; the tasks are awaited there.
///
/// When the awaiting task is cancelled the connection is closed and CancellationError thrown.
class HttpExchange {
public:
    explicit HttpExchange(NetworkThread::Core& network);
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;
    ~HttpExchange();

    /// Connects, sends the request and waits for the head of the response. Throws HttpError.
    Task<HttpHead> begin(HttpEndpoint endpoint, HttpRequest request);

    /// The next bytes of the body, as soon as there are any; none at its end. Throws HttpError,
    /// after all bytes that came before the fault.
    Task<QByteArray> readBody();

    /// Closes the connection. A task that waits for it fails.
    void close();

private:
    struct Connection;

    Task<void> connect(HttpEndpoint endpoint);
    Task<void> send(QByteArray bytes);
    /// Takes in what comes next. A fault is kept, because what came before it counts first.
    Task<void> receive();

    std::shared_ptr<Connection> m_connection;
    std::exception_ptr m_fault;
};

} // namespace platform
