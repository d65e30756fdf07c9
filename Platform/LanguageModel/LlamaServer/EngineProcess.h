// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <memory>
#include <optional>

namespace platform {

/// A child process that lives no longer than the thread that started it, whatever ends the program:
/// the kernel itself kills it. Destroying the object kills it too.
///
/// It reads nothing, shares no open file with the program, has a session of its own (a Ctrl-C in
/// the program's terminal does not reach it), is the first to go when memory runs out, and leaves
/// no memory image behind when it crashes. What it writes is kept in memory for output().
///
/// Used on one thread, the one that starts it.
class EngineProcess {
public:
    struct EnvironmentChanges {
        /// Variables whose names begin in one of these ways are left out.
        QByteArrayList hiddenPrefixes;
        /// "NAME=value"; counts where the program has no variable of that name.
        QByteArrayList defaults;
    };

    /// Starts the program (an absolute path) without waiting for anything it does. The environment
    /// is the program's own, as changed. None when it cannot be started at all.
    static std::unique_ptr<EngineProcess>
    start(const QString& program, const QStringList& arguments, const EnvironmentChanges& changes);

    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    ~EngineProcess();

    pid_t id() const { return m_id; }

    /// Whether the process is still there.
    bool isRunning();

    /// The signal that ended the process; 0 while it runs and when it has ended by itself.
    int endSignal() { return isRunning() ? 0 : m_endSignal; }

    /// What it has written so far; at most the first 64 KB.
    QByteArray output() const;

private:
    EngineProcess(pid_t id, int outputFile)
        : m_id(id)
        , m_outputFile(outputFile) {}

    pid_t m_id;
    int m_outputFile;
    bool m_hasEnded = false;
    int m_endSignal = 0;
};

} // namespace platform
