// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace setup {

/// Suspends a task of the main thread until something that lives in Qt's event loop wakes it, or
/// until a time has passed: `co_await` gives whether it was woken.
///
///     Until ended([&process](QObject& context, const Until::Wake& wake) {
///         QObject::connect(&process, &QProcess::finished, &context, wake);
///     });
///     co_await ended;
///
/// It is awaited once. When the task goes, so do the connections made with the context.
class Until : public platform::WaitingAwaiter {
public:
    /// Wakes the task by a later turn of the loop; only the first call counts. Any thread.
    using Wake = std::function<void()>;
    /// Called when the task has been suspended, to say who calls `wake`.
    using Arrange = std::function<void(QObject& context, const Wake& wake)>;

    explicit Until(Arrange arrange, std::optional<std::chrono::milliseconds> limit = std::nullopt)
        : m_arrange(std::move(arrange))
        , m_limit(limit) {}

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        const Wake wake = [waiter = makeWaiter(awaiting)] { waiter->resume(); };
        if (m_limit) {
            m_timer.setSingleShot(true);
            QObject::connect(&m_timer, &QTimer::timeout, &m_context, [this, wake] {
                m_isInTime = false;
                wake();
            });
            m_timer.start(*m_limit);
        }
        m_arrange(m_context, wake);
    }
    bool await_resume() const noexcept { return m_isInTime; }

private:
    Arrange m_arrange;
    std::optional<std::chrono::milliseconds> m_limit;
    QTimer m_timer;
    QObject m_context;
    bool m_isInTime = true;
};

} // namespace setup
