// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UserDirectories.h"

#include <QDir>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

QStringList absoluteFolders(const QString& list) {
    QStringList folders;
    for (const QString& folder : list.split(u':', Qt::SkipEmptyParts))
        if (QDir::isAbsolutePath(folder))
            folders.append(QDir::cleanPath(folder));
    return folders;
}

std::optional<QString> absoluteFolder(const QString& path) {
    return QDir::isAbsolutePath(path) ? std::optional(QDir::cleanPath(path)) : std::nullopt;
}

} // namespace

UserDirectories UserDirectories::ofThisUser() {
    return UserDirectories([](const char* name) { return qEnvironmentVariable(name); },
                           QDir::homePath());
}

UserDirectories::UserDirectories(const Variable& variable, const QString& home)
    : m_dataHome(absoluteFolder(variable("XDG_DATA_HOME"))
                     .value_or(QDir::cleanPath(home + u"/.local/share"_s)))
    , m_dataDirectories(absoluteFolders(variable("XDG_DATA_DIRS")))
    , m_runtimeDirectory(absoluteFolder(variable("XDG_RUNTIME_DIR"))) {
    if (m_dataDirectories.isEmpty())
        m_dataDirectories = {u"/usr/local/share"_s, u"/usr/share"_s};
}

QString UserDirectories::helperFolder(const QString& programFolder, const QString& application) {
    return QDir::cleanPath(programFolder + u"/../libexec/"_s + application);
}

} // namespace platform
