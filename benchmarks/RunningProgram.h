// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace bench {

using Clock = std::chrono::steady_clock;

/// The data, configuration and runtime folders of a user who has none yet; removed with this
/// object.
class UserFolders {
public:
    UserFolders();
    ~UserFolders();
    UserFolders(const UserFolders&) = delete;
    UserFolders& operator=(const UserFolders&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// A program under measurement, started with a user's folders; ended with this object.
class RunningProgram {
public:
    /// Starts the program. Throws std::system_error when it cannot be started.
    RunningProgram(const std::string& path, const UserFolders& user);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// The moment right before the program was executed.
    Clock::time_point started() const { return m_started; }

    /// The memory of the program and of all processes below it, in MiB: what each holds alone and
    /// its share of what it holds with others.
    double proportionalSetSize() const;

    /// Throws std::runtime_error when the program has ended by itself.
    void expectAlive();

private:
    Clock::time_point m_started;
    pid_t m_pid = -1;
};

} // namespace bench
