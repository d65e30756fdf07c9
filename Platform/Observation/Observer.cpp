// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"

#include <QPointer>
#include <QTimerEvent>

#include <algorithm>

namespace platform {

Observer::Observer(QObject* owner, std::function<void()> function)
    : QObject(owner)
    , m_function(std::move(function)) {
    run();
}

void Observer::flush() {
    if (m_timer.isActive())
        run();
}

void Observer::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_timer.timerId())
        run();
}

void Observer::run() {
    m_timer.stop();
    m_sinceRun.start();
    m_isRunning = true;
    // A binding is evaluated once at this moment and once more, by the property system itself, at
    // the first change of what it read. The second evaluation reads nothing: it only asks for a
    // run, and leaves the binding without sources, so that further changes cost nothing until that
    // run.
    m_tracker.setBinding([this] {
        if (m_isRunning)
            m_function();
        else
            schedule();
        return 0;
    });
    m_isRunning = false;
}

void Observer::schedule() {
    const auto left = frame - std::chrono::milliseconds(m_sinceRun.elapsed());
    m_timer.start(static_cast<int>(std::max(left.count(), std::chrono::milliseconds::rep{0})),
                  Qt::PreciseTimer, this);
}

Observer* observe(QObject* owner, std::function<void()> function) {
    return new Observer(owner, std::move(function));
}

void flushObservers(QObject* root) {
    // A run may make and destroy objects, hence the list is not walked while runs go on in it.
    const auto found = root->findChildren<Observer*>();
    const QList<QPointer<Observer>> observers(found.begin(), found.end());
    for (const auto& observer : observers)
        if (observer)
            observer->flush();
}

} // namespace platform
