// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"

#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// The size of a file that can be read, or none.
std::optional<quint64> readableSize(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        access(name.constData(), R_OK) != 0)
        return std::nullopt;
    return static_cast<quint64>(status.st_size);
}

} // namespace

QString LlamaServerPaths::modelFileName() {
    return u"models/on-device.gguf"_s;
}

LlamaServerPaths LlamaServerPaths::of(const UserDirectories& directories,
                                      const QString& ownFolder) {
    return {.dataFolders = directories.dataFolders(),
            .programFolders = directories.programFolders(ownFolder),
            .runtimeFolders = directories.runtimeFolders(),
            .machineMemory = static_cast<quint64>(sysconf(_SC_PHYS_PAGES)) *
                             static_cast<quint64>(sysconf(_SC_PAGESIZE))};
}

std::optional<QString> LlamaServerPaths::modelFile() const {
    for (const QString& folder : dataFolders) {
        const QString path = folder + u'/' + modelFileName();
        if (readableSize(path))
            return path;
    }
    return std::nullopt;
}

std::optional<QString> LlamaServerPaths::program() const {
    const QString path = QStandardPaths::findExecutable(u"llama-server"_s, programFolders);
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

SystemLanguageModel::Availability LlamaServerPaths::availability() const {
    using Availability = SystemLanguageModel::Availability;
    using enum Availability::UnavailableReason;
    const std::optional<QString> file = modelFile();
    if (file && readableSize(*file).value_or(0) > machineMemory)
        return Availability::unavailable(deviceNotEligible);
    if (!program())
        return Availability::unavailable(appleIntelligenceNotEnabled);
    if (!file)
        return Availability::unavailable(modelNotReady);
    return Availability::available();
}

} // namespace platform
