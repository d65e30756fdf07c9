// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Executor.h"

namespace platform {

void Waiter::resumeBy(void (Executor::*post)(std::function<void()>)) {
    // Posted under the lock: the executor is there as long as the coroutine is.
    const std::scoped_lock lock(m_mutex);
    if (!m_coroutine || std::exchange(m_isOnTheWay, true))
        return;
    (m_executor.*post)([self = shared_from_this()] {
        if (const auto coroutine = self->take())
            coroutine.resume();
    });
}

std::coroutine_handle<> Waiter::take() {
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_coroutine, nullptr);
}

} // namespace platform
