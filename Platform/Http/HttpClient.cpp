// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpClient.h"

#include "Platform/Http/HttpError.h"

namespace platform {

namespace {

// Free functions with arguments by value: the tasks must not look back at the client.

Task<HttpResponse> fetch(NetworkThread::Link network, HttpEndpoint endpoint, HttpRequest request) {
    HttpExchangeOwner::Opened opened =
        co_await HttpExchangeOwner::open(network, std::move(endpoint), std::move(request));
    HttpResponse response{std::move(opened.head), {}};
    while (true) {
        const QByteArray bytes = co_await opened.exchange.readBody();
        if (bytes.isEmpty())
            co_return response;
        response.body += bytes;
        if (response.body.size() > HttpClient::maximumBodySize)
            throw HttpError(HttpError::Kind::TooLarge);
    }
}

Task<HttpBody> stream(NetworkThread::Link network, HttpEndpoint endpoint, HttpRequest request) {
    co_return HttpBody(
        co_await HttpExchangeOwner::open(network, std::move(endpoint), std::move(request)));
}

} // namespace

HttpClient::HttpClient(NetworkThread& network, HttpEndpoint endpoint)
    : m_network(network.link())
    , m_endpoint(std::move(endpoint)) {}

Task<HttpResponse> HttpClient::data(HttpRequest request) const {
    return fetch(m_network, m_endpoint, std::move(request));
}

Task<HttpBody> HttpClient::bytes(HttpRequest request) const {
    return stream(m_network, m_endpoint, std::move(request));
}

} // namespace platform
