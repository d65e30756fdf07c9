// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/TaskScope.h"
#include "tests/support/TestMain.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

using namespace platform;

namespace {

/// A thread of its own as an executor.
class ThreadExecutor final : public Executor {
public:
    ThreadExecutor()
        : m_thread([this](std::stop_token stop) { run(std::move(stop)); }) {}

    void post(std::function<void()> work) override {
        const std::scoped_lock lock(m_mutex);
        m_queue.push_back(std::move(work));
        m_wake.notify_one();
    }
    bool isCurrent() const override { return std::this_thread::get_id() == m_thread.get_id(); }

    void join() {
        m_thread.request_stop();
        m_thread.join();
    }

private:
    void run(std::stop_token stop) {
        std::unique_lock lock(m_mutex);
        while (m_wake.wait(lock, stop, [this] { return !m_queue.empty(); })) {
            auto work = std::move(m_queue.front());
            m_queue.pop_front();
            lock.unlock();
            work();
            work = nullptr;
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::deque<std::function<void()>> m_queue;
    std::jthread m_thread;
};

Task<int> immediate(int value) {
    co_return value;
}

Task<int> failing() {
    throw CancellationError();
    co_return 0;
}

Task<std::thread::id> whereAmI() {
    co_return std::this_thread::get_id();
}

Task<void> append(std::shared_ptr<QList<int>> list, int value) {
    list->append(value);
    co_return;
}

Task<void> sumUp(std::shared_ptr<int> sum, int count) {
    for (int i = 0; i < count; ++i)
        *sum += co_await immediate(1);
}

Task<void> catching(std::shared_ptr<bool> caught) {
    try {
        co_await failing();
    } catch (const CancellationError&) {
        *caught = true;
    }
}

Task<bool> askWhetherCancelled() {
    co_return co_await isCancelled();
}

Task<void> reportCancellation(std::shared_ptr<QList<bool>> answers) {
    answers->append(co_await isCancelled());
    answers->append(co_await askWhetherCancelled());
}

struct Places {
    std::thread::id before, there, after;
    bool hasEnded = false;
    bool hasFailed = false;
};

Task<void> visit(TaskScope& other, std::shared_ptr<Places> places) {
    places->before = std::this_thread::get_id();
    places->there = co_await runOn(other, whereAmI());
    places->after = std::this_thread::get_id();
    places->hasEnded = true;
}

Task<void> visitInVain(TaskScope& other, std::shared_ptr<Places> places) {
    try {
        co_await runOn(other, failing());
    } catch (const CancellationError&) {
        places->hasFailed = true;
    }
    places->hasEnded = true;
}

Task<void> endByCancellation(std::shared_ptr<int> value) {
    ++*value;
    co_await failing();
}

Task<void> hold(std::shared_ptr<int> value) {
    ++*value;
    co_return;
}

} // namespace

class TaskTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStartedTaskRunsByALaterTurnOfTheLoop() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto list = std::make_shared<QList<int>>();
        scope.start(append(list, 1));
        scope.start(append(list, 2));
        QVERIFY(list->isEmpty());
        QTRY_COMPARE(*list, (QList<int>{1, 2}));
    }

    void awaitingManyReadyTasksNeedsNoDeepStack() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto sum = std::make_shared<int>(0);
        scope.start(sumUp(sum, 200'000));
        QTRY_COMPARE(*sum, 200'000);
    }

    void anErrorReachesTheAwaitingTask() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto caught = std::make_shared<bool>(false);
        scope.start(catching(caught));
        QTRY_VERIFY(*caught);
    }

    void aTaskSeesItsOwnCancellationAndAwaitedTasksShareIt() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto answers = std::make_shared<QList<bool>>();
        TaskHandle handle = scope.start(reportCancellation(answers));
        handle.cancel();
        scope.start(reportCancellation(answers));
        QTRY_COMPARE(*answers, (QList<bool>{true, true, false, false}));
    }

    void handlesOfOneTaskAreEqualAndOfTwoAreNot() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto list = std::make_shared<QList<int>>();
        const TaskHandle first = scope.start(append(list, 1));
        const TaskHandle copy = first;
        const TaskHandle second = scope.start(append(list, 2));
        QVERIFY(first == copy);
        QVERIFY(!(first == second));
    }

    void runOnRunsThereAndComesBackHere() {
        MainExecutor executor;
        TaskScope scope(executor);
        ThreadExecutor thread;
        {
            TaskScope threadScope(thread);
            const auto places = std::make_shared<Places>();
            scope.start(visit(threadScope, places));
            QTRY_VERIFY(places->hasEnded);
            QCOMPARE(places->before, std::this_thread::get_id());
            QVERIFY(places->there != places->before);
            QCOMPARE(places->after, places->before);
            thread.join();
        }
    }

    void runOnBringsErrorsBack() {
        MainExecutor executor;
        TaskScope scope(executor);
        ThreadExecutor thread;
        TaskScope threadScope(thread);
        const auto places = std::make_shared<Places>();
        scope.start(visitInVain(threadScope, places));
        QTRY_VERIFY(places->hasEnded);
        QVERIFY(places->hasFailed);
        thread.join();
    }

    void theWaitingSideOfRunOnMayGoFirst() {
        MainExecutor executor;
        ThreadExecutor thread;
        TaskScope threadScope(thread);
        const auto places = std::make_shared<Places>();
        std::mutex gate;
        gate.lock();
        thread.post([&gate] { const std::scoped_lock wait(gate); });
        {
            TaskScope scope(executor);
            scope.start(visit(threadScope, places));
            QTRY_VERIFY(places->before != std::thread::id());
        }
        gate.unlock();
        thread.join();
        QCoreApplication::processEvents();
        QVERIFY(!places->hasEnded);
        QCOMPARE(places.use_count(), 1);
    }

    void theOtherScopeOfRunOnMayGoFirst() {
        MainExecutor executor;
        const auto places = std::make_shared<Places>();
        {
            TaskScope scope(executor);
            ThreadExecutor thread;
            thread.join();
            auto threadScope = std::make_unique<TaskScope>(thread);
            scope.start(visit(*threadScope, places));
            QTRY_VERIFY(places->before != std::thread::id());
            threadScope.reset();
            QCoreApplication::processEvents();
            QVERIFY(!places->hasEnded);
        }
        QCOMPARE(places.use_count(), 1);
    }

    void aTaskThatHasEndedHoldsNothing() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto value = std::make_shared<int>(0);
        scope.start(hold(value));
        QTRY_COMPARE(*value, 1);
        QTRY_COMPARE(value.use_count(), 1);
    }

    void aTaskThatWasNeverBegunIsDestroyedWithTheScope() {
        const auto value = std::make_shared<int>(0);
        {
            MainExecutor executor;
            TaskScope scope(executor);
            scope.start(hold(value));
            QCOMPARE(value.use_count(), 2);
        }
        QCOMPARE(value.use_count(), 1);
        QCOMPARE(*value, 0);
    }

    void aTaskThatACancellationEndsEndsQuietly() {
        MainExecutor executor;
        TaskScope scope(executor);
        const auto value = std::make_shared<int>(0);
        scope.start(endByCancellation(value));
        QTRY_COMPARE(*value, 1);
        QTRY_COMPARE(value.use_count(), 1);
    }
};

TELLWICK_TEST(TaskTests, EventLoop)
#include "TaskTests.moc"
