// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UniqueFd.h"

#include <QByteArrayView>

#include <filesystem>

namespace setup {

/// What there is of a file that is being fetched. It stays when this ends, so that it can be gone
/// on with, unless nothing has come. What fails is thrown as a SetupError.
class PartFile {
public:
    /// Opens the part, or begins an empty one; one of more than `maximumSize` bytes begins anew.
    PartFile(std::filesystem::path path, qint64 maximumSize);
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;
    ~PartFile();

    int descriptor() const { return m_file.get(); }
    qint64 size() const { return m_size; }

    void append(QByteArrayView bytes);
    /// Begins anew.
    void clear();
    /// Gives the whole file its name, in place of what has that name; called at most once, and
    /// last.
    void moveTo(const std::filesystem::path& path);

private:
    std::filesystem::path m_path;
    platform::UniqueFd m_file;
    qint64 m_size = 0;
};

} // namespace setup
