// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Http/NetworkThread.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <optional>
#include <thread>

namespace platform {

/// What the network thread consists of. Included by the files that speak to the network library.
class NetworkThread::Core final : public Executor {
public:
    Core();
    ~Core() override;

    void post(std::function<void()> work) override;
    bool isCurrent() const override { return m_thread.get_id() == std::this_thread::get_id(); }

    boost::asio::io_context& context() { return m_context; }
    TaskScope& scope() { return *m_scope; }

private:
    boost::asio::io_context m_context{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work;
    std::optional<TaskScope> m_scope;
    std::thread m_thread;
};

} // namespace platform
