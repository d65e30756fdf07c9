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
    explicit LlamaServerCommand(std::chrono::seconds idleTime);

    /// The variables for the program, as "NAME=value". It takes options from variables too: it gets
    /// none of the user's.
    QByteArrayList environment() const;

    /// @param contextSize the room for one conversation, in tokens.
    QStringList arguments(const QString& modelFile, const QString& socketPath,
                          int contextSize) const;

    /// Takes the program's complaint about an option into account. False when it is about none that
    /// can be replaced: another start would end in the same way.
    bool adapt(const QByteArray& complaint);

    /// From here on the program is to use the processor alone. False when it does already.
    bool leaveOutTheCard();

private:
    /// Each thing asked of the program in the ways of saying it that it may yet take, the newest
    /// first; where it does without, the last is empty.
    std::vector<QStringList> m_options;
    bool m_usesCard = true;
};

} // namespace platform
