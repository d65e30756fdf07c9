// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/SystemLanguageModel.h"

#include <QStringList>

#include <optional>

namespace platform {

/// Where the model's file and the engine's program are looked for on this machine.
///
/// Every question looks afresh, so what is put there while the program runs is found.
class LlamaServerPaths {
public:
    /// The model's file, under a data folder and the application's folder in it.
    static QString modelFileName();
    /// The engine's program.
    static QString programName();

    /// Folders as the desktop's rules name them.
    ///
    /// @param applicationFolder the application's folder name in the folders for data and sockets.
    /// @param programFolder the application's own folder of helper programs; asked before PATH.
    static LlamaServerPaths fromEnvironment(const QString& applicationFolder,
                                            const QString& programFolder);

    /// The folders that may hold `models/on-device.gguf`, the most important first.
    QStringList dataFolders;
    /// The folders that may hold the engine's program, the most important first.
    QStringList programFolders;
    /// Folders to make the socket's folder in, the most important first.
    QStringList runtimeFolders;
    /// The machine's memory, in bytes.
    quint64 machineMemory = 0;

    /// The path of the model's file (a link serves), or none. Files that cannot be read are passed
    /// over.
    std::optional<QString> modelFile() const;
    /// The path of the engine's program, or none.
    std::optional<QString> program() const;
    /// Whether the model can run, from what lies in the places: some twenty system calls.
    SystemLanguageModel::Availability availability() const;
};

} // namespace platform
