// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"

#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

LlamaServerModel::LlamaServerModel(NetworkThread& network, LlamaServerPaths paths,
                                   const EngineLimits& limits)
    : m_scope(network.scope())
    , m_paths(std::move(paths))
    , m_server(std::make_shared<LlamaServer>(network, m_paths, limits)) {}

SystemLanguageModel::Availability LlamaServerModel::availability() const {
    return m_paths.availability(m_server->hasEngine());
}

std::shared_ptr<LanguageModelSession> LlamaServerModel::makeSession(const QString& instructions) {
    return std::make_shared<LlamaServerSession>(m_server, m_scope, instructions);
}

std::unique_ptr<SystemLanguageModel> makeSystemLanguageModel(NetworkThread& network,
                                                             const UserDirectories& directories,
                                                             const QString& programFolder) {
    return std::make_unique<LlamaServerModel>(network,
                                              LlamaServerPaths::of(directories, programFolder));
}

} // namespace platform
