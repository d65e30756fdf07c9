// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Http/NetworkThread.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <mutex>
#include <optional>
#include <thread>
#include <unordered_set>

namespace platform {

class HttpExchange;

/// What the network thread consists of. Included by the files that speak to the network library.
class NetworkThread::Core final : public Executor {
public:
    Core();
    ~Core() override;

    void post(std::function<void()> work) override;
    bool isCurrent() const override;

    const Link& link() const { return m_link; }
    boost::asio::io_context& context() { return m_context; }
    TaskScope& scope() { return *m_scope; }

    /// The open exchanges. They are owned here, so that a connection never outlives the context
    /// that it belongs to, whoever still holds its body. Network thread.
    std::unordered_set<std::shared_ptr<HttpExchange>>& exchanges() { return m_exchanges; }

private:
    Link m_link;
    boost::asio::io_context m_context{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work;
    std::unordered_set<std::shared_ptr<HttpExchange>> m_exchanges;
    std::optional<TaskScope> m_scope;
    std::thread m_thread;
};

/// The way to the core for objects that may outlive it.
class NetworkThread::Connector {
public:
    explicit Connector(Core& core)
        : m_core(&core) {}

    /// The core. Throws CancellationError when it has gone.
    Core& core() const;

    /// Closes and forgets the exchange by a later turn of the network thread. Any thread.
    void release(std::weak_ptr<HttpExchange> exchange) const;

    /// The core is about to go.
    void cut();

private:
    mutable std::mutex m_mutex;
    Core* m_core;
};

} // namespace platform
