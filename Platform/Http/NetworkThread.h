// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"

#include <chrono>
#include <memory>
#include <thread>

namespace boost::asio {
class io_context;
}

namespace platform {

/// The one thread on which all network traffic runs, and the scope of the tasks that live there.
///
/// Destroying it takes no time, whatever is in flight: the thread ends at once, then every task of
/// its scope is destroyed where it stands and every connection is closed. Nothing of a reply that
/// nobody reads any more stays behind. It ends on the thread that made it, before the executors of
/// those who wait for its tasks.
class NetworkThread final : private Executor {
public:
    NetworkThread();
    ~NetworkThread() override;

    /// Tasks that run on the thread and end with it. No limit of time makes them yield. Any thread.
    TaskScope& scope() { return m_scope; }

    /// What connections and timers are made with. On the network thread.
    boost::asio::io_context& context() { return *m_context; }

private:
    void post(std::function<void()> work) override;
    bool isCurrent() const override { return m_thread.get_id() == std::this_thread::get_id(); }

    // Ends last: a task that goes with the scope may hold a connection, which belongs to it.
    std::unique_ptr<boost::asio::io_context> m_context;
    TaskScope m_scope{*this};
    std::thread m_thread;
};

/// Lets time pass. Awaited on the network thread; goes with its task, without waiting.
Task<void> sleepFor(NetworkThread& network, std::chrono::milliseconds time);

} // namespace platform
