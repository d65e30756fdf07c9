// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpEndpoint.h"
#include "Platform/Http/HttpMessages.h"
#include "Platform/Http/NetworkThread.h"

#include <memory>

namespace platform {

class HttpExchange;

/// One exchange as seen from any thread: its tasks are awaited on any executor, and hop to the
/// network thread where they have to. Destroying it closes the connection, without waiting; that is
/// safe also when the network thread has gone.
class HttpExchangeOwner {
public:
    struct Opened;

    /// Sends the request over a connection of its own and waits for the head of the response.
    static Task<Opened> open(NetworkThread::Link network, HttpEndpoint endpoint,
                             HttpRequest request);

    HttpExchangeOwner(HttpExchangeOwner&&) noexcept = default;
    HttpExchangeOwner& operator=(HttpExchangeOwner&& other) = delete;
    ~HttpExchangeOwner();

    /// The next bytes of the body, as soon as there are any; none at its end.
    Task<QByteArray> readBody() const;

private:
    HttpExchangeOwner(NetworkThread::Link network, std::weak_ptr<HttpExchange> exchange);
    static Task<Opened> openHere(NetworkThread::Link network, HttpEndpoint endpoint,
                                 HttpRequest request);

    NetworkThread::Link m_network; // null once moved from
    std::weak_ptr<HttpExchange> m_exchange;
};

/// An exchange whose head has arrived.
struct HttpExchangeOwner::Opened {
    HttpExchangeOwner exchange;
    HttpHead head;
};

} // namespace platform
