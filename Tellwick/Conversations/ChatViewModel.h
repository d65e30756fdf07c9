// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "Platform/Observation/Observed.h"
#include "Platform/Store/ModelContext.h"
#include "Tellwick/Backends/ModelManager.h"
#include "Tellwick/Conversations/ChatSession.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Core/ChatMessage.h"

#include <functional>
#include <memory>
#include <optional>

namespace tellwick {

/// The controller of the one conversation: it holds the messages and the text being typed, sends
/// turns to the selected model, and keeps the conversation's record in the store in step.
///
/// Held by std::shared_ptr: a turn keeps its controller until it ends. Main thread only; operations
/// called on another one stop the program.
class ChatViewModel final : public std::enable_shared_from_this<ChatViewModel> {
    struct Private {};

public:
    using MakeModelManager = std::function<std::shared_ptr<ModelManager>()>;

    /// Makes the controller and, with the function, its model manager, and loads the conversation
    /// from the store. The context, the model and the scope outlive the controller; the scope
    /// belongs to the main thread, and the turns run there.
    static std::shared_ptr<ChatViewModel> create(platform::ModelContext& modelContext,
                                                 const MakeModelManager& makeModelManager,
                                                 const platform::SystemLanguageModel& systemModel,
                                                 platform::TaskScope& mainScope);

    ChatViewModel(Private, platform::ModelContext& modelContext,
                  const MakeModelManager& makeModelManager,
                  const platform::SystemLanguageModel& systemModel, platform::TaskScope& mainScope);
    ChatViewModel(const ChatViewModel&) = delete;
    ChatViewModel& operator=(const ChatViewModel&) = delete;
    ~ChatViewModel();

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

    /// The catalogue of models and the selection; the same object for the controller's whole life.
    const std::shared_ptr<ModelManager> modelManager;

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

    static platform::Task<void> run(std::shared_ptr<ChatViewModel> self, Turn turn);
    void setReply(const Turn& turn, platform::TextSnapshot content);
    void endTurn(const Turn& turn, const std::exception_ptr& error);
    QString fullSystemPrompt() const;
    void resetSelected();
    void loadSession();
    void saveSession();
    void saveContext();

    platform::Observed<std::optional<platform::TaskHandle>> m_streamTask;
    platform::ModelContext& m_modelContext;
    platform::Observed<std::shared_ptr<ChatSession>> m_currentSession;
    const platform::SystemLanguageModel& m_systemModel;
    platform::TaskScope& m_mainScope;
};

} // namespace tellwick
