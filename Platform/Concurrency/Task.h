// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Executor.h"

#include <exception>
#include <optional>
#include <stop_token>
#include <utility>

namespace platform {

/// Where a task runs and how it learns that it was cancelled. A task that is awaited takes over the
/// context of the task that awaits it.
struct TaskContext {
    Executor* executor = nullptr;
    std::stop_token stop;
};

/// The base of awaiters that suspend a task until another thread, or a later turn of this one,
/// resumes it.
///
/// It detaches its waiter when it ends, be it resumed or destroyed with its task. What a derived
/// class holds ends before that.
class WaitingAwaiter {
public:
    WaitingAwaiter() = default;

    bool await_ready() const noexcept { return false; }

protected:
    ~WaitingAwaiter() {
        if (m_waiter)
            m_waiter->detach();
    }

    /// What resumes the coroutine that is being suspended. Called once, by await_suspend().
    template <class Promise>
    std::shared_ptr<Waiter> makeWaiter(std::coroutine_handle<Promise> awaiting) {
        m_waiter = std::make_shared<Waiter>(*awaiting.promise().context().executor, awaiting);
        return m_waiter;
    }

private:
    Q_DISABLE_COPY(WaitingAwaiter)
    std::shared_ptr<Waiter> m_waiter;
};

namespace detail {

/// What the promises of all tasks share, and what awaiters ask of the coroutine that awaits them.
class TaskPromiseBase {
public:
    const TaskContext& context() const { return m_context; }
    void setContext(TaskContext context) { m_context = std::move(context); }
    void setStop(std::stop_token stop) { m_context.stop = std::move(stop); }
    void setContinuation(std::coroutine_handle<> continuation) { m_continuation = continuation; }

    std::suspend_always initial_suspend() const noexcept { return {}; }

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> ended) const noexcept {
            // Without a continuation the task ended before its awaiter came to wait for it.
            const auto continuation = ended.promise().m_continuation;
            return continuation ? continuation : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };
    FinalAwaiter final_suspend() const noexcept { return {}; }

    void unhandled_exception() { m_error = std::current_exception(); }

protected:
    void rethrow() const {
        if (m_error)
            std::rethrow_exception(m_error);
    }

private:
    friend struct FinalAwaiter;
    TaskContext m_context;
    std::coroutine_handle<> m_continuation;
    std::exception_ptr m_error;
};

template <class T>
class TaskPromise;

} // namespace detail

/// A coroutine that gives a T, or fails with an exception.
///
/// It is lazy: nothing runs before it is awaited (`co_await task`, once) or started in a TaskScope.
/// An awaited task runs on the executor of the task that awaits it and shares its cancellation. The
/// Task object owns the coroutine: destroying it destroys a coroutine that is suspended, and with
/// it everything that its frame holds.
///
/// Arguments of a coroutine are copied into its frame only when they are taken by value; a lambda's
/// captures are not. Hence: coroutines take their arguments by value, and are no capturing lambdas.
template <class T = void>
class [[nodiscard]] Task {
public:
    using promise_type = detail::TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(promise_type& promise)
        : m_handle(Handle::from_promise(promise)) {}
    Task(Task&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr)) {}
    ~Task() {
        if (m_handle)
            m_handle.destroy();
    }

    struct Awaiter {
        Handle task;
        std::optional<std::stop_token> stop{};

        bool await_ready() const noexcept { return false; }
        template <class Promise>
        bool await_suspend(std::coroutine_handle<Promise> awaiting) {
            // Resumed from here and not by symmetric transfer: a loop that awaits thousands of
            // tasks which never suspend must not grow the stack in a build without tail calls.
            auto& promise = task.promise();
            promise.setContext(awaiting.promise().context());
            if (stop)
                promise.setStop(*std::move(stop));
            task.resume();
            if (task.done())
                return false;
            promise.setContinuation(awaiting);
            return true;
        }
        T await_resume() { return task.promise().takeResult(); }
    };
    Awaiter operator co_await() const { return Awaiter{m_handle}; }

    /// `co_await task.until(stop)`: awaits the task with a cancellation of its own. It is cancelled
    /// with `stop`, whatever becomes of the task that awaits it.
    Awaiter until(std::stop_token stop) const { return Awaiter{m_handle, std::move(stop)}; }

private:
    Handle m_handle;
};

namespace detail {

template <class T>
class TaskPromise final : public TaskPromiseBase {
public:
    Task<T> get_return_object() { return Task<T>(*this); }
    template <class Value>
    void return_value(Value&& value) {
        m_value.emplace(std::forward<Value>(value));
    }
    T takeResult() {
        rethrow();
        return std::move(*m_value);
    }

private:
    std::optional<T> m_value;
};

template <>
class TaskPromise<void> final : public TaskPromiseBase {
public:
    Task<void> get_return_object() { return Task<void>(*this); }
    void return_void() const noexcept {}
    void takeResult() const { rethrow(); }
};

struct IsCancelledAwaiter {
    bool isCancelled = false;

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiting) {
        isCancelled = awaiting.promise().context().stop.stop_requested();
        return false;
    }
    bool await_resume() const noexcept { return isCancelled; }
};

} // namespace detail

/// `co_await isCancelled()`: whether the running task has been cancelled. Does not suspend.
inline detail::IsCancelledAwaiter isCancelled() {
    return {};
}

} // namespace platform
