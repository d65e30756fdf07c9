// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UserDirectories.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace platform {

using Path = std::filesystem::path;

namespace {

/// The path without dots, double slashes and a slash at its end.
Path clean(const Path& path) {
    const Path normal = path.lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

/// The absolute paths of a list; the fallback where there is none.
std::vector<Path> foldersIn(const std::string& list, const std::vector<Path>& fallback) {
    std::vector<Path> folders;
    std::istringstream stream(list);
    for (std::string folder; std::getline(stream, folder, ':');)
        if (Path(folder).is_absolute())
            folders.push_back(clean(folder));
    return folders.empty() ? fallback : folders;
}

Path folderIn(const Path& path, const Path& fallback) {
    return path.is_absolute() ? clean(path) : fallback;
}

std::string environmentVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace

UserDirectories UserDirectories::ofThisUser(const std::string& application) {
    const std::string home = environmentVariable("HOME");
    return {application, &environmentVariable, home.empty() ? "/" : home};
}

UserDirectories::UserDirectories(const std::string& application, const Variable& variable,
                                 const Path& home)
    : m_application(application)
    , m_programFolders(foldersIn(variable("PATH"), {"/usr/bin", "/bin"})) {
    m_dataFolders = foldersIn(variable("XDG_DATA_DIRS"), {"/usr/local/share", "/usr/share"});
    m_dataFolders.insert(m_dataFolders.begin(),
                         folderIn(variable("XDG_DATA_HOME"), clean(home / ".local/share")));
    for (Path& folder : m_dataFolders)
        folder /= application;

    const Path session = folderIn(variable("XDG_RUNTIME_DIR"), {});
    if (!session.empty())
        m_runtimeFolders.push_back(session / application);
    // All users share this one, so the name tells whose it is.
    m_runtimeFolders.push_back(folderIn(variable("TMPDIR"), "/tmp") /
                               (application + '-' + std::to_string(geteuid())));
}

std::vector<Path> UserDirectories::programFolders(const Path& ownFolder) const {
    std::vector<Path> folders{clean(ownFolder / ".." / "libexec" / m_application), ownPrograms()};
    folders.insert(folders.end(), m_programFolders.begin(), m_programFolders.end());
    return folders;
}

} // namespace platform
