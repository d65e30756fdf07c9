// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/ModelManager.h"

#include "Platform/Concurrency/MainExecutor.h"
#include "Tellwick/Core/AppConfig.h"

#include <QScopeGuard>

namespace tellwick {

ModelManager::ModelManager(Sources sources, platform::Executor& mainExecutor)
    : aiBackend(std::make_shared<AppleIntelligenceBackend>(sources.systemModel, sources.producers))
    , selectedID(aiBackend->info().id())
    , m_sources(std::move(sources))
    , m_tasks(mainExecutor) {
    startRefresh();
}

QList<ModelManager::Backend> ModelManager::backends() const {
    return QList<Backend>{aiBackend} + ollamaBackends.value();
}

ModelManager::Backend ModelManager::selected() const {
    for (const Backend& backend : backends())
        if (backend->info().id() == selectedID.value())
            return backend;
    return nullptr;
}

QString ModelManager::selectedSubtitle() const {
    const Backend backend = selected();
    return (backend ? backend->info().detail : std::nullopt).value_or(AppConfig::modelLabel());
}

void ModelManager::select(const Backend& backend) {
    platform::requireMainThread("ModelManager::select");
    selectedID = backend->info().id();
}

void ModelManager::startRefresh() {
    m_tasks.start(refresh());
}

platform::Task<void> ModelManager::refresh() {
    platform::requireMainThread("ModelManager::refresh");
    isRefreshing = true;
    const auto end = qScopeGuard([this] { isRefreshing = false; });

    const QList<OllamaModelEntry> entries = co_await m_sources.discover();
    QList<Backend> fresh;
    for (const OllamaModelEntry& entry : entries)
        fresh.append(m_sources.makeBackend(entry));
    ollamaBackends = std::move(fresh);
    if (!selected())
        select(aiBackend);
}

} // namespace tellwick
