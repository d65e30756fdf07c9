// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UniqueFd.h"

#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <memory>

namespace platform {

/// A child process that ends with this object, and with the program, however that ends; and with it
/// all that it has started, so that the engine may stand behind a script.
///
/// Process and offspring are one process group in a session of their own, killed as a whole. So
/// that a killed program's engine goes too, a small shell in the group reads from a pipe that the
/// program holds open: when it can read no more, the program has gone, and it kills its group. (The
/// kernel's own signal on a parent's death reaches the script alone.) A wrapper that moves the
/// engine out of the group takes it out of all this.
///
/// It shares no open file with the program, is not reached by a Ctrl-C in the program's terminal,
/// is the first to go when memory runs out, and leaves no memory image when it crashes.
///
/// One thread at a time. Nothing here waits, but for the moment that the destructor allows.
class EngineProcess {
public:
    /// Starts the program (an absolute path) without waiting for anything it does. The environment
    /// is as "NAME=value". None when it cannot be started at all.
    static std::unique_ptr<EngineProcess>
    start(const QString& program, const QStringList& arguments, QByteArrayList environment);

    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    /// Kills the process and gives it half a second to end; one that the kernel cannot end yet, in
    /// the middle of a read from a disk that is gone, is left behind to end with that read.
    ~EngineProcess();

    pid_t id() const { return m_id; }

    /// Whether the process is still there. What it leaves behind when it ends is killed.
    bool isRunning();

    /// The signal that ended the process; 0 while it runs and when it has ended by itself. A script
    /// tells the signal of its program in its own way.
    int endSignal() { return isRunning() ? 0 : m_endSignal; }

    /// Kills the process and all that it has started, without waiting for their end.
    void kill() const;

    /// The work that the process and its offspring have done so far, in no unit of meaning: as long
    /// as one of them computes or reads the model in, the next answer is another. Costs some
    /// milliseconds.
    quint64 workDone() const;

    /// What it has written so far; at most the first 64 KB.
    QByteArray output() const;

private:
    EngineProcess(pid_t id, UniqueFd output, UniqueFd lifeline)
        : m_id(id)
        , m_output(std::move(output))
        , m_lifeline(std::move(lifeline)) {}

    pid_t m_id;
    UniqueFd m_output;
    UniqueFd m_lifeline;
    bool m_hasEnded = false;
    int m_endSignal = 0;
};

} // namespace platform
