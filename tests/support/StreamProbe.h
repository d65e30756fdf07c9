// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/TaskScope.h"
#include "Platform/Text/TextSnapshot.h"

#include <QElapsedTimer>
#include <QString>

#include <memory>

namespace tests {

/// What came out of a stream of reply texts so far.
struct Heard {
    platform::TextSnapshot reply;
    int snapshots = 0;
    bool everGrew = true; ///< each snapshot went on from the one before
    bool hasEnded = false;
    std::optional<QString> error; ///< its description for the user
    qint64 firstWordAfter = -1;   ///< nanoseconds from listen() on
    QElapsedTimer clock;

    QString text() const { return reply.toString(); }
};

inline platform::Task<void> hear(platform::AsyncStream<platform::TextSnapshot> stream,
                                 std::shared_ptr<Heard> heard) {
    try {
        while (const auto snapshot = co_await stream.next()) {
            if (heard->snapshots++ == 0)
                heard->firstWordAfter = heard->clock.nsecsElapsed();
            heard->everGrew = heard->everGrew && snapshot->size() > heard->reply.size() &&
                              snapshot->continues(heard->reply);
            heard->reply = *snapshot;
        }
    } catch (...) {
        heard->error = platform::localizedDescription(std::current_exception());
    }
    heard->hasEnded = true;
}

/// Consumes the stream in the scope, on its executor's thread.
inline std::shared_ptr<Heard> listen(platform::TaskScope& scope,
                                     platform::AsyncStream<platform::TextSnapshot> stream) {
    auto heard = std::make_shared<Heard>();
    heard->clock.start();
    scope.start(hear(std::move(stream), heard));
    return heard;
}

} // namespace tests
