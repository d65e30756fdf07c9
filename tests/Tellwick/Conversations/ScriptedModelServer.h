// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Backends/ModelManager.h"

#include <QHash>

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
        platform::StreamContinuation<platform::TextSnapshot> reply;

        void say(QStringView snapshot) const { reply.yield(platform::TextSnapshot(snapshot)); }
        void end() const { reply.finish(); }
        template <class Error>
        void fail(Error error) const {
            reply.finish(std::make_exception_ptr(std::move(error)));
        }
    };

    /// The catalogue's sources: this server, and a model of the platform.
    tellwick::ModelManager::Sources sources(platform::SystemLanguageModel& systemModel,
                                            platform::TaskScope& producers) {
        return {systemModel, producers,
                [this] { return holdsListings ? heldListing() : list(listed); },
                [this](const tellwick::OllamaModelEntry& entry) {
                    return std::make_shared<Backend>(*this, entry);
                }};
    }

    /// The names that the next listing gives.
    QStringList listed;
    /// Listings wait, each until the test answers it with answerListing().
    bool holdsListings = false;
    /// The listings asked for and not answered yet, in order.
    std::deque<platform::StreamContinuation<QStringList>> listings;
    /// Whether the models say that they can be used.
    bool areAvailable = false;
    /// The detail of each model; a model that is not in here has none.
    QHash<QString, QString> details;
    /// What the models have been asked, in order.
    std::deque<Request> requests;
    /// The names of the models whose backends were reset, in order.
    QStringList resets;
    /// What the next request throws in place of a stream.
    std::exception_ptr refusal;

    /// Answers a listing that waits, the oldest unless told.
    void answerListing(const QStringList& names, std::ptrdiff_t which = 0) {
        const auto listing = listings.begin() + which;
        listing->yield(names);
        listings.erase(listing);
    }

private:
    class Backend final : public tellwick::ModelBackend {
    public:
        Backend(ScriptedModelServer& server, const tellwick::OllamaModelEntry& entry)
            : m_server(server)
            , m_info(tellwick::ModelInfo::ollamaID(entry.name), entry.name,
                     tellwick::ModelSource::ollama) {
            if (const auto known = server.details.constFind(entry.name);
                known != server.details.cend())
                m_info.detail = *known;
        }

        const tellwick::ModelInfo& info() const override { return m_info; }
        bool isAvailable() const override { return m_server.areAvailable; }
        tellwick::ReplyStream streamResponse(const QString& prompt,
                                             const QList<tellwick::ChatMessage>& history,
                                             const QString& systemPrompt) override {
            if (const auto refusal = std::exchange(m_server.refusal, nullptr))
                std::rethrow_exception(refusal);
            auto [stream, continuation] = platform::makeStream<platform::TextSnapshot>();
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

    platform::Task<QList<tellwick::OllamaModelEntry>> heldListing() {
        auto [stream, continuation] = platform::makeStream<QStringList>();
        listings.push_back(continuation);
        return answered(std::move(stream));
    }

    static platform::Task<QList<tellwick::OllamaModelEntry>>
    answered(platform::AsyncStream<QStringList> answer) {
        const auto names = co_await answer.next();
        co_return co_await list(names.value_or(QStringList()));
    }
};

} // namespace tests
