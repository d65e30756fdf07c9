// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpExchangeOwner.h"

#include "Platform/Concurrency/Errors.h"
#include "Platform/Http/HttpExchange.h"
#include "Platform/Http/NetworkThreadCore.h"

namespace platform {

namespace {

Task<QByteArray> readHere(std::weak_ptr<HttpExchange> exchange) {
    // Held while it is read from, also when its owner goes meanwhile; and locked here, on the
    // network thread, where it must end.
    const std::shared_ptr<HttpExchange> held = exchange.lock();
    if (!held)
        throw CancellationError();
    co_return co_await held->readBody();
}

} // namespace

HttpExchangeOwner::HttpExchangeOwner(NetworkThread::Link network,
                                     std::weak_ptr<HttpExchange> exchange)
    : m_network(std::move(network))
    , m_exchange(std::move(exchange)) {}

HttpExchangeOwner::~HttpExchangeOwner() {
    if (m_network)
        m_network->release(m_exchange);
}

Task<HttpExchangeOwner::Opened>
HttpExchangeOwner::open(NetworkThread::Link network, HttpEndpoint endpoint, HttpRequest request) {
    NetworkThread::Core& core = network->core();
    Task<Opened> opening = openHere(network, std::move(endpoint), std::move(request));
    if (core.isCurrent())
        co_return co_await opening;
    co_return co_await runOn(core.scope(), std::move(opening));
}

Task<HttpExchangeOwner::Opened> HttpExchangeOwner::openHere(NetworkThread::Link network,
                                                            HttpEndpoint endpoint,
                                                            HttpRequest request) {
    const auto exchange = std::make_shared<HttpExchange>(network->core());
    HttpExchangeOwner owner(network, exchange);
    network->core().exchanges().insert(exchange);
    HttpHead head = co_await exchange->begin(std::move(endpoint), std::move(request));
    co_return Opened{std::move(owner), std::move(head)};
}

Task<QByteArray> HttpExchangeOwner::readBody() const {
    NetworkThread::Core& core = m_network->core();
    Task<QByteArray> reading = readHere(m_exchange);
    if (core.isCurrent())
        co_return co_await reading;
    co_return co_await runOn(core.scope(), std::move(reading));
}

} // namespace platform
