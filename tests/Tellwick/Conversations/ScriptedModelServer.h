// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Backends/ModelManager.h"

#include <deque>

namespace tests {

/// A local server with models that say what the test tells them to.
class ScriptedModelServer {
public:
    struct Request {
        QString model;
        QString prompt;
        QList<tellwick::ChatMessage> history;
        QString systemPrompt;
        platform::StreamContinuation<platform::Text> reply;

        void say(QStringView snapshot) const { reply.yield(platform::Text(snapshot)); }
        void end() const { reply.finish(); }
        template <class Error>
        void fail(Error error) const {
            reply.finish(std::make_exception_ptr(std::move(error)));
        }
    };

    tellwick::ModelManager::Server connect() {
        return {[this] { return list(listed); },
                [this](const tellwick::OllamaModelEntry& entry) {
                    return std::make_shared<Backend>(*this, entry);
                }};
    }

    /// The names that the next listing gives.
    QStringList listed;
    /// What the models have been asked, in order.
    std::deque<Request> requests;
    /// The names of the models whose backends were reset, in order.
    QStringList resets;
    /// What the next request throws in place of a stream.
    std::exception_ptr refusal;

private:
    class Backend final : public tellwick::ModelBackend {
    public:
        Backend(ScriptedModelServer& server, const tellwick::OllamaModelEntry& entry)
            : m_server(server)
            , m_info(tellwick::ModelInfo::ollamaID(entry.name), entry.name,
                     tellwick::ModelSource::ollama) {}

        const tellwick::ModelInfo& info() const override { return m_info; }
        bool isAvailable() const override { return false; } // nobody asks
        tellwick::ReplyStream streamResponse(const QString& prompt,
                                             const QList<tellwick::ChatMessage>& history,
                                             const QString& systemPrompt) override {
            if (const auto refusal = std::exchange(m_server.refusal, nullptr))
                std::rethrow_exception(refusal);
            auto [stream, continuation] = platform::makeStream<platform::Text>();
            m_server.requests.push_back(
                {m_info.name(), prompt, history, systemPrompt, continuation});
            return std::move(stream);
        }
        void reset() override { m_server.resets.append(m_info.name()); }

    private:
        ScriptedModelServer& m_server;
        tellwick::ModelInfo m_info;
    };

    static platform::Task<QList<tellwick::OllamaModelEntry>> list(QStringList names) {
        QList<tellwick::OllamaModelEntry> entries;
        for (const QString& name : names)
            entries.append({name, 1});
        co_return entries;
    }
};

} // namespace tests
