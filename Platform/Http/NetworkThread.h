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

    /// Tasks that run on the thread and end with it. No limit of time makes them yield. Any thread.
    TaskScope& scope() const;

    class Core;
    /// What the classes of this folder need of it. On the network thread.
    Core& core() const { return *m_core; }

private:
    std::unique_ptr<Core> m_core;
};

} // namespace platform
