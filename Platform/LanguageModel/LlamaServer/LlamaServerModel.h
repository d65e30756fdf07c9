// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

/// The on-device model where the system has none of its own: a model file, run by llama-server.
///
/// Making the object costs nothing; the engine starts when a session is first used and serves all
/// of them.
class LlamaServerModel final : public SystemLanguageModel {
public:
    /// The network thread outlives the calls made here, but not necessarily the object.
    LlamaServerModel(NetworkThread& network, LlamaServerPaths paths,
                     const EngineLimits& limits = {});

    Availability availability() const override;
    std::shared_ptr<LanguageModelSession> makeSession(const QString& instructions) override;

private:
    TaskScope& m_scope;
    LlamaServerPaths m_paths;
    std::shared_ptr<LlamaServer> m_server;
};

} // namespace platform
