// SPDX-License-Identifier: MIT
#include "Platform/Desktop/FontWarmUp.h"

#include <fontconfig/fontconfig.h>

std::jthread platform::warmUpFonts() {
    // To be called by several threads at once is allowed: the later ones wait for the first.
    return std::jthread([] { FcInit(); });
}
