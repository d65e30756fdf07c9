// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"

#include "Platform/Concurrency/Produce.h"
#include "Platform/Http/HttpError.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"

#include <QScopeGuard>

namespace platform {

using Kind = LlamaServerError::Kind;

struct LlamaServerSession::Conversation {
    std::shared_ptr<LlamaServer> server;
    QString instructions;
    QList<AnsweredTurn> turns;
    bool isAnswering = false;
};

LlamaServerSession::LlamaServerSession(std::shared_ptr<LlamaServer> server, TaskScope& scope,
                                       QString instructions)
    : m_scope(scope)
    , m_conversation(std::make_shared<Conversation>()) {
    m_conversation->server = std::move(server);
    m_conversation->instructions = std::move(instructions);
}

AsyncStream<TextSnapshot> LlamaServerSession::streamResponse(const QString& prompt,
                                                             const GenerationOptions& options) {
    return produce<TextSnapshot>(
        m_scope,
        [&](StreamContinuation<TextSnapshot> reply) {
            return answer(m_conversation, prompt, options, std::move(reply));
        });
}

Task<void> LlamaServerSession::answer(std::shared_ptr<Conversation> conversation, QString prompt,
                                      GenerationOptions options,
                                      StreamContinuation<TextSnapshot> reply) {
    if (conversation->isAnswering)
        throw LlamaServerError(Kind::Busy);
    conversation->isAnswering = true;
    // Over before the stream ends: its consumer may ask again at once.
    const auto whenOver = qScopeGuard([&] { conversation->isAnswering = false; });
    const std::shared_ptr<LlamaServer> server = conversation->server;
    const auto awaited = server->awaitWork();
    HttpBody body = co_await server->post(
        chatRequestBody(conversation->instructions, conversation->turns, prompt, options));
    TextBuilder text;
    bool isComplete = false;
    try {
        if (body.status() != 200) {
            QByteArray failure;
            while (const auto line = co_await body.nextLine())
                failure += *line;
            throw LlamaServerError(readChatFailure(failure));
        }
        while (const auto line = co_await body.nextLine()) {
            const ChatEvent event = readChatEvent(*line);
            if (event.failure)
                throw LlamaServerError(*event.failure);
            isComplete = isComplete || event.isComplete;
            if (event.content.isEmpty())
                continue;
            text.append(event.content);
            reply.yield(text.text());
        }
    } catch (const HttpError& error) {
        throw server->lost(error);
    }
    if (!isComplete)
        throw LlamaServerError(Kind::EngineStopped);
    conversation->turns.append({prompt, text.text()});
}

} // namespace platform
