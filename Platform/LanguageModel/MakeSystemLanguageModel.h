// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UserDirectories.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

class NetworkThread;

/// The model of the system that the program was built for; the one function that the folder of each
/// implementation defines. Costs nothing: the model is touched when it is asked something.
///
/// @param network where replies are taken from the model; outlives every call of it.
/// @param programFolder the folder that the running program lies in.
std::unique_ptr<SystemLanguageModel> makeSystemLanguageModel(NetworkThread& network,
                                                             const UserDirectories& directories,
                                                             const QString& programFolder);

} // namespace platform
