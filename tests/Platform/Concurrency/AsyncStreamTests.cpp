// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Produce.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <QBasicTimer>

#include <thread>

using namespace platform;
using tests::consume;

using Seen = tests::Seen<int>;

namespace {

struct Failure final : LocalizedError {
    QString errorDescription() const override { return QStringLiteral("It failed."); }
};

/// Keeps what is posted until the test runs it, and counts it.
class HeldExecutor final : public Executor {
public:
    explicit HeldExecutor(int& posted)
        : m_posted(posted) {}

    void post(std::function<void()> work) override {
        ++m_posted;
        m_work.push_back(std::move(work));
    }
    bool isCurrent() const override { return true; }
    void runAll() {
        for (; !m_work.empty(); m_work.pop_front())
            m_work.front()();
    }

private:
    int& m_posted;
    std::deque<std::function<void()>> m_work;
};

Task<void> yieldAndThrow(StreamContinuation<int> continuation, std::exception_ptr error) {
    continuation.yield(1);
    if (error)
        std::rethrow_exception(error);
    co_return;
}

Task<void> consumeSlowly(AsyncStream<int> stream, std::shared_ptr<Seen> seen) {
    while (const auto element = co_await stream.next()) {
        QElapsedTimer timer;
        timer.start();
        while (timer.nsecsElapsed() < 100'000) {
        }
        seen->elements.append(*element);
    }
    seen->hasEnded = true;
}

class TickCounter final : public QObject {
public:
    TickCounter() { m_timer.start(0, this); }
    int ticks = 0;

protected:
    void timerEvent(QTimerEvent*) override { ++ticks; }

private:
    QBasicTimer m_timer;
};

} // namespace

class AsyncStreamTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void elementsYieldedBeforeConsumptionArriveInOrder() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        continuation.yield(1);
        continuation.yield(2);
        continuation.finish();
        scope.start(consume(std::move(stream), seen));
        QVERIFY(!seen->hasEnded);
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, (QList<int>{1, 2}));
        QVERIFY(!seen->error);
    }

    void elementsFromAnotherThreadArriveInOrderOnTheMainThread() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        scope.start(consume(std::move(stream), seen));
        std::jthread producer([continuation = continuation] {
            for (int i = 0; i < 10'000; ++i)
                continuation.yield(i);
            continuation.finish();
        });
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements.size(), 10'000);
        for (int i = 0; i < 10'000; ++i)
            QCOMPARE(seen->elements[i], i);
    }

    void anErrorComesAfterTheElementsBeforeIt() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        continuation.yield(7);
        continuation.finish(std::make_exception_ptr(Failure()));
        scope.start(consume(std::move(stream), seen));
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, QList<int>{7});
        QCOMPARE(seen->errorText(), QStringLiteral("It failed."));
        QVERIFY(!isCancellation(seen->error));
    }

    void onlyTheFirstEndCounts() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        continuation.finish();
        continuation.yield(1);
        continuation.finish(std::make_exception_ptr(Failure()));
        scope.start(consume(std::move(stream), seen));
        QTRY_VERIFY(seen->hasEnded);
        QVERIFY(seen->elements.isEmpty());
        QVERIFY(!seen->error);
    }

    void cancellingEndsTheWaitForTheNextElement() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        TaskHandle handle = scope.start(consume(std::move(stream), seen));
        continuation.yield(1);
        QTRY_COMPARE(seen->elements.size(), 1);
        QVERIFY(!seen->hasEnded);
        handle.cancel();
        QTRY_VERIFY(seen->hasEnded);
        QVERIFY(!seen->error);
    }

    void aCancelledConsumerTakesNoBufferedElement() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        TaskHandle handle = scope.start(consume(std::move(stream), seen));
        continuation.yield(1);
        handle.cancel();
        QTRY_VERIFY(seen->hasEnded);
        QVERIFY(seen->elements.isEmpty());
    }

    void theProducerGoesOnUndisturbedAfterTheConsumerIsGone() {
        auto ends = std::make_unique<StreamEnds<int>>(makeStream<int>());
        const auto continuation = ends->continuation;
        ends.reset();
        continuation.yield(1);
        continuation.finish();
        continuation.yield(2);
    }

    void droppingTheConsumerFreesWhatIsBuffered() {
        const auto element = std::make_shared<int>(5);
        auto ends =
            std::make_unique<StreamEnds<std::shared_ptr<int>>>(makeStream<std::shared_ptr<int>>());
        const auto continuation = ends->continuation;
        continuation.yield(element);
        QCOMPARE(element.use_count(), 2);
        ends.reset();
        QCOMPARE(element.use_count(), 1);
        continuation.yield(element);
        QCOMPARE(element.use_count(), 1);
    }

    void aScopeThatEndsDestroysTheWaitingConsumer() {
        MainExecutor executor;
        auto [stream, continuation] = makeStream<int>();
        const auto seen = std::make_shared<Seen>();
        {
            TaskScope scope(executor);
            scope.start(consume(std::move(stream), seen));
            continuation.yield(1);
            QTRY_COMPARE(seen->elements.size(), 1);
            QCOMPARE(seen.use_count(), 2);
            continuation.yield(2); // its resumption is on the way when the scope ends
        }
        QCOMPARE(seen.use_count(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(seen->elements.size(), 1);
        QVERIFY(!seen->hasEnded);
    }

    void aProducerDoesNotKnowAnExecutorThatHasGone_data() {
        QTest::addColumn<bool>("yields");
        QTest::newRow("an element") << true;
        QTest::newRow("the end") << false;
    }

    void aProducerDoesNotKnowAnExecutorThatHasGone() {
        QFETCH(bool, yields);
        int posted = 0;
        const auto seen = std::make_shared<Seen>();
        auto [stream, continuation] = makeStream<int>();
        {
            HeldExecutor executor(posted);
            TaskScope scope(executor);
            scope.start(consume(std::move(stream), seen));
            executor.runAll();
            QCOMPARE(posted, 1);
        }
        yields ? continuation.yield(1) : continuation.finish();
        QCOMPARE(posted, 1);
    }

    void aProducedStreamEndsAsItsWorkDoes_data() {
        QTest::addColumn<std::exception_ptr>("error");
        QTest::addColumn<bool>("isBegun");
        QTest::addColumn<QString>("text");
        const auto failure = std::make_exception_ptr(Failure());
        QTest::newRow("normally") << std::exception_ptr() << true << QString();
        QTest::newRow("with an error") << failure << true << QStringLiteral("It failed.");
        QTest::newRow("cancelled")
            << std::make_exception_ptr(CancellationError()) << true << QString();
        QTest::newRow("before it began") << failure << false << QStringLiteral("It failed.");
    }

    void aProducedStreamEndsAsItsWorkDoes() {
        QFETCH(std::exception_ptr, error);
        QFETCH(bool, isBegun);
        MainExecutor executor;
        TaskScope scope(executor);
        const auto seen = std::make_shared<Seen>();
        scope.start(consume(produce<int>(scope,
                                         [&](auto continuation) {
                                             if (!isBegun)
                                                 std::rethrow_exception(error);
                                             return yieldAndThrow(continuation, error);
                                         }),
                            seen));
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements, isBegun ? QList<int>{1} : QList<int>());
        QTEST(seen->errorText(), "text");
    }

    void timersGoOnDuringAFloodOfReadyElements() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        for (int i = 0; i < 1'000; ++i) // a tenth of a second of work, all of it ready at once
            continuation.yield(i);
        continuation.finish();
        const auto seen = std::make_shared<Seen>();
        scope.start(consumeSlowly(std::move(stream), seen));
        TickCounter counter;
        int ticksBeforeTheEnd = 0;
        while (!seen->hasEnded) {
            QCoreApplication::processEvents();
            if (!seen->hasEnded)
                ticksBeforeTheEnd = counter.ticks;
        }
        QVERIFY2(ticksBeforeTheEnd >= 5, qPrintable(QString::number(ticksBeforeTheEnd)));
        QCOMPARE(seen->elements.size(), 1'000);
    }

    void aHundredThousandReadyElementsNeedNoDeepStack() {
        MainExecutor executor;
        TaskScope scope(executor);
        auto [stream, continuation] = makeStream<int>();
        for (int i = 0; i < 100'000; ++i)
            continuation.yield(i);
        continuation.finish();
        const auto seen = std::make_shared<Seen>();
        scope.start(consume(std::move(stream), seen));
        QTRY_VERIFY(seen->hasEnded);
        QCOMPARE(seen->elements.size(), 100'000);
    }
};

TELLWICK_TEST(AsyncStreamTests, EventLoop)
#include "AsyncStreamTests.moc"
