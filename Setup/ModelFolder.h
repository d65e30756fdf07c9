// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UniqueFd.h"
#include "Setup/ModelOffer.h"

#include <filesystem>
#include <optional>

namespace platform {
class UserDirectories;
}

namespace setup {

/// The user's own folder with the model that the program finds, and with the parts of models that
/// are being fetched. What fails is thrown as a SetupError. A value.
class ModelFolder {
public:
    using Path = std::filesystem::path;

    explicit ModelFolder(const platform::UserDirectories& directories);

    const Path& path() const { return m_path; }
    /// Where the program looks for its model.
    const Path& modelPath() const { return m_modelPath; }
    /// Where a part of that model is kept until all of it is there. Named after its content, so
    /// that a part of another one is never gone on with.
    Path partPath(const ModelOffer& offer) const;
    /// How much of that model is there already, in bytes.
    qint64 sizeOfPart(const ModelOffer& offer) const;
    /// The room left, in bytes; also before the folder is there.
    qint64 room() const;
    /// The file that the model is a link to; none where it is none.
    std::optional<Path> linkedFile() const;

    /// Makes the folder and keeps other set-ups from it, until the file is closed or the process
    /// ends.
    platform::UniqueFd lock() const;

    /// Makes a file of the user's own the model, by a link to it, where it is one that the engine
    /// reads.
    void link(const Path& file) const;

private:
    Path m_path;
    Path m_modelPath;
};

/// The index of the offer to begin with: one that has been begun, or else the recommended one.
qsizetype firstOffer(const QList<ModelOffer>& offers, const ModelFolder& folder,
                     quint64 machineMemory);

} // namespace setup
