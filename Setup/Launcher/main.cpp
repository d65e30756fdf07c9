// SPDX-License-Identifier: MIT
// tellwick-setup: becomes Tellwick where all is there that it needs, and else the set-up's window.
// It stands before every start of Tellwick, so it looks and goes, without loading a toolkit.
#include "Platform/LanguageModel/LlamaServer/LlamaServerFiles.h"
#include "Setup/ProgramPaths.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

constexpr auto usage =
    R"(Usage: tellwick-setup [--open [ARGUMENT…] | --terminal [OPTION…] | --help | --version]

Gets what Tellwick needs to answer on this computer: the model, and the engine that runs it.

  (nothing)                 in a window
  --open [ARGUMENT…]        starts Tellwick with these arguments; where something is missing, and until
                            "Not Now" was chosen, the window comes first
  --terminal                without a window: fetches what is missing and says on standard error what it does;
                            Ctrl-C stops it, and the next time it goes on from there
  --terminal --model NAME   the same with this model: small, large, or a model's name
  --terminal --file PATH    makes this GGUF file of your own the model
  --help, --version         show this, or the version
)";

constexpr int statusWrongCall = 2;

/// Becomes the program, with the arguments from the given one on; comes back where that fails.
void become(const std::filesystem::path& program, char** arguments) {
    // The place before the arguments holds this program's own name or option.
    arguments[-1] = const_cast<char*>(program.c_str());
    execv(program.c_str(), arguments - 1);
    std::fprintf(stderr, "tellwick-setup: %s cannot be started: %s.\n", program.c_str(),
                 std::strerror(errno));
}

bool isReady(const platform::UserDirectories& directories, const setup::ProgramPaths& programs) {
    return platform::findModelFile(directories.dataFolders()) &&
           platform::findEngine(directories.programFolders(programs.programs));
}

bool isToBeOpened(const setup::ProgramPaths& programs) {
    const auto directories = platform::UserDirectories::ofThisUser(setup::applicationFolder);
    return access(setup::notNowFile(directories).c_str(), F_OK) == 0 ||
           isReady(directories, programs);
}

} // namespace

int main(int argc, char** argv) {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    const setup::ProgramPaths programs(self.parent_path().parent_path());
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (option == "--help" || option == "-h") {
        std::fputs(usage, stdout);
        return 0;
    }
    if (option == "--version") {
        std::puts("tellwick-setup " TELLWICK_VERSION);
        return 0;
    }
    if (option == "--open") {
        if (!isToBeOpened(programs))
            become(programs.window, argv + 1);
        // A set-up that is not installed, or broken, keeps nobody from Tellwick.
        become(programs.tellwick, argv + 2);
        return 1;
    }
    if (argc > 1 && option != "--terminal") {
        std::fputs(usage, stderr);
        return statusWrongCall;
    }
    become(programs.window, argv + 1);
    return 1;
}
