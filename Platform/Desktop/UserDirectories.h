// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace platform {

/// The folders that the desktop's rules give to one program of a user, and the only place that
/// reads the variables with which a user moves them. Paths are absolute and clean; none of the
/// folders needs to be there. A value: any thread.
class UserDirectories {
public:
    /// Gives the value of an environment variable; empty when it is not set.
    using Variable = std::function<QString(const char* name)>;

    /// The folders of the user who runs the program, from its environment.
    ///
    /// @param application the program's name in these folders, "tellwick".
    static UserDirectories ofThisUser(const QString& application);

    /// The folders that the given variables lead to. Relative paths in them do not count, and a
    /// colon separates paths only in those variables that hold a list.
    ///
    /// @param home the user's home folder.
    UserDirectories(const QString& application, const Variable& variable, const QString& home);

    /// Where the program keeps the user's own data.
    const QString& dataHome() const { return m_dataFolders.front(); }
    /// Where the program looks for data: the user's own first, then the system's, the most
    /// important first.
    const QStringList& dataFolders() const { return m_dataFolders; }
    /// Where the program may make its folder for sockets and locks, the best first.
    const QStringList& runtimeFolders() const { return m_runtimeFolders; }

    /// Where the program looks for programs: its own folder `libexec/<application>` beside the
    /// folder that it lies in (after installation as in a build), then where the user's are.
    ///
    /// @param ownFolder the folder that the running program lies in.
    QStringList programFolders(const QString& ownFolder) const;

private:
    QString m_application;
    QStringList m_dataFolders;
    QStringList m_runtimeFolders;
    QStringList m_programFolders;
};

} // namespace platform
