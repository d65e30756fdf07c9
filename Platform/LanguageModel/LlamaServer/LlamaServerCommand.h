// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>
#include <QStringList>

#include <chrono>
#include <vector>

namespace platform {

/// The options with which the engine's program is started.
///
/// The program knows other options in other versions and ends at once, naming the first that it
/// does not know. So the newest spelling is tried first, and what it refuses is replaced by an
/// older one or, where the program does without, left out. One object serves a whole run and
/// remembers what was refused.
class LlamaServerCommand {
public:
    /// @param contextSize the room for one conversation, in tokens.
    LlamaServerCommand(int contextSize, std::chrono::seconds idleTime);

    /// The variables for the program, as "NAME=value". It takes options from variables too: it gets
    /// none of the user's. And its threads wait for each other asleep: waiting busily they take the
    /// processors from one another and from the window as soon as anything else runs.
    static QByteArrayList environment();

    QStringList arguments(const QString& modelFile, const QString& socketPath) const;

    /// Takes the program's complaint about an option into account. False when it is about none that
    /// can be replaced: another start would end in the same way.
    bool adapt(const QByteArray& complaint);

private:
    /// Each thing asked of the program in the ways of saying it that it may yet take, the newest
    /// first; where it does without, the last is empty.
    std::vector<QStringList> m_options;
};

/// The room for a conversation on a machine with that much memory, in tokens.
int contextSizeFor(quint64 machineMemory);

} // namespace platform
