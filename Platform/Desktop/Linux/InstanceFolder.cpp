// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/InstanceFolder.h"

#include "Platform/Desktop/UserDirectories.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

constexpr auto lockName = "instance.lock";
constexpr auto socketName = "instance.sock";

QString temporaryFolder() {
    const QString folder = qEnvironmentVariable("TMPDIR");
    return QDir::isAbsolutePath(folder) ? folder : u"/tmp"_s;
}

/// Opens a folder, made if need be, that is the user's own and closed to all others. In a folder
/// that all may write to, another user may have put something of that name there first.
UniqueFd openPrivate(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    mkdir(name.constData(), 0700);
    UniqueFd folder(open(name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0 || status.st_uid != geteuid() ||
        (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return {};
    return folder;
}

} // namespace

UniqueFd::~UniqueFd() {
    if (m_file >= 0)
        close(m_file);
}

std::optional<InstanceFolder> InstanceFolder::open(const QString& applicationId) {
    if (const auto runtime = UserDirectories::ofThisUser().runtimeDirectory()) {
        if (auto folder = openPrivate(*runtime + u'/' + applicationId))
            return InstanceFolder(std::move(folder));
    }
    const QString owner = QString::number(geteuid());
    if (auto folder = openPrivate(temporaryFolder() + u'/' + applicationId + u'-' + owner))
        return InstanceFolder(std::move(folder));
    return std::nullopt;
}

UniqueFd InstanceFolder::takeLock() const {
    UniqueFd lock(
        openat(m_folder.get(), lockName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock || flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return lock;
}

sockaddr_un InstanceFolder::socketAddress() const {
    // By way of the open folder: a socket's address has room for 107 bytes only, and what the name
    // leads to cannot change.
    const std::string path = "/proc/self/fd/" + std::to_string(m_folder.get()) + '/' + socketName;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

void InstanceFolder::removeSocket() const {
    unlinkat(m_folder.get(), socketName, 0);
}

} // namespace platform
