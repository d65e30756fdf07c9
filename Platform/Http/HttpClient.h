// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Http/HttpBody.h"

namespace platform {

/// Speaks HTTP/1.1 to one server of this machine, each request over a connection of its own.
///
/// It goes to its endpoint and nowhere else: no proxy, whatever the environment says, and no
/// redirect is followed; a status of any kind is an ordinary response. Both operations are awaited
/// on the network thread, and several may run at a time. They fail with HttpError.
///
/// A value: copies speak to the same server. A request that has been made does not need it any
/// more.
class HttpClient {
public:
    /// The most that data() takes; a longer body fails as TooLarge.
    static constexpr qsizetype maximumBodySize = 64 * 1024 * 1024;

    HttpClient(NetworkThread& network, HttpEndpoint endpoint)
        : m_network(&network)
        , m_endpoint(std::move(endpoint)) {}

    /// Sends the request and gives the response with its whole body.
    Task<HttpResponse> data(HttpRequest request) const;

    /// Sends the request and gives the response as soon as its head has arrived.
    Task<HttpBody> bytes(HttpRequest request) const {
        return HttpBody::open(*m_network, m_endpoint, std::move(request));
    }

private:
    NetworkThread* m_network;
    HttpEndpoint m_endpoint;
};

} // namespace platform
