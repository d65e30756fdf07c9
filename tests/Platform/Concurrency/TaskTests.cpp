// SPDX-License-Identifier: MIT
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <condition_variable>
#include <thread>

using namespace platform;
using tests::runTask;
using tests::startTask;

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

Task<std::thread::id> whereAmI(bool fails) {
    if (fails)
        throw CancellationError();
    co_return std::this_thread::get_id();
}

Task<void> append(std::shared_ptr<QList<int>> list, int value, bool isCancelled = false) {
    list->append(value);
    if (isCancelled)
        throw CancellationError();
    co_return;
}

Task<int> sumUp(int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i)
        sum += co_await immediate(1);
    co_return sum;
}

Task<bool> askWhetherCancelled() {
    co_return co_await isCancelled();
}

Task<void> reportCancellation(std::shared_ptr<QList<bool>> answers) {
    answers->append(co_await isCancelled());
    answers->append(co_await askWhetherCancelled());
}

Task<void> reportCancellationUntil(std::shared_ptr<QList<bool>> answers, std::stop_token stop) {
    answers->append(co_await isCancelled());
    answers->append(co_await askWhetherCancelled().until(stop));
    co_await reportCancellation(answers).until(stop);
}

struct Places {
    std::thread::id before, there, after;
};

Task<int> visit(TaskScope& other, std::shared_ptr<Places> places, bool fails = false) {
    places->before = std::this_thread::get_id();
    places->there = co_await runOn(other, whereAmI(fails));
    places->after = std::this_thread::get_id();
    co_return 0;
}

} // namespace

class TaskTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_scope.emplace(m_executor);
        m_list = std::make_shared<QList<int>>();
        m_places = std::make_shared<Places>();
    }
    void cleanup() { m_scope.reset(); }

    void aStartedTaskRunsByALaterTurnOfTheLoop() {
        m_scope->start(append(m_list, 1));
        m_scope->start(append(m_list, 2));
        QVERIFY(m_list->isEmpty());
        QTRY_COMPARE(*m_list, (QList<int>{1, 2}));
    }

    void awaitingManyReadyTasksNeedsNoDeepStack() {
        QCOMPARE(runTask(m_executor, sumUp(200'000)).value, 200'000);
    }

    void aTaskSeesItsOwnCancellationAndAwaitedTasksShareIt() {
        const auto answers = std::make_shared<QList<bool>>();
        TaskHandle handle = m_scope->start(reportCancellation(answers));
        handle.cancel();
        m_scope->start(reportCancellation(answers));
        QTRY_COMPARE(*answers, (QList<bool>{true, true, false, false}));
    }

    void anAwaitedTaskMayHaveACancellationOfItsOwn() {
        const auto answers = std::make_shared<QList<bool>>();
        std::stop_source stop;
        stop.request_stop();
        m_scope->start(reportCancellationUntil(answers, stop.get_token()));
        m_scope->start(reportCancellationUntil(answers, std::stop_source().get_token())).cancel();
        QTRY_COMPARE(*answers, (QList<bool>{false, true, true, true, true, false, false, false}));
    }

    void runOnRunsThereAndComesBackHere_data() {
        QTest::addColumn<bool>("fails");
        QTest::newRow("with a result") << false;
        QTest::newRow("with an error") << true;
    }

    void runOnRunsThereAndComesBackHere() {
        QFETCH(bool, fails);
        ThreadExecutor thread;
        TaskScope threadScope(thread);
        const auto outcome = runTask(m_executor, visit(threadScope, m_places, fails));
        thread.join();
        QCOMPARE(outcome.errorAs<CancellationError>().has_value(), fails);
        QCOMPARE(m_places->before, std::this_thread::get_id());
        if (!fails) {
            QVERIFY(m_places->there != m_places->before);
            QCOMPARE(m_places->after, m_places->before);
        }
    }

    void theWaitingSideOfRunOnMayGoFirst() {
        ThreadExecutor thread;
        TaskScope threadScope(thread);
        std::mutex gate;
        gate.lock();
        thread.post([&gate] { const std::scoped_lock wait(gate); });
        const auto outcome = startTask(*m_scope, visit(threadScope, m_places));
        QTRY_VERIFY(m_places->before != std::thread::id());
        m_scope.reset();
        gate.unlock();
        thread.join();
        QCoreApplication::processEvents();
        QVERIFY(!outcome->hasEnded());
        QCOMPARE(m_places.use_count(), 1);
    }

    void theOtherScopeOfRunOnMayGoFirst() {
        ThreadExecutor thread;
        thread.join();
        std::optional<TaskScope> threadScope(std::in_place, thread);
        const auto outcome = startTask(*m_scope, visit(*threadScope, m_places));
        QTRY_VERIFY(m_places->before != std::thread::id());
        threadScope.reset();
        QCoreApplication::processEvents();
        QVERIFY(!outcome->hasEnded());
        m_scope.reset();
        QCOMPARE(m_places.use_count(), 1);
    }

    void aTaskThatHasEndedHoldsNothing_data() {
        QTest::addColumn<bool>("isCancelled");
        QTest::newRow("normally") << false;
        QTest::newRow("by a cancellation") << true;
    }

    void aTaskThatHasEndedHoldsNothing() {
        QFETCH(bool, isCancelled);
        m_scope->start(append(m_list, 1, isCancelled));
        QTRY_COMPARE(m_list->size(), 1);
        QTRY_COMPARE(m_list.use_count(), 1);
    }

    void aTaskThatWasNeverBegunIsDestroyedWithTheScope() {
        {
            MainExecutor executor;
            TaskScope scope(executor);
            scope.start(append(m_list, 1));
            QCOMPARE(m_list.use_count(), 2);
        }
        QCOMPARE(m_list.use_count(), 1);
        QVERIFY(m_list->isEmpty());
    }

private:
    MainExecutor m_executor;
    std::optional<TaskScope> m_scope;
    std::shared_ptr<QList<int>> m_list;
    std::shared_ptr<Places> m_places;
};

TELLWICK_TEST(TaskTests, EventLoop)
#include "TaskTests.moc"
