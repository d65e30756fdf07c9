// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/SystemLanguageModel.h"

#include <memory>

namespace platform {

class NetworkThread;

/// What an implementation may need of the program that it serves.
struct SystemLanguageModelContext {
    /// Where replies are taken from the model. Outlives every call of the model.
    NetworkThread& network;
    /// The application's folder in the folders for data and for sockets, a plain name.
    QString applicationFolder;
    /// The application's own folder of helper programs.
    QString programFolder;
};

/// The model of the system that the program was built for; the one function that the folder of each
/// implementation defines. Costs nothing: the model is touched when it is asked something.
std::unique_ptr<SystemLanguageModel>
makeSystemLanguageModel(const SystemLanguageModelContext& context);

} // namespace platform
