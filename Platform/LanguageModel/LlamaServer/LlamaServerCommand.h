// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

namespace platform {

/// The options with which the engine's program is started.
///
/// The program knows other options in other versions and ends at once, naming the first that it
/// does not know. So the newest spelling is tried first, and what it refuses is replaced by an
/// older one or, where the program does without, left out: a start with a program of today costs no
/// question beforehand. One object serves a whole run and remembers what was refused.
class LlamaServerCommand {
public:
    /// @param contextSize the room for one conversation, in tokens.
    LlamaServerCommand(int contextSize, std::chrono::seconds idleTime);

    /// The program takes options from variables too: it gets none of the user's. And its threads
    /// wait for each other asleep: waiting busily they take the processors from one another and
    /// from the window as soon as anything else runs (five times slower then, measured).
    static EngineProcess::EnvironmentChanges environment();

    QStringList arguments(const QString& modelFile, const QString& socketPath) const;

    /// Takes the program's complaint about an option into account. False when it is about none that
    /// can be replaced: another start would end in the same way.
    bool adapt(const QByteArray& complaint);

private:
    /// One thing asked of the program, in all the ways of saying it, the newest first. The last may
    /// be empty.
    struct Option {
        std::vector<QStringList> spellings;
        std::size_t current = 0;
    };

    std::vector<Option> m_options;
};

/// The room for a conversation on a machine with that much memory, in tokens.
int contextSizeFor(quint64 machineMemory);

} // namespace platform
