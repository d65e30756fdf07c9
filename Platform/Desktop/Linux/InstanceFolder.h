// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <sys/socket.h>
#include <sys/un.h>

#include <optional>
#include <utility>

namespace platform {

/// A file descriptor that is closed with its owner.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int file)
        : m_file(file) {}
    UniqueFd(UniqueFd&& other) noexcept
        : m_file(std::exchange(other.m_file, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_file, other.m_file);
        return *this;
    }
    ~UniqueFd();

    explicit operator bool() const { return m_file >= 0; }
    int get() const { return m_file; }

private:
    int m_file = -1;
};

/// The private folder that a user's instances of a program meet in: the user's own, closed to all
/// others. It is held open, so nobody can put another in its place.
class InstanceFolder {
public:
    /// The folder in the session's runtime folder or, where there is none, in the folder for
    /// temporary files. None where neither can be made private.
    static std::optional<InstanceFolder> open(const QString& applicationId);

    /// Takes the lock of the folder, without waiting; no file when another process has it.
    UniqueFd takeLock() const;
    /// The socket's address: of any length of path.
    sockaddr_un socketAddress() const;
    void removeSocket() const;

private:
    explicit InstanceFolder(UniqueFd folder)
        : m_folder(std::move(folder)) {}

    UniqueFd m_folder;
};

} // namespace platform
