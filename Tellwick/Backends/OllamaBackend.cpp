// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaBackend.h"

#include "Platform/Concurrency/Produce.h"
#include "Tellwick/Backends/OllamaError.h"
#include "Tellwick/Backends/OllamaWire.h"

#include <array>
#include <charconv>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::HttpBody;
using platform::HttpClient;
using platform::HttpRequest;
using platform::HttpResponse;
using platform::StreamContinuation;
using platform::Task;
using platform::TextSnapshot;

namespace {

constexpr quint16 port = 11434;
constexpr int ok = 200;

/// The size in decimal gigabytes with one digit behind the full stop, whatever the locale; a tie is
/// rounded to the even digit.
QString sizeText(qint64 bytes) {
    std::array<char, 32> digits;
    const double gigabytes = static_cast<double>(bytes) / 1'000'000'000;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), gigabytes,
                                       std::chars_format::fixed, 1);
    return QString::fromLatin1(digits.data(), written.ptr - digits.data()) + u" GB"_s;
}

QList<OllamaMessage> messageList(const QString& prompt, const QList<ChatMessage>& history,
                                 const QString& systemPrompt) {
    QList<OllamaMessage> messages;
    messages.reserve(history.size() + 2);
    messages.append({u"system"_s, systemPrompt});
    for (const ChatMessage& message : history) {
        const bool isUser = message.role() == ChatMessage::Role::user;
        messages.append({isUser ? u"user"_s : u"assistant"_s, message.content.toString()});
    }
    messages.append({u"user"_s, prompt});
    return messages;
}

/// Yields the text so far after each line of the reply.
Task<void> readReply(HttpClient client, OllamaChatRequest chat,
                     std::chrono::milliseconds idleTimeout,
                     StreamContinuation<TextSnapshot> continuation) {
    HttpRequest request("/api/chat");
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = chat.toJson();
    request.idleTimeout = idleTimeout;
    HttpBody body = co_await client.bytes(std::move(request));
    if (body.status() != ok)
        throw OllamaError::badResponse(body.status());
    platform::TextBuilder reply;
    while (const auto line = co_await body.nextLine()) {
        if (line->isEmpty())
            continue;
        if (co_await platform::isCancelled())
            break;
        const OllamaChatChunk chunk = OllamaChatChunk::fromJson(*line);
        reply.append(chunk.message.content);
        continuation.yield(reply.text());
        if (chunk.done)
            break;
    }
}

Task<QList<OllamaModelEntry>> fetchModels(HttpClient client,
                                          std::chrono::milliseconds idleTimeout) {
    HttpRequest request("/api/tags");
    request.idleTimeout = idleTimeout;
    try {
        const HttpResponse response = co_await client.data(std::move(request));
        if (response.status == ok)
            co_return OllamaTagsResponse::fromJson(response.body).models;
    } catch (...) {
        // An empty list is the only sign of any failure.
    }
    co_return QList<OllamaModelEntry>();
}

} // namespace

platform::HttpEndpoint OllamaBackend::baseURL() {
    return platform::HttpEndpoint::loopback(port);
}

OllamaBackend::OllamaBackend(const OllamaModelEntry& entry, platform::NetworkThread& network,
                             std::chrono::milliseconds idleTimeout)
    : m_modelName(entry.name)
    , m_info(ModelInfo::ollamaID(entry.name), entry.name, ModelSource::ollama,
             sizeText(entry.size) + u" · Ollama"_s)
    , m_network(network)
    , m_idleTimeout(idleTimeout) {}

ReplyStream OllamaBackend::streamResponse(const QString& prompt, const QList<ChatMessage>& history,
                                          const QString& systemPrompt) {
    return platform::produce<TextSnapshot>(
        m_network.scope(),
        [&](auto continuation) {
            return readReply(
                HttpClient(m_network, baseURL()),
                OllamaChatRequest{m_modelName, messageList(prompt, history, systemPrompt)},
                m_idleTimeout, std::move(continuation));
        });
}

Task<QList<OllamaModelEntry>> OllamaBackend::discover(platform::NetworkThread& network,
                                                      std::chrono::milliseconds idleTimeout) {
    // All of it runs there: decoding a long list would hold up the window.
    co_return co_await platform::runOn(network.scope(),
                                       fetchModels(HttpClient(network, baseURL()), idleTimeout));
}

} // namespace tellwick
