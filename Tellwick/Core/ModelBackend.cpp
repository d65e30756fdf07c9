// SPDX-License-Identifier: MIT
#include "Tellwick/Core/ModelBackend.h"

namespace tellwick {

ModelBackend::~ModelBackend() = default;

} // namespace tellwick
