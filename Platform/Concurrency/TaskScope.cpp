// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/TaskScope.h"

#include "Platform/Concurrency/Errors.h"

#include <unordered_set>

namespace platform {

/// The root frames of the tasks that have been started and have not ended. Touched on the
/// executor's thread only, or when that thread has ended; the posted closures share it, so that one
/// which comes late finds the scope closed.
struct TaskScope::State {
    std::unordered_set<void*> running;
    bool isClosed = false;
};

namespace {

/// The outermost coroutine of a started task. Its frame goes by itself when it ends.
struct Root {
    struct promise_type : detail::TaskPromiseBase {
        Root get_return_object() {
            return {std::coroutine_handle<promise_type>::from_promise(*this)};
        }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
    };
    std::coroutine_handle<promise_type> handle;
};

Root run(Task<void> task, std::function<void()> onEnd) {
    try {
        co_await task;
    } catch (const CancellationError&) {
        // Cancelled work has ended; there is nothing to tell.
    }
    onEnd();
}

} // namespace

TaskScope::TaskScope(Executor& executor)
    : m_executor(executor)
    , m_state(std::make_shared<State>()) {}

TaskScope::~TaskScope() {
    m_state->isClosed = true;
    // One at a time: a frame that goes may hold the last reference to something that has work to
    // end.
    while (!m_state->running.empty()) {
        void* const frame = *m_state->running.begin();
        m_state->running.erase(frame);
        std::coroutine_handle<>::from_address(frame).destroy();
    }
}

TaskHandle TaskScope::start(Task<void> task) {
    TaskHandle handle;
    // The executor wants copyable work; the task has one owner all the same.
    auto pending = std::make_shared<Task<void>>(std::move(task));
    m_executor.post([&executor = m_executor, state = m_state, pending, stop = handle.m_stop] {
        if (state->isClosed)
            return;
        auto frame = std::make_shared<void*>();
        const Root root = run(std::move(*pending), [frame, weak = std::weak_ptr(state)] {
            if (const auto running = weak.lock())
                running->running.erase(*frame);
        });
        *frame = root.handle.address();
        state->running.insert(*frame);
        root.handle.promise().setContext({&executor, stop.get_token()});
        root.handle.resume();
    });
    return handle;
}

} // namespace platform
