// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpClient.h"
#include "Tellwick/Backends/OllamaModelEntry.h"
#include "Tellwick/Core/ModelBackend.h"

#include <chrono>

namespace tellwick {

/// One model of the Ollama server on this machine.
///
/// It keeps nothing of the conversation: each request is a POST of its own that carries all of it,
/// and a reply under way does not need the backend any more. Several may run at the same time.
class OllamaBackend final : public ModelBackend {
public:
    /// Where the server listens. No other host is ever contacted.
    static platform::HttpEndpoint baseURL();

    /// How long the server may be silent within a reply. Loading a model may take most of it.
    static constexpr std::chrono::milliseconds idleTimeout = std::chrono::seconds(120);

    /// How long the server may be silent when it is asked for its models.
    static constexpr std::chrono::milliseconds listingIdleTimeout = std::chrono::seconds(60);

    /// Contacts nothing. Replies run on the network thread and end with it.
    OllamaBackend(const OllamaModelEntry& entry, platform::NetworkThread& network,
                  std::chrono::milliseconds idleTimeout = OllamaBackend::idleTimeout);

    const ModelInfo& info() const override { return m_info; }

    /// Always true: the server listed the model, and one that has gone since shows up as an error
    /// of the next reply.
    bool isAvailable() const override { return true; }

    /// Sends the system prompt, the history and the prompt. The stream ends with the transport's
    /// error, the reading error of a line, or OllamaError::badResponse. Any thread.
    ReplyStream streamResponse(const QString& prompt, const QList<ChatMessage>& history,
                               const QString& systemPrompt) override;

    /// Does nothing: there is nothing to forget.
    void reset() override {}

    /// The models that the server lists, in its order; an empty list when there is no server, or
    /// its answer is of no use. Does not fail. May be awaited on any executor.
    static platform::Task<QList<OllamaModelEntry>>
    discover(platform::NetworkThread& network,
             std::chrono::milliseconds idleTimeout = listingIdleTimeout);

private:
    QString m_modelName;
    ModelInfo m_info;
    platform::NetworkThread& m_network;
    std::chrono::milliseconds m_idleTimeout;
};

} // namespace tellwick
