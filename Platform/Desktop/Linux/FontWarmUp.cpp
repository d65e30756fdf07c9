// SPDX-License-Identifier: MIT
#include "Platform/Desktop/FontWarmUp.h"

#include <fontconfig/fontconfig.h>

namespace platform {

// To be called by several threads at once is allowed: the later ones wait for the first.
FontWarmUp::FontWarmUp()
    : m_thread([] { FcInit(); }) {}

} // namespace platform
