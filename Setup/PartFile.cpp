// SPDX-License-Identifier: MIT
#include "Setup/PartFile.h"

#include "Platform/Desktop/PathTexts.h"
#include "Setup/SetupError.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace setup {

using namespace Qt::StringLiterals;
using platform::UniqueFd;

namespace {

constexpr mode_t usualPermissions = 0644;

[[noreturn]] void throwWritingError(const std::filesystem::path& path) {
    const bool isFull = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
    throw SetupError(isFull ? u"The on-device model could not be fetched: the disk is full. Make "
                              "room and try again."_s
                            : u"The on-device model cannot be kept: the folder %1 cannot be "
                              "written."_s.arg(platform::toText(path.parent_path())));
}

} // namespace

PartFile::PartFile(std::filesystem::path path, qint64 maximumSize)
    : m_path(std::move(path))
    , m_file(open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, usualPermissions)) {
    struct stat status {};
    if (!m_file || fstat(m_file.get(), &status) != 0)
        throwWritingError(m_path);
    m_size = status.st_size;
    if (m_size > maximumSize)
        clear();
}

PartFile::~PartFile() {
    if (m_size == 0 && m_file)
        unlink(m_path.c_str());
}

void PartFile::append(QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const ssize_t written =
            pwrite(m_file.get(), bytes.data(), static_cast<size_t>(bytes.size()), m_size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            throwWritingError(m_path);
        m_size += written;
        bytes = bytes.sliced(written);
    }
}

void PartFile::clear() {
    if (ftruncate(m_file.get(), 0) != 0)
        throwWritingError(m_path);
    m_size = 0;
}

void PartFile::moveTo(const std::filesystem::path& path) {
    if (rename(m_path.c_str(), path.c_str()) != 0)
        throwWritingError(path);
    m_file = UniqueFd();
    // The new name is on the disk when its folder is.
    if (const UniqueFd folder(open(path.parent_path().c_str(), O_RDONLY | O_CLOEXEC)); folder)
        fsync(folder.get());
}

} // namespace setup
