// SPDX-License-Identifier: MIT
#include "Platform/Http/NetworkThread.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <pthread.h>

namespace platform {

namespace asio = boost::asio;

namespace {

class TimerAwaiter : public WaitingAwaiter {
public:
    TimerAwaiter(asio::io_context& context, std::chrono::milliseconds time)
        : m_timer(context, time) {}

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        m_timer.async_wait([waiter = makeWaiter(awaiting)](const auto&) { waiter->resume(); });
    }
    void await_resume() const noexcept {}

private:
    asio::steady_timer m_timer;
};

} // namespace

NetworkThread::NetworkThread()
    : m_context(std::make_unique<asio::io_context>(1))
    , m_thread([this] {
        const auto work = asio::make_work_guard(*m_context);
        m_context->run();
    }) {
    pthread_setname_np(m_thread.native_handle(), "network");
}

NetworkThread::~NetworkThread() {
    m_context->stop();
    m_thread.join();
}

void NetworkThread::post(std::function<void()> work) {
    asio::post(*m_context, std::move(work));
}

Task<void> sleepFor(NetworkThread& network, std::chrono::milliseconds time) {
    TimerAwaiter awaiter(network.context(), time);
    co_await awaiter;
}

} // namespace platform
