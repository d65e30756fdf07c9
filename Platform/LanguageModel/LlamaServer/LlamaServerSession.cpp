// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"

#include "Platform/Concurrency/Produce.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Json/Json.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"
#include "Platform/LanguageModel/LlamaServer/Transcript.h"

namespace platform {

using Kind = LlamaServerError::Kind;

struct LlamaServerSession::Conversation {
    std::shared_ptr<LlamaServer> server;
    Transcript transcript;
};

/// A turn that is being answered.
struct LlamaServerSession::Turn {
    AnsweredTurn soFar() const { return {prompt, text.text()}; }

    QString prompt;
    GenerationOptions options;
    StreamContinuation<TextSnapshot> reply;
    TextBuilder text{};
};

/// How one request for a turn ended. Where it met the end of the context: the sizes of the two in
/// tokens, as far as they are known.
struct LlamaServerSession::End {
    bool isFull = false;
    qint64 tokens = 0;
    qint64 contextSize = 0;
};

LlamaServerSession::LlamaServerSession(std::shared_ptr<LlamaServer> server, TaskScope& scope,
                                       QString instructions)
    : m_scope(scope)
    , m_conversation(std::make_shared<Conversation>(
          Conversation{std::move(server), Transcript(std::move(instructions))})) {}

void LlamaServerSession::prewarm() {
    m_scope.start(readAhead(m_conversation));
}

AsyncStream<TextSnapshot> LlamaServerSession::streamResponse(const QString& prompt,
                                                             const GenerationOptions& options) {
    return produce<TextSnapshot>(
        m_scope,
        [&](StreamContinuation<TextSnapshot> reply) {
            return answer(m_conversation,
                          std::make_shared<Turn>(Turn{prompt, options, std::move(reply)}));
        });
}

Task<void> LlamaServerSession::answer(std::shared_ptr<Conversation> conversation,
                                      std::shared_ptr<Turn> turn) {
    const LlamaServer::Work work = conversation->server->beginAnswer();
    const auto remember = [&] { conversation->transcript.append(turn->soFar()); };
    // At once, when the next answer begins: it builds on this one.
    const std::stop_callback onNext(work->get_token(), remember);
    co_await say(conversation, turn).until(work->get_token());
    remember();
}

Task<void> LlamaServerSession::say(std::shared_ptr<Conversation> conversation,
                                   std::shared_ptr<Turn> turn) {
    const auto awaited = conversation->server->awaitWork();
    for (;;) {
        const End end = co_await ask(conversation, turn);
        if (!end.isFull)
            co_return;
        if (conversation->transcript.hasTurns())
            conversation->transcript.letGo(turn->soFar(), end.tokens, end.contextSize);
        else if (turn->text.text().isEmpty())
            throw LlamaServerError(Kind::PromptTooLong);
        else
            co_return; // the reply alone fills the context
    }
}

/// Asks for the reply to a turn, or for the rest of it.
Task<LlamaServerSession::End> LlamaServerSession::ask(std::shared_ptr<Conversation> conversation,
                                                      std::shared_ptr<Turn> turn) {
    const std::shared_ptr<LlamaServer> server = conversation->server;
    const bool canLetGo = conversation->transcript.hasTurns();
    HttpBody body =
        co_await server->post(conversation->transcript.request(turn->soFar(), turn->options));
    const qint64 contextSize = server->contextSize();
    // A reply wants room: while there are turns that can go for it, much.
    const qint64 longestRequest = canLetGo ? contextSize * 3 / 4 : contextSize * 15 / 16;
    const auto endOf = [contextSize](const ChatFailure& failure) {
        if (failure.kind != Kind::PromptTooLong)
            throw LlamaServerError(failure.kind);
        return End{true, failure.tokens, failure.contextSize ? failure.contextSize : contextSize};
    };
    try {
        if (body.status() != 200) {
            QByteArray failure;
            while (const auto line = co_await body.nextLine())
                failure += *line;
            co_return endOf(readChatFailure(failure));
        }
        std::optional<End> end;
        while (const auto line = co_await body.nextLine()) {
            const ChatEvent event = readChatEvent(*line);
            if (event.failure)
                co_return endOf(*event.failure);
            if (event.requestTokens && *event.requestTokens > longestRequest)
                co_return End{true, *event.requestTokens, contextSize};
            if (event.isComplete)
                end = End{.isFull = event.isCutOff && !turn->options.maximumResponseTokens};
            if (event.content.isEmpty())
                continue;
            turn->text.append(event.content);
            turn->reply.yield(turn->text.text());
        }
        if (!end)
            throw LlamaServerError(Kind::EngineStopped);
        co_return *end;
    } catch (const HttpError& error) {
        throw server->lost(error);
    }
}

/// Lets the engine read what the next turn begins with. What goes wrong shows there.
Task<void> LlamaServerSession::readAhead(std::shared_ptr<Conversation> conversation) {
    const std::shared_ptr<LlamaServer> server = conversation->server;
    const LlamaServer::Work work = server->beginReading();
    if (!work)
        co_return; // it is warm
    const auto awaited = server->awaitWork();
    GenerationOptions options;
    options.maximumResponseTokens = 1;
    try {
        HttpBody body = co_await server->post(conversation->transcript.request({}, options))
                            .until(work->get_token());
        while (co_await body.nextLine().until(work->get_token())) {
        }
    } catch (const LlamaServerError&) {
    } catch (const HttpError&) {
    }
}

} // namespace platform
