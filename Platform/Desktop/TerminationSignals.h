// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>

#include <functional>

namespace platform {

/// Turns the system's requests to end the program (SIGTERM, SIGINT, SIGHUP) into a call on the main
/// thread, so that it quits in its normal way and saves what is pending.
///
/// The call comes once, from the event loop. A second SIGINT ends the program at once: the user who
/// presses Ctrl-C again means it. Signals that the program was started to ignore stay ignored, and
/// child processes start with none of this. One object at a time, which the application object
/// outlives and the callback must not destroy; its end puts back what was before.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> requested);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

private:
    QSocketNotifier m_notifier;
};

} // namespace platform
