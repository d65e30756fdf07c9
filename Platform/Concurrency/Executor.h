// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal> // moc of Qt 6.4 cannot read <coroutine> unless a Qt header stands before it

#include <coroutine>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace platform {

/// A place where tasks run: one thread that works off what is posted to it, in order.
///
/// An executor outlives every task scope made on it.
class Executor {
public:
    Executor() = default;
    virtual ~Executor() = default;

    /// Runs `work` later on the executor's thread, after all that was posted before. Any thread.
    /// Work still waiting when the executor ends is destroyed without being run.
    virtual void post(std::function<void()> work) = 0;

    /// Like post(), but lets the thread's other duties (input, painting, timers) go first. Called
    /// on the executor's own thread.
    virtual void postAfterOthers(std::function<void()> work) { post(std::move(work)); }

    /// Whether the caller runs on the executor's thread.
    virtual bool isCurrent() const = 0;

    /// Whether the running task has had the thread for so long that it should let others go first.
    virtual bool shouldYield() const { return false; }

private:
    Q_DISABLE_COPY(Executor)
};

/// A suspended coroutine that waits for something that other threads may bring about.
///
/// The coroutine is resumed on its executor, once, by whoever calls resume() first. The awaiter
/// that lives in the coroutine's frame calls detach() when it ends, on the executor's thread; from
/// then on resume() does nothing, so that those who still hold the waiter may outlive the executor.
class Waiter final : public std::enable_shared_from_this<Waiter> {
public:
    Waiter(Executor& executor, std::coroutine_handle<> coroutine)
        : m_executor(executor)
        , m_coroutine(coroutine) {}

    /// Resumes the coroutine by a later turn of its executor. Any thread; only the first call
    /// counts.
    void resume() { resumeBy(&Executor::post); }

    /// As resume(), behind the executor's other duties. On the executor's thread.
    void resumeAfterOthers() { resumeBy(&Executor::postAfterOthers); }

    /// The coroutine goes on by itself or is about to go: nothing is resumed any more. On the
    /// executor's thread.
    void detach() { take(); }

private:
    void resumeBy(void (Executor::*post)(std::function<void()>));
    std::coroutine_handle<> take();

    Executor& m_executor;
    std::mutex m_mutex;
    std::coroutine_handle<> m_coroutine; // null once it needs nobody to resume it
    bool m_isOnTheWay = false;
};

} // namespace platform
