// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UserDirectories.h"

namespace setup {

/// The program's name in the folders of its user and of the system.
inline constexpr auto applicationFolder = "tellwick";

/// Where the parts of the program lie beside each other, after installation as in a build. Free of
/// the toolkit: the launcher looks there before it loads one.
struct ProgramPaths {
    using Path = std::filesystem::path;

    /// @param prefix the folder that holds bin, libexec and share.
    explicit ProgramPaths(const Path& prefix)
        : programs(prefix / "bin")
        , tellwick(programs / "tellwick")
        , window(prefix / "libexec" / applicationFolder / "tellwick-setup-window")
        , engineInstaller(prefix / "libexec" / applicationFolder / "get-engine")
        , modelList(prefix / "share" / applicationFolder / "models.json") {}

    Path programs; ///< the folder of the programs that users start
    Path tellwick;
    Path window; ///< the set-up's own program, with its window
    Path engineInstaller;
    Path modelList;
};

/// The empty file that is there when the user does not want to be asked whether all is there.
inline std::filesystem::path notNowFile(const platform::UserDirectories& directories) {
    return directories.dataHome() / "setup-not-now";
}

} // namespace setup
