// SPDX-License-Identifier: MIT
#include "Setup/SetupApp.h"
#include "Setup/TerminalSetup.h"

#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    const std::string_view option = argc > 1 ? argv[1] : "--open";
    if (option == "--terminal")
        return setup::runTerminalSetup(argc, argv);
    if (option == "--open")
        return setup::SetupApp::main(argc, argv);
    std::fputs("Usage: tellwick-setup-window [--open [ARGUMENT…] | --terminal [OPTION…]]\n",
               stderr);
    return 2;
}
