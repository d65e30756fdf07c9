// SPDX-License-Identifier: MIT
#include "Setup/TerminalSetup.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--terminal") == 0)
        return setup::runTerminalSetup(argc, argv);
    std::fputs("Usage: tellwick-setup-window --terminal [--model NAME | --file PATH]\n", stderr);
    return 2;
}
