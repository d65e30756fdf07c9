// SPDX-License-Identifier: MIT
#include "Platform/Http/SleepFor.h"

#include "Platform/Http/NetworkThreadCore.h"

#include <boost/asio/steady_timer.hpp>

namespace platform {

namespace {

class TimerAwaiter : public WaitingAwaiter {
public:
    TimerAwaiter(boost::asio::io_context& context, std::chrono::milliseconds time)
        : m_timer(context, time) {}

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        m_timer.async_wait([waiter = makeWaiter(awaiting)](const auto&) { waiter->resume(); });
    }
    void await_resume() const noexcept {}

private:
    boost::asio::steady_timer m_timer;
};

} // namespace

Task<void> sleepFor(NetworkThread& network, std::chrono::milliseconds time) {
    TimerAwaiter awaiter(network.core().context(), time);
    co_await awaiter;
}

} // namespace platform
