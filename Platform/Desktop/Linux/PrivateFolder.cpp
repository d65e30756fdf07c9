// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PrivateFolder.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// In a folder that all may write to, another user may have put something of that name first.
bool isPrivate(const UniqueFd& folder) {
    struct stat status {};
    return folder && fstat(folder.get(), &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

std::optional<PrivateFolder> PrivateFolder::open(const QStringList& folders) {
    for (const QString& path : folders) {
        const QByteArray name = QFile::encodeName(path);
        mkdir(name.constData(), 0700);
        UniqueFd folder(::open(name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (isPrivate(folder))
            return PrivateFolder(std::move(folder));
    }
    return std::nullopt;
}

UniqueFd PrivateFolder::takeLock(const char* name) const {
    UniqueFd lock(openat(m_folder.get(), name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock || flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return lock;
}

QString PrivateFolder::socketPath(const char* name) const {
    // An address has room for 107 bytes. By way of the open folder it is short, and what the name
    // leads to cannot change.
    return u"/proc/%1/fd/%2/%3"_s.arg(getpid()).arg(m_folder.get()).arg(QLatin1String(name));
}

void PrivateFolder::remove(const char* name) const {
    unlinkat(m_folder.get(), name, 0);
}

} // namespace platform
