// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Executor.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

#include <chrono>
#include <vector>

namespace platform {

/// The Qt event loop of the thread that constructs it, as an executor.
///
/// Each piece of work is begun by a posted event. A task that finds one ready element after another
/// is asked to yield after a few milliseconds, and goes on only when input, painting and timers
/// have had their turn, so that a flood of elements never freezes the window.
class MainExecutor final : public QObject, public Executor {
public:
    /// How long a task may keep the thread before it is asked to yield.
    static constexpr std::chrono::milliseconds slice{8};

    void post(std::function<void()> work) override;
    void postAfterOthers(std::function<void()> work) override;
    bool isCurrent() const override;
    bool shouldYield() const override;

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void run(const std::function<void()>& work);

    std::vector<std::function<void()>> m_afterOthers;
    QElapsedTimer m_sinceTurnBegan;
    int m_turnDepth = 0;
    QBasicTimer m_timer;
};

/// Stops the program when the caller is not on the application's main thread: a broken invariant,
/// not an error to report. `operation` names the caller in the message.
void requireMainThread(const char* operation);

} // namespace platform
