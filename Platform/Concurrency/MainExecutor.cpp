// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/MainExecutor.h"

#include <QCoreApplication>
#include <QThread>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace platform {

namespace {

const QEvent::Type workEventType = static_cast<QEvent::Type>(QEvent::registerEventType());

struct WorkEvent : QEvent {
    explicit WorkEvent(std::function<void()> given)
        : QEvent(workEventType)
        , work(std::move(given)) {}

    std::function<void()> work;
};

// An event changes threads under a lock of the toolkit's, which the thread sanitizer does not see.
#ifdef __SANITIZE_THREAD__
void handOver(QEvent* event) {
    __tsan_release(event);
}
void takeOver(QEvent* event) {
    __tsan_acquire(event);
}
#else
void handOver(QEvent*) {}
void takeOver(QEvent*) {}
#endif

} // namespace

void MainExecutor::post(std::function<void()> work) {
    auto* const event = new WorkEvent(std::move(work));
    handOver(event);
    QCoreApplication::postEvent(this, event);
}

void MainExecutor::postAfterOthers(std::function<void()> work) {
    m_afterOthers.push_back(std::move(work));
    // Posted events are all delivered before the loop looks at anything else, also those posted
    // meanwhile; a timer of no duration comes round once for each turn of the loop.
    if (!m_timer.isActive())
        m_timer.start(0, this);
}

bool MainExecutor::isCurrent() const {
    return QThread::currentThread() == thread();
}

bool MainExecutor::shouldYield() const {
    return m_turnDepth > 0 && m_sinceTurnBegan.elapsed() >= slice.count();
}

bool MainExecutor::event(QEvent* event) {
    takeOver(event);
    if (event->type() != workEventType)
        return QObject::event(event);
    run(static_cast<WorkEvent*>(event)->work);
    return true;
}

void MainExecutor::timerEvent(QTimerEvent*) {
    m_timer.stop();
    // What the work adds waits for the next turn of the loop.
    const auto turn = std::exchange(m_afterOthers, {});
    for (const auto& work : turn)
        run(work);
}

void MainExecutor::run(const std::function<void()>& work) {
    // A nested event loop inside the work begins a turn of its own; the outer one keeps its clock.
    if (m_turnDepth++ == 0)
        m_sinceTurnBegan.start();
    work();
    --m_turnDepth;
}

void requireMainThread(const char* operation) {
    const auto* application = QCoreApplication::instance();
    if (application && QThread::currentThread() != application->thread())
        qFatal("%s was called off the main thread", operation);
}

} // namespace platform
