// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace platform {

/// The folders that the desktop's rules give a user's programs. Paths are absolute and clean; none
/// of the folders needs to be there. A value: any thread.
class UserDirectories {
public:
    /// Gives the value of an environment variable; empty when it is not set.
    using Variable = std::function<QString(const char* name)>;

    /// The folders of the user who runs the program, from its environment.
    static UserDirectories ofThisUser();

    /// The folders that the given variables lead to. Relative paths in them do not count.
    ///
    /// @param home the user's home folder.
    UserDirectories(const Variable& variable, const QString& home);

    /// The folder for the user's own data.
    const QString& dataHome() const { return m_dataHome; }
    /// The folders for data of the whole system, the most important first.
    const QStringList& dataDirectories() const { return m_dataDirectories; }
    /// The folder for sockets and the like, which lasts as long as the session; none where the
    /// session has none.
    const std::optional<QString>& runtimeDirectory() const { return m_runtimeDirectory; }

    /// The program's own folder of helper programs: `libexec/<application>` beside the folder that
    /// the program lies in, after installation as in a build.
    ///
    /// @param programFolder the folder that the running program lies in.
    static QString helperFolder(const QString& programFolder, const QString& application);

private:
    QString m_dataHome;
    QStringList m_dataDirectories;
    std::optional<QString> m_runtimeDirectory;
};

} // namespace platform
