// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"

#include <memory>

namespace platform {

/// The one thread on which all network traffic runs, and the scope of the tasks that live there.
///
/// Destroying it takes no time, whatever is in flight: the thread ends at once, then every task of
/// its scope is destroyed where it stands and every connection is closed. Nothing of a reply that
/// nobody reads any more stays behind. It ends on the thread that made it, before the executors of
/// those who wait for its tasks.
class NetworkThread {
public:
    NetworkThread();
    ~NetworkThread();
    NetworkThread(const NetworkThread&) = delete;
    NetworkThread& operator=(const NetworkThread&) = delete;

    /// The thread as an executor. No limit of time makes its tasks yield.
    Executor& executor() const;

    /// Tasks that end with the network thread, for producers of replies.
    TaskScope& scope() const;

    class Core;
    class Connector;
    /// How the classes of this folder hold on to the thread; it learns when the thread has gone.
    using Link = std::shared_ptr<Connector>;
    Link link() const;

private:
    std::unique_ptr<Core> m_core;
};

} // namespace platform
