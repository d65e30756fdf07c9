// SPDX-License-Identifier: MIT
#include "Platform/Desktop/AppearanceSource.h"

namespace platform {

AppearanceSource::~AppearanceSource() = default;

} // namespace platform
