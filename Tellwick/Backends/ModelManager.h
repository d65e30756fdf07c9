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
/// lists that name. Main thread only; operations called on another one stop the program.
class ModelManager final {
public:
    using Backend = std::shared_ptr<ModelBackend>;

    /// Where models come from. All that it refers to outlives the manager and its backends.
    struct Sources {
        /// The platform's own model.
        platform::SystemLanguageModel& systemModel;
        /// Where replies are taken from the platform's model, on a thread of their own.
        platform::TaskScope& producers;
        /// Asks the local server for its list. Empty when there is no server, or no useful answer.
        std::function<platform::Task<QList<OllamaModelEntry>>()> discover;
        /// Makes the backend of a model that the local server has listed.
        std::function<Backend(const OllamaModelEntry&)> makeBackend;
    };

    /// Selects the on-device model and starts a first refresh.
    ///
    /// @param mainExecutor the main thread's; it outlives the manager. A refresh that is under way
    ///     when the manager ends goes with it.
    ModelManager(Sources sources, platform::Executor& mainExecutor);

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

    /// Starts to read the server's list again, and returns at once. The answer replaces the
    /// backends; the on-device model is selected where the selected one is gone. Refreshes may
    /// overlap; what the last to end has found stays.
    void startRefresh();

private:
    platform::Task<void> refresh();

    const Sources m_sources;
    platform::TaskScope m_tasks; // ends first: its tasks use everything above
};

} // namespace tellwick
