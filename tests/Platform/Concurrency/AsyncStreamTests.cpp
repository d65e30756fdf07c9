// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Produce.h"
#include "tests/support/TaskRunner.h"
#include "tests/support/TestMain.h"

#include <numeric>
#include <thread>

using namespace platform;

using Seen = tests::Seen<int>;

namespace {

struct Failure final : LocalizedError {
    QString errorDescription() const override { return QStringLiteral("It failed."); }
};

/// Keeps the last work that was posted, and counts.
class HeldExecutor final : public Executor {
public:
    explicit HeldExecutor(int& posted)
        : m_posted(posted) {}

    void post(std::function<void()> work) override {
        ++m_posted;
        held = std::move(work);
    }
    bool isCurrent() const override { return true; }

    std::function<void()> held;

private:
    int& m_posted;
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

/// A stream of numbers, and what is seen of it once it is consumed.
struct Numbers {
    TaskHandle consume() { return scope->start(tests::consume(std::move(ends.stream), seen)); }
    /// Everything is there before anybody looks.
    void yieldAll(int count) {
        for (int i = 0; i < count; ++i)
            source.yield(i);
        source.finish();
    }

    MainExecutor executor;
    std::optional<TaskScope> scope{std::in_place, executor};
    StreamEnds<int> ends = makeStream<int>();
    StreamContinuation<int> source = ends.continuation;
    std::shared_ptr<Seen> seen = std::make_shared<Seen>();
};

} // namespace

class AsyncStreamTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void elementsComeInOrderAndTheEndBehindThem_data() {
        QTest::addColumn<std::exception_ptr>("error");
        QTest::addColumn<QString>("text");
        QTest::newRow("normally") << std::exception_ptr() << QString();
        QTest::newRow("with an error")
            << std::make_exception_ptr(Failure()) << QStringLiteral("It failed.");
    }

    void elementsComeInOrderAndTheEndBehindThem() {
        QFETCH(std::exception_ptr, error);
        m->source.yield(1);
        m->source.yield(2);
        m->source.finish(error);
        m->consume();
        QVERIFY(!m->seen->hasEnded);
        QTRY_VERIFY(m->seen->hasEnded);
        QCOMPARE(m->seen->elements, (QList<int>{1, 2}));
        QTEST(m->seen->errorText(), "text");
    }

    void elementsFromAnotherThreadArriveInOrderOnTheMainThread() {
        m->consume();
        std::jthread producer([this] { m->yieldAll(10'000); });
        QTRY_VERIFY(m->seen->hasEnded);
        QList<int> expected(10'000);
        std::iota(expected.begin(), expected.end(), 0);
        QCOMPARE(m->seen->elements, expected);
    }

    void onlyTheFirstEndCounts() {
        m->source.finish();
        m->source.yield(1);
        m->source.finish(std::make_exception_ptr(Failure()));
        m->consume();
        QTRY_VERIFY(m->seen->hasEnded);
        QVERIFY(m->seen->elements.isEmpty());
        QVERIFY(!m->seen->error);
    }

    void cancellingEndsTheWaitForTheNextElement() {
        TaskHandle handle = m->consume();
        m->source.yield(1);
        QTRY_COMPARE(m->seen->elements.size(), 1);
        QVERIFY(!m->seen->hasEnded);
        handle.cancel();
        QTRY_VERIFY(m->seen->hasEnded);
        QVERIFY(!m->seen->error);
    }

    void aCancelledConsumerTakesNoBufferedElement() {
        TaskHandle handle = m->consume();
        m->source.yield(1);
        handle.cancel();
        QTRY_VERIFY(m->seen->hasEnded);
        QVERIFY(m->seen->elements.isEmpty());
    }

    void droppingTheConsumerFreesWhatIsBufferedAndDoesNotDisturbTheProducer() {
        const auto element = std::make_shared<int>(5);
        std::optional ends = makeStream<std::shared_ptr<int>>();
        const auto continuation = ends->continuation;
        continuation.yield(element);
        QCOMPARE(element.use_count(), 2);
        ends.reset();
        QCOMPARE(element.use_count(), 1);
        continuation.yield(element);
        continuation.finish();
        QCOMPARE(element.use_count(), 1);
    }

    void aScopeThatEndsDestroysTheWaitingConsumer() {
        m->consume();
        m->source.yield(1);
        QTRY_COMPARE(m->seen->elements.size(), 1);
        QCOMPARE(m->seen.use_count(), 2);
        m->source.yield(2); // its resumption is on the way when the scope ends
        m->scope.reset();
        QCOMPARE(m->seen.use_count(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(m->seen->elements.size(), 1);
        QVERIFY(!m->seen->hasEnded);
    }

    void aProducerDoesNotKnowAnExecutorThatHasGone_data() {
        QTest::addColumn<bool>("yields");
        QTest::newRow("an element") << true;
        QTest::newRow("the end") << false;
    }

    void aProducerDoesNotKnowAnExecutorThatHasGone() {
        QFETCH(bool, yields);
        int posted = 0;
        {
            HeldExecutor executor(posted);
            TaskScope scope(executor);
            scope.start(tests::consume(std::move(m->ends.stream), m->seen));
            executor.held();
            QCOMPARE(posted, 1);
        }
        yields ? m->source.yield(1) : m->source.finish();
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
        const auto work = [&](auto continuation) {
            if (!isBegun)
                std::rethrow_exception(error);
            return yieldAndThrow(continuation, error);
        };
        m->scope->start(tests::consume(produce<int>(*m->scope, work), m->seen));
        QTRY_VERIFY(m->seen->hasEnded);
        QCOMPARE(m->seen->elements, isBegun ? QList<int>{1} : QList<int>());
        QTEST(m->seen->errorText(), "text");
    }

    void timersGoOnDuringAFloodOfReadyElements() {
        m->yieldAll(1'000); // a tenth of a second of work
        m->scope->start(consumeSlowly(std::move(m->ends.stream), m->seen));
        int ticksBeforeTheEnd = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer,
                         [&] { ticksBeforeTheEnd += m->seen->hasEnded ? 0 : 1; });
        timer.start(0);
        QTRY_VERIFY(m->seen->hasEnded);
        QVERIFY2(ticksBeforeTheEnd >= 5, qPrintable(QString::number(ticksBeforeTheEnd)));
        QCOMPARE(m->seen->elements.size(), 1'000);
    }

    void aHundredThousandReadyElementsNeedNoDeepStack() {
        m->yieldAll(100'000);
        m->consume();
        QTRY_VERIFY(m->seen->hasEnded);
        QCOMPARE(m->seen->elements.size(), 100'000);
    }

private:
    std::optional<Numbers> m;
};

TELLWICK_TEST(AsyncStreamTests, EventLoop)
#include "AsyncStreamTests.moc"
