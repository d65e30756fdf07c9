// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LanguageModelSession.h"

namespace platform {

LanguageModelSession::~LanguageModelSession() = default;

} // namespace platform
