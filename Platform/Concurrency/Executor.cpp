// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Executor.h"

namespace platform {

Executor::~Executor() = default;

Waiter::Waiter(Executor& executor, std::coroutine_handle<> coroutine)
    : m_executor(executor)
    , m_coroutine(coroutine) {}

std::function<void()> Waiter::resumption() {
    return [self = shared_from_this()] {
        if (const auto coroutine = std::exchange(self->m_coroutine, nullptr))
            coroutine.resume();
    };
}

void Waiter::resume() {
    if (isFirst())
        m_executor.post(resumption());
}

void Waiter::resumeAfterOthers() {
    if (isFirst())
        m_executor.postAfterOthers(resumption());
}

} // namespace platform
