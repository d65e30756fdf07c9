// SPDX-License-Identifier: MIT
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QProperty>

#include <chrono>
#include <functional>

namespace platform {

/// Keeps a function's effects in step with the observable state that it reads. See observe().
class Observer final : public QObject {
    Q_OBJECT

public:
    /// The shortest time between two runs that follow each other: a frame of a 60 Hz display.
    static constexpr std::chrono::milliseconds frame{16};

    Observer(QObject* owner, std::function<void()> function);

    /// Runs the function now if a change waits to be shown.
    void flush();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void run();
    void schedule();

    std::function<void()> m_function;
    QProperty<int> m_tracker;
    bool m_isRunning = false;
    QBasicTimer m_timer;
    QElapsedTimer m_sinceRun;
};

/// Runs `function` now, and again whenever observable state (Observed, ObservedOnAssignment, any
/// bindable property) that it read in its last run has changed. Ends with its owner.
///
/// Runs are gathered: however often the state changes, the function runs by a later turn of the
/// event loop, and at most once a frame; what it reads is always the newest. A change costs almost
/// nothing until then. The function only shows state: it must not write what it reads.
Observer* observe(QObject* owner, std::function<void()> function);

/// Runs what waits to be run of all observers below `root` (itself included), for a caller that
/// needs the screen up to date at once.
void flushObservers(QObject* root);

} // namespace platform
