// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"

#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

namespace {

/// Gets the engine going while the first prompt is still on its way. What goes wrong shows there.
Task<void> warmUp(std::shared_ptr<LlamaServer> server) {
    try {
        (void)co_await server->ready();
    } catch (const LlamaServerError&) {
    }
}

} // namespace

LlamaServerModel::LlamaServerModel(NetworkThread& network, LlamaServerPaths paths,
                                   const EngineLimits& limits)
    : m_scope(network.scope())
    , m_paths(std::move(paths))
    , m_server(std::make_shared<LlamaServer>(network, m_paths, limits)) {}

SystemLanguageModel::Availability LlamaServerModel::availability() const {
    return m_paths.availability();
}

std::shared_ptr<LanguageModelSession> LlamaServerModel::makeSession(const QString& instructions) {
    m_scope.start(warmUp(m_server));
    return std::make_shared<LlamaServerSession>(m_server, m_scope, instructions);
}

std::unique_ptr<SystemLanguageModel> makeSystemLanguageModel(NetworkThread& network,
                                                             const UserDirectories& directories,
                                                             const QString& programFolder) {
    return std::make_unique<LlamaServerModel>(network,
                                              LlamaServerPaths::of(directories, programFolder));
}

} // namespace platform
