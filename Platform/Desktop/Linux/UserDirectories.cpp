// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UserDirectories.h"

#include <QDir>

#include <unistd.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// The absolute paths of a list; the fallback where there is none.
QStringList foldersIn(const QString& list, const QStringList& fallback) {
    QStringList folders;
    for (const QString& folder : list.split(u':', Qt::SkipEmptyParts))
        if (QDir::isAbsolutePath(folder))
            folders.append(QDir::cleanPath(folder));
    return folders.isEmpty() ? fallback : folders;
}

QString folderIn(const QString& path, const QString& fallback) {
    return QDir::isAbsolutePath(path) ? QDir::cleanPath(path) : fallback;
}

} // namespace

UserDirectories UserDirectories::ofThisUser(const QString& application) {
    return {application, [](const char* name) { return qEnvironmentVariable(name); },
            QDir::homePath()};
}

UserDirectories::UserDirectories(const QString& application, const Variable& variable,
                                 const QString& home)
    : m_application(application)
    , m_programFolders(foldersIn(variable("PATH"), {u"/usr/bin"_s, u"/bin"_s})) {
    m_dataFolders.append(
        folderIn(variable("XDG_DATA_HOME"), QDir::cleanPath(home + u"/.local/share"_s)));
    m_dataFolders += foldersIn(variable("XDG_DATA_DIRS"), {u"/usr/local/share"_s, u"/usr/share"_s});
    for (QString& folder : m_dataFolders)
        folder += u'/' + application;

    const QString session = folderIn(variable("XDG_RUNTIME_DIR"), QString());
    if (!session.isEmpty())
        m_runtimeFolders.append(session + u'/' + application);
    // All users share this one, so the name tells whose it is.
    m_runtimeFolders.append(folderIn(variable("TMPDIR"), u"/tmp"_s) + u'/' + application + u'-' +
                            QString::number(geteuid()));
}

QStringList UserDirectories::programFolders(const QString& ownFolder) const {
    return QStringList{QDir::cleanPath(ownFolder + u"/../libexec/"_s + m_application)} +
           m_programFolders;
}

} // namespace platform
