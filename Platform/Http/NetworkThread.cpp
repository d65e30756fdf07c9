// SPDX-License-Identifier: MIT
#include "Platform/Http/NetworkThread.h"

#include "Platform/Http/NetworkThreadCore.h"

#include <boost/asio/post.hpp>

#include <pthread.h>

namespace platform {

NetworkThread::Core::Core()
    : m_work(m_context.get_executor()) {
    m_scope.emplace(*this);
    m_thread = std::thread([this] { m_context.run(); });
    pthread_setname_np(m_thread.native_handle(), "network");
}

NetworkThread::Core::~Core() {
    m_context.stop();
    m_thread.join();
    // Before the context: a frame that goes may hold a connection, which belongs to the context.
    // That takes with it all that was posted and never ran.
    m_scope.reset();
}

void NetworkThread::Core::post(std::function<void()> work) {
    boost::asio::post(m_context, std::move(work));
}

NetworkThread::NetworkThread()
    : m_core(std::make_unique<Core>()) {}

NetworkThread::~NetworkThread() = default;

TaskScope& NetworkThread::scope() const {
    return m_core->scope();
}

} // namespace platform
