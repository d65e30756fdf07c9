// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UniqueFd.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace platform {

/// A folder for sockets and locks: the user's own, closed to all others. It is held open, so nobody
/// can put another in its place. Nothing here waits. Any thread.
class PrivateFolder {
public:
    /// The first of the folders that is private or can be made so; the one above it must be there.
    /// None where no folder serves.
    static std::optional<PrivateFolder> open(const QStringList& folders);

    /// Takes the lock of that name, which the kernel lets go with the process; no file when another
    /// owner has it.
    UniqueFd takeLock(const char* name) const;

    /// The path of the socket of that name: short enough for a socket's address, whatever the
    /// folder's own. It holds in this process and its children, as long as the folder is open.
    QString socketPath(const char* name) const;

    /// Removes a file, where it is there.
    void remove(const char* name) const;

private:
    explicit PrivateFolder(UniqueFd folder)
        : m_folder(std::move(folder)) {}

    UniqueFd m_folder;
};

} // namespace platform
