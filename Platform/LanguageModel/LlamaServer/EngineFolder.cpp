// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineFolder.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

constexpr auto folderPattern = "engine-XXXXXX";

QString lockPath(const QString& folder) {
    return folder + u"/lock"_s;
}

QString socketPathIn(const QString& folder) {
    return folder + u"/engine.sock"_s;
}

/// Whether the folder is there, or could be made, and belongs to this user alone. In a folder that
/// all may write to, another user may have put something of that name first.
bool isOwnFolder(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    if (mkdir(name.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat status {};
    return lstat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// Opens the lock file and takes the lock; -1 when another process has it.
int takeLock(const QString& folder) {
    const int file = open(QFile::encodeName(lockPath(folder)).constData(),
                          O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0)
        return -1;
    if (flock(file, LOCK_EX | LOCK_NB) == 0)
        return file;
    close(file);
    return -1;
}

void removeFolder(const QString& path) {
    QDir(path).removeRecursively();
}

void sweep(const QString& parent) {
    const QStringList folders = QDir(parent).entryList(
        {u"engine-*"_s}, QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QString& name : folders) {
        const QString folder = parent + u'/' + name;
        const int lock = takeLock(folder);
        if (lock < 0)
            continue;
        removeFolder(folder);
        close(lock);
    }
}

} // namespace

std::unique_ptr<EngineFolder> EngineFolder::create(const QStringList& parents) {
    for (const QString& parent : parents) {
        const QString longest = parent + u'/' + QLatin1StringView(folderPattern);
        if (QFile::encodeName(socketPathIn(longest)).size() > longestSocketPath ||
            parent.contains(u',') || !isOwnFolder(parent))
            continue;
        if (auto folder = createIn(parent))
            return folder;
    }
    return nullptr;
}

std::unique_ptr<EngineFolder> EngineFolder::createIn(const QString& parent) {
    // Two programs that start at once must not sweep the folder that the other has just made and
    // not locked yet.
    const int parentLock = open(QFile::encodeName(parent).constData(), O_RDONLY | O_CLOEXEC);
    if (parentLock < 0)
        return nullptr;
    flock(parentLock, LOCK_EX);
    sweep(parent);
    QByteArray path = QFile::encodeName(parent) + '/' + folderPattern;
    std::unique_ptr<EngineFolder> folder;
    if (mkdtemp(path.data())) {
        const QString name = QFile::decodeName(path);
        if (const int lock = takeLock(name); lock >= 0)
            folder.reset(new EngineFolder(name, lock));
        else
            removeFolder(name);
    }
    close(parentLock);
    return folder;
}

EngineFolder::~EngineFolder() {
    removeFolder(m_path);
    close(m_lock);
}

QString EngineFolder::socketPath() const {
    return socketPathIn(m_path);
}

} // namespace platform
