// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace platform {

/// A model's file that can be read, and its size in bytes.
struct ModelFile {
    std::filesystem::path path;
    std::uintmax_t size = 0;
};

// Free of the toolkit, so that a program can look before it loads one. Each looks afresh.

/// The model's file, under a data folder.
inline constexpr auto modelFileName = "models/on-device.gguf";

/// The first file with the model's name under one of the folders (a link serves); one that is
/// empty or cannot be read is passed over.
std::optional<ModelFile> findModelFile(const std::vector<std::filesystem::path>& dataFolders);

/// The first engine's program in one of the folders that may be run.
std::optional<std::filesystem::path>
findEngine(const std::vector<std::filesystem::path>& programFolders);

} // namespace platform
