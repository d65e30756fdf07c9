// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerFiles.h"

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

using Path = std::filesystem::path;

namespace {

/// The size of a regular file with that access; none where it is no such file.
std::optional<std::uintmax_t> sizeOf(const Path& path, int access) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
        ::access(path.c_str(), access) != 0)
        return std::nullopt;
    return static_cast<std::uintmax_t>(status.st_size);
}

} // namespace

std::optional<ModelFile> findModelFile(const std::vector<Path>& dataFolders) {
    for (const Path& folder : dataFolders) {
        Path path = folder / modelFileName;
        if (const auto size = sizeOf(path, R_OK); size && *size > 0)
            return ModelFile{std::move(path), *size};
    }
    return std::nullopt;
}

std::optional<Path> findEngine(const std::vector<Path>& programFolders) {
    for (const Path& folder : programFolders) {
        Path path = folder / "llama-server";
        if (sizeOf(path, X_OK))
            return path;
    }
    return std::nullopt;
}

} // namespace platform
