// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/Observation/Observed.h"
#include "Tellwick/Backends/AppleIntelligenceBackend.h"
#include "Tellwick/Backends/OllamaModelEntry.h"

#include <QList>

#include <functional>

namespace tellwick {

/// The catalogue of the models that the user can chat with, and the current choice among them.
///
/// The on-device model always exists and comes first; behind it stand the models that the local
/// server listed at the last refresh. A model is known by its identifier, never by its backend
/// object: a refresh makes new backends, and a selection survives it wherever the server still
/// lists that name. Main thread only.
class ModelManager final : public std::enable_shared_from_this<ModelManager> {
    struct Private {};

public:
    using Backend = std::shared_ptr<ModelBackend>;

    /// The local server as the manager needs it.
    struct Server {
        /// Asks for the list of models. Cannot fail: it is empty when the server cannot be reached.
        std::function<platform::Task<QList<OllamaModelEntry>>()> discover;
        std::function<Backend(const OllamaModelEntry&)> makeBackend;
    };

    /// Makes the manager with the on-device model selected, and starts a first refresh by itself.
    /// The scope belongs to the main thread and outlives the manager.
    static std::shared_ptr<ModelManager> create(std::shared_ptr<AppleIntelligenceBackend> aiBackend,
                                                Server server, platform::TaskScope& mainScope);

    ModelManager(Private, std::shared_ptr<AppleIntelligenceBackend> aiBackend, Server server,
                 platform::TaskScope& mainScope);

    /// The on-device model; the same object for the manager's whole life.
    const std::shared_ptr<AppleIntelligenceBackend> aiBackend;

    // Observed state.

    /// One backend for each model of the local server, in the server's order.
    platform::ObservedOnAssignment<QList<Backend>> ollamaBackends;
    /// The identifier of the selected model.
    platform::Observed<QString> selectedID;
    /// True from the start of a refresh to the end of the first that ends.
    platform::Observed<bool> isRefreshing{false};

    // Derived; reading them registers the reader with the state they are made from.

    /// The on-device model, then those of the local server.
    QList<Backend> backends() const;
    /// The first backend with the selected identifier, or none.
    Backend selected() const;
    /// The detail of the selected model, for the window's subtitle.
    QString selectedSubtitle() const;

    /// Selects a backend, whether or not it is available or in the catalogue.
    void select(const Backend& backend);

    /// Reads the server's list again, replaces the backends, and selects the on-device model where
    /// the selected one is gone. Refreshes may overlap; what the last to end has found stays. The
    /// task keeps the manager alive.
    platform::Task<void> refresh();

    /// Starts a refresh and returns at once.
    void startRefresh();

private:
    static platform::Task<void> refresh(std::shared_ptr<ModelManager> self);

    const Server m_server;
    platform::TaskScope& m_mainScope;
};

} // namespace tellwick
