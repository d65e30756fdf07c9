// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpBody.h"
#include "Platform/Http/HttpEndpoint.h"
#include "Platform/Http/HttpMessages.h"
#include "Platform/Http/NetworkThread.h"

namespace platform {

/// Speaks HTTP/1.1 to one server of this machine, each request over a connection of its own.
///
/// It goes to its endpoint and nowhere else: no proxy, whatever the environment says, and no
/// redirect is followed; a status of any kind is an ordinary response. Both operations may be
/// awaited by tasks on any executor, and several at a time. They fail with HttpError.
///
/// A value: copies speak to the same server. A request that has been made does not need it any
/// more.
class HttpClient {
public:
    /// The most that data() takes; a longer body fails as TooLarge.
    static constexpr qsizetype maximumBodySize = 64 * 1024 * 1024;

    /// The network thread outlives the tasks made here, but not necessarily their results.
    HttpClient(NetworkThread& network, HttpEndpoint endpoint);

    /// Sends the request and gives the response with its whole body.
    Task<HttpResponse> data(HttpRequest request) const;

    /// Sends the request and gives the response as soon as its head has arrived.
    Task<HttpBody> bytes(HttpRequest request) const;

private:
    NetworkThread::Link m_network;
    HttpEndpoint m_endpoint;
};

} // namespace platform
