// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QStringList>

#include <filesystem>
#include <vector>

namespace platform {

/// A path as the toolkit writes it.
inline QString toText(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

inline QStringList toTexts(const std::vector<std::filesystem::path>& paths) {
    QStringList texts;
    for (const std::filesystem::path& path : paths)
        texts.append(toText(path));
    return texts;
}

/// A path that the toolkit has written, byte for byte as the file system knows it.
inline std::filesystem::path toPath(const QString& text) {
    return std::filesystem::path(QFile::encodeName(text).toStdString());
}

} // namespace platform
