// SPDX-License-Identifier: MIT
#include "Platform/Http/SleepFor.h"

#include "Platform/Http/NetworkThreadCore.h"

#include <boost/asio/steady_timer.hpp>

namespace platform {

namespace {

using Timer = boost::asio::steady_timer;

/// Owned by the timer's handler as well as by the coroutine, so that either may go first.
class TimerAwaiter {
public:
    explicit TimerAwaiter(std::shared_ptr<Timer> timer)
        : m_timer(std::move(timer)) {}
    TimerAwaiter(const TimerAwaiter&) = delete;
    TimerAwaiter& operator=(const TimerAwaiter&) = delete;
    ~TimerAwaiter() {
        if (m_waiter)
            m_waiter->detach();
        m_timer->cancel();
    }

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        m_waiter = std::make_shared<Waiter>(*awaiting.promise().context().executor, awaiting);
        m_timer->async_wait(
            [timer = m_timer, waiter = m_waiter](const auto&) { waiter->resume(); });
    }
    void await_resume() const noexcept {}

private:
    std::shared_ptr<Timer> m_timer;
    std::shared_ptr<Waiter> m_waiter;
};

} // namespace

Task<void> sleepFor(NetworkThread& network, std::chrono::milliseconds time) {
    co_await TimerAwaiter(std::make_shared<Timer>(network.link()->core().context(), time));
}

} // namespace platform
