// SPDX-License-Identifier: MIT
#include "benchmarks/RunningProgram.h"

#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace bench {

namespace {

std::filesystem::path makeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tellwick-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    return name;
}

// This process's environment, with the user's folders replaced. The cache folder stays: a font
// cache made anew at each start would be measured and not the program.
std::vector<std::string> environmentIn(const std::filesystem::path& folder) {
    static constexpr std::string_view replaced[] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME",
                                                    "XDG_RUNTIME_DIR"};
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string_view name = text.substr(0, text.find('='));
        bool kept = true;
        for (const std::string_view other : replaced)
            kept = kept && name != other;
        if (kept)
            environment.emplace_back(text);
    }
    for (const std::string_view name : replaced) {
        const std::filesystem::path inside = folder / name;
        std::filesystem::create_directory(inside);
        std::filesystem::permissions(inside, std::filesystem::perms::owner_all);
        environment.push_back(std::string(name) + '=' + inside.string());
    }
    return environment;
}

double treeKilobytes(pid_t pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    double sum = 0;
    std::ifstream memory(folder + "/smaps_rollup");
    for (std::string line; std::getline(memory, line);)
        if (line.starts_with("Pss:"))
            sum += std::stod(line.substr(4));
    std::error_code ignored;
    for (const auto& task : std::filesystem::directory_iterator(folder + "/task", ignored)) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;)
            sum += treeKilobytes(child);
    }
    return sum;
}

} // namespace

UserFolders::UserFolders()
    : m_path(makeFolder()) {}

UserFolders::~UserFolders() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

RunningProgram::RunningProgram(const std::string& path, const UserFolders& user) {
    std::vector<std::string> environment = environmentIn(user.path());
    std::vector<char*> variables;
    for (std::string& entry : environment)
        variables.push_back(entry.data());
    variables.push_back(nullptr);
    std::string program = path;
    char* const arguments[] = {program.data(), nullptr};

    m_started = Clock::now();
    const int error =
        posix_spawn(&m_pid, path.c_str(), nullptr, nullptr, arguments, variables.data());
    if (error != 0)
        throw std::system_error(error, std::generic_category(), path);
}

RunningProgram::~RunningProgram() {
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
    }
}

double RunningProgram::proportionalSetSize() const {
    return treeKilobytes(m_pid) / 1024;
}

void RunningProgram::expectAlive() {
    if (waitpid(m_pid, nullptr, WNOHANG) == 0)
        return;
    m_pid = -1;
    throw std::runtime_error("the program ended by itself");
}

} // namespace bench
