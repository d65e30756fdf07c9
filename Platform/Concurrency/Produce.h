// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/TaskScope.h"

namespace platform {

namespace detail {

template <class Element>
Task<void> endWith(Task<void> work, StreamContinuation<Element> continuation) {
    std::exception_ptr error;
    try {
        co_await work;
    } catch (const CancellationError&) {
        // Cancelled work just ends.
    } catch (...) {
        error = std::current_exception();
    }
    continuation.finish(error);
}

} // namespace detail

/// Makes a stream and starts in `scope` the task that fills it: what `makeWork`, called at once
/// with the producer's end, returns. The stream ends when the task does, with the error that leaves
/// it or makeWork; a CancellationError ends it normally. Any thread.
///
///     return produce<TextSnapshot>(
///         scope, [&](auto continuation) { return readReply(request, continuation); });
template <class Element, class MakeWork>
AsyncStream<Element> produce(TaskScope& scope, MakeWork makeWork) {
    auto [stream, continuation] = makeStream<Element>();
    try {
        scope.start(detail::endWith<Element>(makeWork(continuation), continuation));
    } catch (...) {
        continuation.finish(std::current_exception());
    }
    return std::move(stream);
}

} // namespace platform
