// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/TellwickApp.h"

int main(int argc, char** argv) {
    return tellwick::TellwickApp::main(argc, argv);
}
