// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"

#include <deque>
#include <mutex>

namespace platform {

namespace detail {

/// What the two ends of a stream share.
template <class Element>
struct StreamState {
    std::mutex mutex;
    std::deque<Element> buffer;
    std::exception_ptr error;
    bool isFinished = false;
    bool isAbandoned = false;
    std::shared_ptr<Waiter> waiter;
};

} // namespace detail

/// The producer's end of an AsyncStream. Copies are the same end. Any thread.
template <class Element>
class StreamContinuation {
public:
    using State = detail::StreamState<Element>;

    explicit StreamContinuation(std::shared_ptr<State> state)
        : m_state(std::move(state)) {}

    /// Hands over one element. It is kept until the consumer takes it; after the stream's end, or
    /// once nobody can take it any more, it is dropped.
    void yield(Element element) const {
        const std::scoped_lock lock(m_state->mutex);
        if (m_state->isFinished || m_state->isAbandoned)
            return;
        m_state->buffer.push_back(std::move(element));
        wake();
    }

    /// Ends the stream, with an error if one is given, behind the elements handed over so far. Only
    /// the first end counts.
    void finish(std::exception_ptr error = nullptr) const {
        const std::scoped_lock lock(m_state->mutex);
        if (m_state->isFinished)
            return;
        m_state->isFinished = true;
        m_state->error = std::move(error);
        wake();
    }

private:
    void wake() const {
        if (const auto waiter = std::exchange(m_state->waiter, nullptr))
            waiter->resume();
    }

    std::shared_ptr<State> m_state;
};

/// The consumer's end of an asynchronous, failing stream of elements with an unbounded buffer.
///
/// One task consumes it: `while (auto element = co_await stream.next())`. Elements come in order,
/// none is dropped or merged. next() gives none at the normal end, and as soon as the consuming
/// task is cancelled; it throws the error with which the stream ended. Destroying the consumer's
/// end drops what is buffered and all that is still to come; the producer does not notice.
template <class Element>
class AsyncStream {
public:
    using State = detail::StreamState<Element>;

    explicit AsyncStream(std::shared_ptr<State> state)
        : m_state(std::move(state)) {}
    AsyncStream(AsyncStream&&) noexcept = default;
    ~AsyncStream() {
        if (!m_state)
            return;
        std::deque<Element> dropped;
        const std::scoped_lock lock(m_state->mutex);
        m_state->isAbandoned = true;
        dropped.swap(m_state->buffer);
    }

    class NextAwaiter : public WaitingAwaiter {
    public:
        explicit NextAwaiter(State& state)
            : m_state(state) {}

        template <class Promise>
        bool await_suspend(std::coroutine_handle<Promise> awaiting) {
            const TaskContext& context = awaiting.promise().context();
            m_stop = context.stop;
            if (m_stop.stop_requested())
                return false;
            std::shared_ptr<Waiter> waiter;
            {
                const std::scoped_lock lock(m_state.mutex);
                const bool isReady = !m_state.buffer.empty() || m_state.isFinished;
                if (isReady && !context.executor->shouldYield())
                    return false;
                waiter = makeWaiter(awaiting);
                if (isReady) {
                    waiter->resumeAfterOthers();
                    return true;
                }
                m_state.waiter = waiter;
            }
            m_onCancel.emplace(m_stop, [waiter] { waiter->resume(); });
            return true;
        }

        std::optional<Element> await_resume() {
            if (m_stop.stop_requested())
                return std::nullopt;
            const std::scoped_lock lock(m_state.mutex);
            if (!m_state.buffer.empty()) {
                std::optional<Element> element(std::move(m_state.buffer.front()));
                m_state.buffer.pop_front();
                return element;
            }
            if (const auto error = std::exchange(m_state.error, nullptr))
                std::rethrow_exception(error);
            return std::nullopt;
        }

    private:
        State& m_state;
        std::stop_token m_stop;
        std::optional<std::stop_callback<std::function<void()>>> m_onCancel;
    };

    /// The next element, or none at the end. See the class.
    NextAwaiter next() { return NextAwaiter(*m_state); }

private:
    std::shared_ptr<State> m_state;
};

/// The two ends of a new stream.
template <class Element>
struct StreamEnds {
    AsyncStream<Element> stream;
    StreamContinuation<Element> continuation;
};

/// Makes a stream: `auto [stream, continuation] = makeStream<Text>();`
template <class Element>
StreamEnds<Element> makeStream() {
    auto state = std::make_shared<detail::StreamState<Element>>();
    return {AsyncStream<Element>(state), StreamContinuation<Element>(state)};
}

} // namespace platform
