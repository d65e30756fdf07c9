// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace platform {

/// A private folder for one run's socket, removed with its owner.
///
/// The folder of a run that was killed stays behind; the next folder made beside it sweeps it away.
/// A lock that the kernel lets go with its process tells the dead from the living.
class EngineFolder {
public:
    /// The longest path of a Unix socket, in bytes, with some room to spare.
    static constexpr qsizetype longestSocketPath = 103;

    /// Makes a folder of mode 0700 in the first of the parents where that is possible and where the
    /// socket's path is short enough and without a comma, which would end it. Missing parents are
    /// made; a parent must be the user's own and closed to all others. None when no parent serves.
    static std::unique_ptr<EngineFolder> create(const QStringList& parents);

    EngineFolder(const EngineFolder&) = delete;
    EngineFolder& operator=(const EngineFolder&) = delete;
    ~EngineFolder();

    const QString& path() const { return m_path; }
    /// The path for the engine's socket in the folder.
    QString socketPath() const;

private:
    EngineFolder(QString path, int lock)
        : m_path(std::move(path))
        , m_lock(lock) {}

    static std::unique_ptr<EngineFolder> createIn(const QString& parent);

    QString m_path;
    int m_lock;
};

} // namespace platform
