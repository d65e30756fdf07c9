// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/TaskScope.h"
#include "Platform/Text/TextSnapshot.h"

#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace tests {

/// The error with which something ended, if it did.
struct Ending {
    std::exception_ptr error;

    /// The user-facing description of the error; empty when there is none.
    QString errorText() const { return error ? platform::localizedDescription(error) : QString(); }

    /// The error, where it is of that type.
    template <class Error>
    std::optional<Error> errorAs() const {
        try {
            if (error)
                std::rethrow_exception(error);
        } catch (const Error& found) {
            return found;
        } catch (...) {
        }
        return std::nullopt;
    }
};

/// What came out of a task: its value, or the error with which it failed.
template <class T>
struct TaskOutcome : Ending {
    std::optional<T> value;
    std::function<void()> onEnd = [] {};

    bool hasEnded() const { return value.has_value() || error; }
};

template <class T>
platform::Task<void> report(platform::Task<T> task, std::shared_ptr<TaskOutcome<T>> outcome) {
    try {
        outcome->value.emplace(co_await task);
    } catch (...) {
        outcome->error = std::current_exception();
    }
    outcome->onEnd();
}

/// Starts a task whose outcome the test looks at later.
template <class T>
std::shared_ptr<TaskOutcome<T>> startTask(platform::TaskScope& scope, platform::Task<T> task) {
    auto outcome = std::make_shared<TaskOutcome<T>>();
    scope.start(report(std::move(task), outcome));
    return outcome;
}

/// Runs a task on the test's event loop until it ends. A task that does not end within the limit
/// ends the test program: nothing after it would make sense.
template <class T>
TaskOutcome<T> runTask(platform::MainExecutor& executor, platform::Task<T> task,
                       std::chrono::seconds limit = std::chrono::seconds(30)) {
    platform::TaskScope scope(executor);
    const auto outcome = startTask(scope, std::move(task));
    // An event loop and no QTRY_…: that one sleeps between two looks at the event queue.
    QEventLoop loop;
    outcome->onEnd = [&loop] { loop.quit(); };
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, &loop,
                     [] { qFatal("a task has not ended within its limit"); });
    watchdog.start(limit);
    loop.exec();
    outcome->onEnd = [] {};
    return *outcome;
}

/// What has come of a stream so far.
template <class Element>
struct Seen : Ending {
    QList<Element> elements;
    bool hasEnded = false;
};

/// The same of a reply, whose elements are texts.
struct SeenReply : Seen<platform::TextSnapshot> {
    QStringList texts() const {
        QStringList all;
        for (const platform::TextSnapshot& element : elements)
            all.append(element.toString());
        return all;
    }
};

template <class Element>
platform::Task<void> consume(platform::AsyncStream<Element> stream,
                             std::shared_ptr<Seen<Element>> seen) {
    try {
        while (auto element = co_await stream.next())
            seen->elements.append(std::move(*element));
    } catch (...) {
        seen->error = std::current_exception();
    }
    seen->hasEnded = true;
}

} // namespace tests
