// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"

namespace platform {

/// The handle of a started task: a request to cancel it, nothing more. Any thread.
class TaskHandle {
public:
    void cancel() { m_stop.request_stop(); }

private:
    friend class TaskScope;
    std::stop_source m_stop;
};

/// Owns the tasks that nobody awaits.
///
/// A started task runs on the scope's executor until it ends by itself. When the scope ends, every
/// task that is still suspended is destroyed where it stands, without being resumed: no task
/// outlives its scope. A scope ends on its executor's thread, or after that thread has ended.
class TaskScope {
public:
    explicit TaskScope(Executor& executor);
    ~TaskScope();

    /// Starts the task by a later turn of the executor and returns at once. Any thread. A
    /// CancellationError that leaves the task ends it quietly; any other exception ends the
    /// program, for a started task has nobody to report to.
    TaskHandle start(Task<void> task);

    Executor& executor() const { return m_executor; }

private:
    Q_DISABLE_COPY(TaskScope)
    struct State;
    Executor& m_executor;
    std::shared_ptr<State> m_state;
};

namespace detail {

/// The meeting point of a task that runs in another scope and the coroutine that waits for it.
template <class T>
struct RunOnState {
    std::optional<T> value;
    std::exception_ptr error;
    std::shared_ptr<Waiter> waiter;
};

template <class T>
Task<void> runAndReport(Task<T> task, std::shared_ptr<RunOnState<T>> state) {
    try {
        state->value.emplace(co_await task);
    } catch (...) {
        state->error = std::current_exception();
    }
    // The waiter's way through its executor orders the writes above before the reads there.
    state->waiter->resume();
}

template <class T>
class RunOnAwaiter : public WaitingAwaiter {
public:
    RunOnAwaiter(TaskScope& scope, Task<T> task)
        : m_scope(scope)
        , m_task(std::move(task)) {}

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        m_state->waiter = makeWaiter(awaiting);
        m_scope.start(runAndReport(std::move(m_task), m_state));
    }
    T await_resume() {
        if (m_state->error)
            std::rethrow_exception(m_state->error);
        return std::move(*m_state->value);
    }

private:
    TaskScope& m_scope;
    Task<T> m_task;
    std::shared_ptr<RunOnState<T>> m_state = std::make_shared<RunOnState<T>>();
};

} // namespace detail

/// `co_await runOn(scope, task)`: runs the task in another scope, on that scope's executor, and
/// goes on here with its result. Cancelling the waiting task does not cancel the other. If the
/// waiting coroutine is destroyed the task runs on and its result is dropped; if the other scope
/// ends first the wait never ends by itself, and goes with the scope of the waiting task.
template <class T>
detail::RunOnAwaiter<T> runOn(TaskScope& scope, Task<T> task) {
    return {scope, std::move(task)};
}

} // namespace platform
