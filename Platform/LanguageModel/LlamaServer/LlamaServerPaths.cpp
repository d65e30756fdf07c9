// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"

#include "Platform/Desktop/PathTexts.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerFiles.h"

namespace platform {

namespace {

std::vector<std::filesystem::path> toPaths(const QStringList& texts) {
    std::vector<std::filesystem::path> paths;
    for (const QString& text : texts)
        paths.push_back(toPath(text));
    return paths;
}

} // namespace

QString LlamaServerPaths::modelFileName() {
    return QLatin1String(platform::modelFileName);
}

LlamaServerPaths LlamaServerPaths::of(const UserDirectories& directories,
                                      const QString& ownFolder) {
    return {.dataFolders = toTexts(directories.dataFolders()),
            .programFolders = toTexts(directories.programFolders(toPath(ownFolder))),
            .runtimeFolders = toTexts(directories.runtimeFolders())};
}

std::optional<QString> LlamaServerPaths::modelFile() const {
    const auto file = findModelFile(toPaths(dataFolders));
    return file ? std::optional(toText(file->path)) : std::nullopt;
}

std::optional<QString> LlamaServerPaths::program() const {
    const auto path = findEngine(toPaths(programFolders));
    return path ? std::optional(toText(*path)) : std::nullopt;
}

SystemLanguageModel::Availability LlamaServerPaths::availability(bool isLoaded) const {
    using Availability = SystemLanguageModel::Availability;
    using enum Availability::UnavailableReason;
    const auto file = findModelFile(toPaths(dataFolders));
    if (file && !isLoaded && !contextSizeFor(file->size, memory()))
        return Availability::unavailable(deviceNotEligible);
    if (!program())
        return Availability::unavailable(appleIntelligenceNotEnabled);
    if (!file)
        return Availability::unavailable(modelNotReady);
    return Availability::available();
}

} // namespace platform
