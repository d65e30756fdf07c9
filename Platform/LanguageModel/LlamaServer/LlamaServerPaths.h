// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UserDirectories.h"
#include "Platform/LanguageModel/LlamaServer/MachineMemory.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

#include <QStringList>

#include <functional>

namespace platform {

/// Where the model's file and the engine's program are looked for on this machine.
///
/// Every question looks afresh, so what is put there while the program runs is found.
struct LlamaServerPaths {
    /// The model's file, under a data folder.
    static QString modelFileName();

    /// The folders of this user on this machine.
    ///
    /// @param ownFolder the folder that the running program lies in.
    static LlamaServerPaths of(const UserDirectories& directories, const QString& ownFolder);

    /// The folders that may hold the model's file, the most important first.
    QStringList dataFolders;
    /// The folders that may hold the engine's program, the most important first.
    QStringList programFolders;
    /// The folders that may hold the engine's socket, the best first.
    QStringList runtimeFolders;
    /// Tells the machine's memory at the moment.
    std::function<MachineMemory()> memory = &MachineMemory::now;

    /// The path of the model's file (a link serves), or none. Files that cannot be read are passed
    /// over.
    std::optional<QString> modelFile() const;
    /// The path of the engine's program, or none.
    std::optional<QString> program() const;
    /// Whether the model can run, from what lies at these paths and the memory there is for it:
    /// some twenty system calls.
    ///
    /// @param isLoaded the model has its memory already.
    SystemLanguageModel::Availability availability(bool isLoaded = false) const;
};

} // namespace platform
