// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UserDirectories.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

#include <memory>

namespace platform {

class NetworkThread;

/// What an implementation may need of the program that it serves.
struct SystemLanguageModelContext {
    /// Where replies are taken from the model. Outlives every call of the model.
    NetworkThread& network;
    /// The program's folders.
    UserDirectories directories;
    /// The folder that the running program lies in.
    QString programFolder;
};

/// The model of the system that the program was built for; the one function that the folder of each
/// implementation defines. Costs nothing: the model is touched when it is asked something.
std::unique_ptr<SystemLanguageModel>
makeSystemLanguageModel(const SystemLanguageModelContext& context);

} // namespace platform
