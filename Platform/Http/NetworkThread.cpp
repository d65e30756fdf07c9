// SPDX-License-Identifier: MIT
#include "Platform/Http/NetworkThread.h"

#include "Platform/Concurrency/Errors.h"
#include "Platform/Http/HttpExchange.h"
#include "Platform/Http/NetworkThreadCore.h"

#include <boost/asio/post.hpp>

#include <pthread.h>

namespace platform {

NetworkThread::Core::Core()
    : m_link(std::make_shared<Connector>(*this))
    , m_work(m_context.get_executor()) {
    m_scope.emplace(*this);
    m_thread = std::thread([this] { m_context.run(); });
    pthread_setname_np(m_thread.native_handle(), "network");
}

NetworkThread::Core::~Core() {
    m_link->cut();
    m_context.stop();
    m_thread.join();
    // In this order: a frame that goes may hold an exchange, an exchange's connection belongs to
    // the context, and the context takes with it all that was posted and never ran.
    m_scope.reset();
    m_exchanges.clear();
}

void NetworkThread::Core::post(std::function<void()> work) {
    boost::asio::post(m_context, std::move(work));
}

bool NetworkThread::Core::isCurrent() const {
    return m_thread.get_id() == std::this_thread::get_id();
}

NetworkThread::Core& NetworkThread::Connector::core() const {
    const std::scoped_lock lock(m_mutex);
    if (!m_core)
        throw CancellationError();
    return *m_core;
}

void NetworkThread::Connector::release(std::weak_ptr<HttpExchange> exchange) const {
    const std::scoped_lock lock(m_mutex);
    if (!m_core)
        return;
    m_core->post([core = m_core, exchange = std::move(exchange)] {
        if (const auto released = exchange.lock()) {
            released->close();
            core->exchanges().erase(released);
        }
    });
}

void NetworkThread::Connector::cut() {
    const std::scoped_lock lock(m_mutex);
    m_core = nullptr;
}

NetworkThread::NetworkThread()
    : m_core(std::make_unique<Core>()) {}

NetworkThread::~NetworkThread() = default;

Executor& NetworkThread::executor() const {
    return *m_core;
}

TaskScope& NetworkThread::scope() const {
    return m_core->scope();
}

NetworkThread::Link NetworkThread::link() const {
    return m_core->link();
}

} // namespace platform
