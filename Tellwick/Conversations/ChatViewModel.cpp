// SPDX-License-Identifier: MIT
#include "Tellwick/Conversations/ChatViewModel.h"

#include "Platform/Concurrency/Errors.h"
#include "Platform/Concurrency/MainExecutor.h"

namespace tellwick {

using namespace Qt::StringLiterals;
using Role = ChatMessage::Role;

/// What a turn is begun with.
struct ChatViewModel::Turn {
    std::shared_ptr<ModelBackend> backend;
    QString prompt;
    QList<ChatMessage> history;
    qsizetype replyPosition;
    QUuid reply;
};

std::shared_ptr<ChatViewModel> ChatViewModel::create(
    platform::ModelContext& modelContext, const MakeModelManager& makeModelManager,
    const platform::SystemLanguageModel& systemModel, platform::TaskScope& mainScope) {
    return std::make_shared<ChatViewModel>(Private(), modelContext, makeModelManager, systemModel,
                                           mainScope);
}

ChatViewModel::ChatViewModel(Private, platform::ModelContext& modelContext,
                             const MakeModelManager& makeModelManager,
                             const platform::SystemLanguageModel& systemModel,
                             platform::TaskScope& mainScope)
    : modelManager(makeModelManager())
    , m_modelContext(modelContext)
    , m_systemModel(systemModel)
    , m_mainScope(mainScope) {
    loadSession();
}

ChatViewModel::~ChatViewModel() = default;

void ChatViewModel::send() {
    platform::requireMainThread("ChatViewModel::send");
    // QString takes the same characters for white space as Unicode does, line breaks included.
    const QString text = draft.value().trimmed();
    if (text.isEmpty() || isGenerating.value())
        return;
    if (const auto selected = modelManager->selected();
        selected && selected->info().source() == ModelSource::appleIntelligence) {
        if (const auto reason = m_systemModel.availability().unavailableReason()) {
            availabilityError = u"Apple Intelligence unavailable: "_s + platform::toText(*reason);
            return;
        }
    }
    auto backend = modelManager->selected();
    if (!backend) {
        availabilityError = u"No model selected."_s;
        return;
    }
    draft = QString();
    QList<ChatMessage> history = messages.value();
    const ChatMessage reply(Role::assistant, platform::TextSnapshot());
    qsizetype replyPosition = 0;
    messages.mutate([&](QList<ChatMessage>& list) {
        list.append(ChatMessage(Role::user, platform::TextSnapshot(text)));
    });
    messages.mutate([&](QList<ChatMessage>& list) {
        replyPosition = list.size();
        list.append(reply);
    });
    isGenerating = true;
    m_streamTask =
        m_mainScope.start(run(shared_from_this(), {std::move(backend), text, std::move(history),
                                                   replyPosition, reply.id()}));
}

platform::Task<void> ChatViewModel::run(std::shared_ptr<ChatViewModel> self, Turn turn) {
    std::exception_ptr error;
    try {
        auto stream =
            turn.backend->streamResponse(turn.prompt, turn.history, self->fullSystemPrompt());
        while (auto element = co_await stream.next()) {
            if (co_await platform::isCancelled())
                break;
            self->setReply(turn, *std::move(element));
        }
    } catch (...) {
        error = std::current_exception();
    }
    // Every way out of the turn comes by here, and only those: where the whole program ends in the
    // middle of a turn, nothing of the turn is written.
    self->endTurn(turn, error);
}

void ChatViewModel::setReply(const Turn& turn, platform::TextSnapshot content) {
    // The conversation may have been emptied since: a turn writes into its own reply or nowhere.
    const QList<ChatMessage>& list = messages.value();
    if (turn.replyPosition >= list.size() || list[turn.replyPosition].id() != turn.reply)
        return;
    messages.mutate([&](QList<ChatMessage>& changing) {
        changing[turn.replyPosition].content = std::move(content);
    });
}

void ChatViewModel::endTurn(const Turn& turn, const std::exception_ptr& error) {
    if (error && !platform::isCancellation(error)) {
        setReply(turn,
                 platform::TextSnapshot(u"Error: "_s + platform::localizedDescription(error)));
        turn.backend->reset();
    }
    // Whoever hears of the one finds the other done, too, and may begin the next turn at once.
    Qt::beginPropertyUpdateGroup();
    isGenerating = false;
    m_streamTask = std::nullopt;
    Qt::endPropertyUpdateGroup();
    saveSession();
}

void ChatViewModel::stop() {
    platform::requireMainThread("ChatViewModel::stop");
    if (auto task = m_streamTask.value())
        task->cancel();
}

void ChatViewModel::newChat() {
    platform::requireMainThread("ChatViewModel::newChat");
    stop();
    messages = QList<ChatMessage>();
    if (const auto session = m_currentSession.value()) {
        session->roles = QStringList();
        session->contents = QStringList();
        session->touch();
    }
    saveContext();
    resetSelected();
    availabilityError = std::nullopt;
    activeMode = std::nullopt;
}

void ChatViewModel::setMode(const AppConfig::WritingMode& mode) {
    platform::requireMainThread("ChatViewModel::setMode");
    if (!messages.value().isEmpty())
        return;
    const auto& active = activeMode.value();
    if (active && active->id() == mode.id())
        activeMode = std::nullopt;
    else
        activeMode = mode;
    resetSelected();
}

void ChatViewModel::clearMode() {
    platform::requireMainThread("ChatViewModel::clearMode");
    activeMode = std::nullopt;
    resetSelected();
}

QString ChatViewModel::fullSystemPrompt() const {
    return AppConfig::systemPrompt(activeMode.value());
}

void ChatViewModel::resetSelected() {
    if (const auto backend = modelManager->selected())
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
        m_modelContext.insert(m_currentSession.value());
        saveContext();
        return;
    }
    m_currentSession = sessions.takeFirst();
    messages = m_currentSession.value()->messages();
    for (const auto& older : sessions)
        m_modelContext.deleteRecord(older);
}

void ChatViewModel::saveSession() {
    platform::requireMainThread("ChatViewModel::saveSession");
    const auto session = m_currentSession.value();
    if (!session)
        return;
    session->setMessages(messages.value());
    session->touch();
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
