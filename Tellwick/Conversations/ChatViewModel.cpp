// SPDX-License-Identifier: MIT
#include "Tellwick/Conversations/ChatViewModel.h"

#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Observation/Observer.h"

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::TextSnapshot;
using Role = ChatMessage::Role;

/// What a turn is begun with.
struct ChatViewModel::Turn {
    std::shared_ptr<ModelBackend> backend;
    QString prompt;
    QList<ChatMessage> history;
    qsizetype replyPosition;
    QUuid reply;
};

ChatViewModel::ChatViewModel(platform::ModelContext& modelContext,
                             const ModelManager::Sources& models, platform::Executor& mainExecutor)
    : modelManager(models, mainExecutor)
    , m_modelContext(modelContext)
    , m_tasks(mainExecutor) {
    loadSession();
    platform::observe(&m_observers, [this] { prewarm(); });
}

/// Where the user has begun to type, or what is typed will go elsewhere than it would have: lets
/// the on-device model get ready meanwhile. A server looks after its own models.
void ChatViewModel::prewarm() {
    if (draft.value().isEmpty()) {
        m_destination.reset();
        return;
    }
    const Destination destination{modelManager.selectedID.value(),
                                  AppConfig::systemPrompt(activeMode.value())};
    if (m_destination == destination)
        return;
    m_destination = destination;
    const auto& backend = modelManager.aiBackend;
    if (backend->info().id() == destination.modelID && backend->isAvailable())
        backend->prewarm(destination.systemPrompt);
}

void ChatViewModel::send() {
    platform::requireMainThread("ChatViewModel::send");
    // QString takes the same characters for white space as Unicode does, line breaks included.
    const QString text = draft.value().trimmed();
    if (text.isEmpty() || isGenerating.value())
        return;
    const auto backend = modelManager.selected();
    if (!backend) {
        availabilityError = u"No model selected."_s;
        return;
    }
    if (backend->info().source() == ModelSource::appleIntelligence) {
        if (const auto reason = modelManager.aiBackend->unavailabilityReason()) {
            availabilityError = u"Apple Intelligence unavailable: "_s + platform::toText(*reason);
            return;
        }
    }

    draft = QString();
    const QList<ChatMessage> history = messages.value();
    const ChatMessage reply(Role::assistant, TextSnapshot());
    messages.mutate([&](auto& list) { list.append(ChatMessage(Role::user, TextSnapshot(text))); });
    const qsizetype replyPosition = messages.value().size();
    messages.mutate([&](auto& list) { list.append(reply); });
    isGenerating = true;
    m_streamTask = m_tasks.start(run({backend, text, history, replyPosition, reply.id()}));
}

platform::Task<void> ChatViewModel::run(Turn turn) {
    std::exception_ptr error;
    try {
        const QString systemPrompt = AppConfig::systemPrompt(activeMode.value());
        auto stream = turn.backend->streamResponse(turn.prompt, turn.history, systemPrompt);
        while (auto element = co_await stream.next()) {
            if (co_await platform::isCancelled())
                break;
            setReply(turn, *std::move(element));
        }
    } catch (const platform::CancellationError&) {
        // What there is of the reply stays.
    } catch (...) {
        error = std::current_exception();
    }

    if (error) {
        setReply(turn, TextSnapshot(u"Error: "_s + platform::localizedDescription(error)));
        turn.backend->reset();
    }
    // Whoever is told that the turn has ended may begin the next one at once.
    m_streamTask.reset();
    isGenerating = false;
    saveSession();
}

void ChatViewModel::setReply(const Turn& turn, TextSnapshot content) {
    // The conversation may have been emptied since: a turn writes into its own reply or nowhere.
    const QList<ChatMessage>& list = messages.value();
    if (turn.replyPosition >= list.size() || list[turn.replyPosition].id() != turn.reply)
        return;
    messages.mutate(
        [&](auto& changing) { changing[turn.replyPosition].content = std::move(content); });
}

void ChatViewModel::stop() {
    platform::requireMainThread("ChatViewModel::stop");
    if (m_streamTask)
        m_streamTask->cancel();
}

void ChatViewModel::newChat() {
    platform::requireMainThread("ChatViewModel::newChat");
    stop();
    messages = QList<ChatMessage>();
    saveSession();
    resetSelectedBackend();
    availabilityError = std::nullopt;
    activeMode = std::nullopt;
}

void ChatViewModel::setMode(const AppConfig::WritingMode& mode) {
    platform::requireMainThread("ChatViewModel::setMode");
    if (!messages.value().isEmpty())
        return;
    activeMode = activeMode.value() == mode ? std::nullopt : std::optional(mode);
    resetSelectedBackend();
}

void ChatViewModel::clearMode() {
    platform::requireMainThread("ChatViewModel::clearMode");
    activeMode = std::nullopt;
    resetSelectedBackend();
}

void ChatViewModel::resetSelectedBackend() {
    if (const auto backend = modelManager.selected())
        backend->reset();
}

void ChatViewModel::loadSession() {
    platform::requireMainThread("ChatViewModel::loadSession");
    QList<std::shared_ptr<ChatSession>> sessions;
    try {
        sessions = m_modelContext.fetch(ChatSession::newestFirst());
    } catch (const std::exception&) {
        return; // the run goes on without a record, and overwrites nothing
    }
    if (sessions.isEmpty()) {
        m_currentSession = std::make_shared<ChatSession>();
        m_modelContext.insert(m_currentSession);
        saveContext();
        return;
    }
    m_currentSession = sessions.takeFirst();
    messages = m_currentSession->messages();
    for (const auto& older : sessions)
        m_modelContext.deleteRecord(older);
}

void ChatViewModel::saveSession() {
    platform::requireMainThread("ChatViewModel::saveSession");
    if (!m_currentSession)
        return;
    m_currentSession->setMessages(messages.value());
    m_currentSession->touch();
    saveContext();
}

void ChatViewModel::saveContext() {
    try {
        m_modelContext.save();
    } catch (const std::exception&) {
        // The conversation goes on; the context keeps the changes and tries again.
    }
}

} // namespace tellwick
