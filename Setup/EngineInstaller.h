// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"

#include <QString>

#include <filesystem>

namespace setup {

/// Installs the engine for this user alone, by the helper program get-engine. Main thread.
class EngineInstaller {
public:
    using Path = std::filesystem::path;

    /// @param helper the path of get-engine.
    /// @param folder where the engine's program is put, so that Tellwick finds it.
    EngineInstaller(Path helper, Path folder)
        : m_helper(std::move(helper))
        , m_folder(std::move(folder)) {}

    /// What would be installed, and where, in a sentence.
    QString offer() const;

    /// Ends when the engine is there; throws a SetupError where it cannot be had. The helper ends
    /// with the task, with all that it has started.
    platform::Task<void> install() const;

private:
    Path m_helper;
    Path m_folder;
};

} // namespace setup
