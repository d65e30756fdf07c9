// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace platform {

/// The folders that the desktop's rules give to one program of a user, and the only place that
/// reads the variables with which a user moves them. Paths are absolute and clean; none of the
/// folders needs to be there. A value: any thread.
///
/// Free of the toolkit, so that a program can look into its folders before it loads one.
class UserDirectories {
public:
    using Path = std::filesystem::path;
    /// Gives the value of an environment variable; empty when it is not set.
    using Variable = std::function<std::string(const char* name)>;

    /// The folders of the user who runs the program, from its environment.
    ///
    /// @param application the program's name in these folders, "tellwick".
    static UserDirectories ofThisUser(const std::string& application);

    /// The folders that the given variables lead to. Relative paths in them do not count, and a
    /// colon separates paths only in those variables that hold a list.
    ///
    /// @param home the user's home folder.
    UserDirectories(const std::string& application, const Variable& variable, const Path& home);

    /// Where the program keeps the user's own data.
    const Path& dataHome() const { return m_dataFolders.front(); }
    /// Where the program looks for data: the user's own first, then the system's, the most
    /// important first.
    const std::vector<Path>& dataFolders() const { return m_dataFolders; }
    /// Where the program may make its folder for sockets and locks, the best first.
    const std::vector<Path>& runtimeFolders() const { return m_runtimeFolders; }

    /// Where the program looks for programs: its own folder `libexec/<application>` beside the
    /// folder that it lies in (after installation as in a build), then ownPrograms(), then where
    /// the user's are.
    ///
    /// @param ownFolder the folder that the running program lies in.
    std::vector<Path> programFolders(const Path& ownFolder) const;

    /// Where programs are put that are installed for this user and this application alone.
    Path ownPrograms() const { return dataHome() / "engine" / "bin"; }

private:
    std::string m_application;
    std::vector<Path> m_dataFolders;
    std::vector<Path> m_runtimeFolders;
    std::vector<Path> m_programFolders;
};

} // namespace platform
