// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"

#include <QStringList>

#include <deque>

namespace tests {

class ScriptedError final : public platform::LocalizedError {
public:
    QString errorDescription() const override { return QStringLiteral("The model is tired."); }
};

/// One turn that a session has been asked for, and the end of the stream that the test speaks into.
struct AskedTurn {
    QString prompt;
    qsizetype session; ///< the number of the session, from 0
    platform::StreamContinuation<platform::TextSnapshot> reply;
    platform::GenerationOptions options;

    void say(QStringView snapshot) const { reply.yield(platform::TextSnapshot(snapshot)); }
    void end() const { reply.finish(); }
    void fail() const { reply.finish(std::make_exception_ptr(ScriptedError())); }
};

/// An on-device model that says what the test tells it to.
class ScriptedModel final : public platform::SystemLanguageModel {
public:
    Availability availability() const override {
        ++timesAsked;
        return state;
    }

    std::shared_ptr<platform::LanguageModelSession> makeSession(const QString& text) override {
        if (refusal)
            std::rethrow_exception(refusal);
        instructions.append(text);
        const auto session = std::make_shared<Session>(*this, instructions.size() - 1);
        latestSession = session;
        return session;
    }

    Availability state = Availability::available();
    mutable int timesAsked = 0;
    /// The instructions of the sessions, in the order in which they were made.
    QStringList instructions;
    /// The turns of all sessions, in order.
    std::deque<AskedTurn> turns;
    /// The session that was made last, as long as somebody holds it.
    std::weak_ptr<platform::LanguageModelSession> latestSession;
    /// The error with which sessions are not made and turns not begun.
    std::exception_ptr refusal;
    /// The sessions that were to get ready for a turn, by their numbers.
    QList<qsizetype> prewarmed;

private:
    class Session final : public platform::LanguageModelSession {
    public:
        Session(ScriptedModel& model, qsizetype number)
            : m_model(model)
            , m_number(number) {}

        void prewarm() override { m_model.prewarmed.append(m_number); }

        platform::AsyncStream<platform::TextSnapshot>
        streamResponse(const QString& prompt, const platform::GenerationOptions& options) override {
            if (m_model.refusal)
                std::rethrow_exception(m_model.refusal);
            auto [stream, continuation] = platform::makeStream<platform::TextSnapshot>();
            m_model.turns.push_back({prompt, m_number, continuation, options});
            return std::move(stream);
        }

    private:
        ScriptedModel& m_model;
        qsizetype m_number;
    };
};

} // namespace tests
