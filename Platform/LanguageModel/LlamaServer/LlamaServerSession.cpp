// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerSession.h"

#include "Platform/Http/HttpError.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"

namespace platform {

using Kind = LlamaServerError::Kind;

namespace {

// While it reads a long prompt on a slow machine the engine may say nothing. That it has ended
// shows at once, by the end of the connection.
constexpr std::chrono::minutes longestSilence{30};
constexpr int statusLoading = 503;

/// One attempt; no response when the engine went away under it.
Task<std::optional<HttpBody>> attempt(std::shared_ptr<LlamaServer> server, HttpRequest request) {
    const HttpClient client = co_await server->ready();
    try {
        co_return co_await client.bytes(request);
    } catch (const HttpError& error) {
        if (error.kind() == HttpError::Kind::TimedOut)
            throw LlamaServerError(Kind::NoAnswer);
    }
    co_return std::nullopt;
}

/// The response whose body is the reply. An engine that has gone since the last turn, or goes
/// before it says anything, is replaced once.
Task<HttpBody> request(std::shared_ptr<LlamaServer> server, QByteArray body) {
    HttpRequest request;
    request.method = "POST";
    request.target = "/v1/chat/completions";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = std::move(body);
    request.idleTimeout = longestSilence;
    bool wasReplaced = false;
    for (;;) {
        std::optional<HttpBody> response = co_await attempt(server, request);
        if (response && response->status() != statusLoading)
            co_return std::move(*response);
        if (response) {
            server->expectLoading();
        } else {
            if (std::exchange(wasReplaced, true))
                throw LlamaServerError(Kind::EngineStopped);
            co_await server->settle();
        }
    }
}

Task<QByteArray> wholeBody(HttpBody body) {
    QByteArray bytes;
    while (const auto line = co_await body.nextLine())
        bytes += *line;
    co_return bytes;
}

} // namespace

struct LlamaServerSession::Conversation {
    std::shared_ptr<LlamaServer> server;
    QString instructions;
    QList<AnsweredTurn> turns;
    bool isAnswering = false;
    std::optional<TurnTimings> lastTimings;
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
    auto [stream, continuation] = makeStream<TextSnapshot>();
    m_scope.start(answer(m_conversation, prompt, options, continuation));
    return std::move(stream);
}

std::optional<TurnTimings> LlamaServerSession::lastTimings() const {
    return m_conversation->lastTimings;
}

Task<void> LlamaServerSession::answer(std::shared_ptr<Conversation> conversation, QString prompt,
                                      GenerationOptions options,
                                      StreamContinuation<TextSnapshot> reply) {
    if (conversation->isAnswering) {
        reply.finish(std::make_exception_ptr(LlamaServerError(Kind::Busy)));
        co_return;
    }
    conversation->isAnswering = true;
    std::exception_ptr error;
    try {
        TextSnapshot text = co_await converse(conversation, prompt, options, reply);
        conversation->turns.append({prompt, std::move(text)});
    } catch (...) {
        error = std::current_exception();
    }
    // Before the stream ends: its consumer may ask again at once.
    conversation->isAnswering = false;
    reply.finish(error);
}

Task<TextSnapshot> LlamaServerSession::converse(std::shared_ptr<Conversation> conversation,
                                                QString prompt, GenerationOptions options,
                                                StreamContinuation<TextSnapshot> reply) {
    TextBuilder text;
    bool isComplete = false;
    try {
        HttpBody body = co_await request(
            conversation->server,
            chatRequestBody(conversation->instructions, conversation->turns, prompt, options));
        if (body.status() != 200)
            throw LlamaServerError(readChatFailure(co_await wholeBody(std::move(body))));
        while (const auto line = co_await body.nextLine()) {
            const ChatEvent event = readChatEvent(*line);
            if (event.failure)
                throw LlamaServerError(*event.failure);
            if (event.timings)
                conversation->lastTimings = event.timings;
            isComplete = isComplete || event.isComplete;
            if (event.content.isEmpty())
                continue;
            text.append(event.content);
            reply.yield(text.text());
        }
    } catch (const HttpError& error) {
        if (error.kind() == HttpError::Kind::TimedOut)
            throw LlamaServerError(Kind::NoAnswer);
        throw LlamaServerError(Kind::EngineStopped);
    }
    if (!isComplete)
        throw LlamaServerError(Kind::EngineStopped);
    co_return text.text();
}

} // namespace platform
