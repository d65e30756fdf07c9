// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/ModelManager.h"

#include "Platform/Concurrency/MainExecutor.h"
#include "Tellwick/Core/AppConfig.h"

#include <QScopeGuard>

#include <algorithm>

namespace tellwick {

std::shared_ptr<ModelManager>
ModelManager::create(std::shared_ptr<AppleIntelligenceBackend> aiBackend, Server server,
                     platform::TaskScope& mainScope) {
    auto manager = std::make_shared<ModelManager>(Private(), std::move(aiBackend),
                                                  std::move(server), mainScope);
    manager->startRefresh();
    return manager;
}

ModelManager::ModelManager(Private, std::shared_ptr<AppleIntelligenceBackend> onDevice,
                           Server server, platform::TaskScope& mainScope)
    : aiBackend(std::move(onDevice))
    , selectedID(aiBackend->info().id())
    , m_server(std::move(server))
    , m_mainScope(mainScope) {}

QList<ModelManager::Backend> ModelManager::backends() const {
    return QList<Backend>{aiBackend} + ollamaBackends.value();
}

ModelManager::Backend ModelManager::selected() const {
    const auto all = backends();
    const auto found = std::find_if(all.begin(), all.end(), [this](const Backend& backend) {
        return backend->info().id() == selectedID.value();
    });
    return found == all.end() ? nullptr : *found;
}

QString ModelManager::selectedSubtitle() const {
    const Backend backend = selected();
    return (backend ? backend->info().detail : std::nullopt).value_or(AppConfig::modelLabel());
}

void ModelManager::select(const Backend& backend) {
    selectedID = backend->info().id();
}

platform::Task<void> ModelManager::refresh() {
    return refresh(shared_from_this());
}

void ModelManager::startRefresh() {
    m_mainScope.start(refresh());
}

platform::Task<void> ModelManager::refresh(std::shared_ptr<ModelManager> self) {
    platform::requireMainThread("ModelManager::refresh");
    self->isRefreshing = true;
    const auto end = qScopeGuard([self] { self->isRefreshing = false; });

    const QList<OllamaModelEntry> entries = co_await self->m_server.discover();
    QList<Backend> fresh;
    fresh.reserve(entries.size());
    for (const OllamaModelEntry& entry : entries)
        fresh.append(self->m_server.makeBackend(entry));
    self->ollamaBackends = std::move(fresh);
    if (!self->selected())
        self->select(self->aiBackend);
}

} // namespace tellwick
