// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/Observation/Observed.h"
#include "Platform/Store/ModelContext.h"
#include "Tellwick/Backends/ModelManager.h"
#include "Tellwick/Conversations/ChatSession.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Core/ChatMessage.h"

#include <QObject>

#include <memory>
#include <optional>

namespace tellwick {

/// The controller of the one conversation: it holds the messages and the text being typed, sends
/// turns to the selected model, and keeps the conversation's record in the store in step.
///
/// Main thread only; operations called on another one stop the program.
class ChatViewModel final {
public:
    /// Makes the catalogue of models and loads the conversation from the store.
    ///
    /// @param modelContext the store's; it outlives the controller.
    /// @param models where the catalogue takes its models from.
    /// @param mainExecutor the main thread's; it outlives the controller. A turn that is under way
    ///     when the controller ends goes with it, and nothing of it is stored.
    ChatViewModel(platform::ModelContext& modelContext, const ModelManager::Sources& models,
                  platform::Executor& mainExecutor);

    // Observed state.

    /// The conversation. While a turn runs, its reply is the message that was last when it began.
    platform::ObservedOnAssignment<QList<ChatMessage>> messages;
    /// What the user is typing.
    platform::Observed<QString> draft;
    /// Whether a turn runs.
    platform::Observed<bool> isGenerating{false};
    /// Why the last turn was refused, for an alert; whoever shows it clears it.
    platform::Observed<std::optional<QString>> availabilityError;
    /// The chosen writing task.
    platform::ObservedOnAssignment<std::optional<AppConfig::WritingMode>> activeMode;

    /// The catalogue of models and the selection.
    ModelManager modelManager;

    /// Begins a turn with the trimmed draft. Does nothing when that is empty or a turn runs; sets
    /// `availabilityError`, and keeps the draft, when there is no model to send it to.
    void send();

    /// Asks the running turn to end; what there is of the reply stays.
    void stop();

    /// Ends the turn, empties the conversation and its record; the draft stays.
    void newChat();

    /// Chooses a writing mode, or none when it is the active one. Only before the first message.
    void setMode(const AppConfig::WritingMode& mode);

    /// Goes back to no writing mode, at any time.
    void clearMode();

private:
    struct Turn;
    /// What the next turn will be begun with.
    struct Destination {
        QString modelID;
        QString systemPrompt;
        friend bool operator==(const Destination&, const Destination&) = default;
    };

    void prewarm();
    platform::Task<void> run(Turn turn);
    void setReply(const Turn& turn, platform::TextSnapshot content);
    void resetSelectedBackend();
    void loadSession();
    void saveSession();
    void saveContext();

    platform::ModelContext& m_modelContext;
    /// The conversation's record; none where the store could not be read.
    std::shared_ptr<ChatSession> m_currentSession;
    /// The running turn.
    std::optional<platform::TaskHandle> m_streamTask;
    /// Where the text that is being typed will go, as far as that is known already.
    std::optional<Destination> m_destination;
    QObject m_observers;
    platform::TaskScope m_tasks; // ends first: its tasks use everything above
};

} // namespace tellwick
