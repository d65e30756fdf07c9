// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "Tellwick/Core/ModelBackend.h"

#include <memory>
#include <optional>

namespace tellwick {

/// The model that the machine itself offers.
///
/// It keeps one session with the model, made with the first request, and every later request is a
/// further turn of it until reset(). The session knows the turns that it answered itself and no
/// others: neither the history handed in with a request nor a conversation restored at the start.
class AppleIntelligenceBackend final : public ModelBackend {
public:
    using UnavailableReason = platform::SystemLanguageModel::Availability::UnavailableReason;

    /// Touches neither of the two. Both outlive the backend.
    ///
    /// @param producers where replies are taken from the model, on a thread of their own.
    AppleIntelligenceBackend(platform::SystemLanguageModel& model, platform::TaskScope& producers);

    const ModelInfo& info() const override { return m_info; }

    /// The platform's present answer. Any thread.
    bool isAvailable() const override;

    /// Why the model cannot be used at present; none when it can. Any thread.
    std::optional<UnavailableReason> unavailabilityReason() const;

    /// Sends the prompt as the session's next turn. The history is not looked at; the system prompt
    /// counts only where this request makes the session. Any error of the platform ends the stream
    /// unchanged. Stops the program off the main thread.
    ReplyStream streamResponse(const QString& prompt, const QList<ChatMessage>& history,
                               const QString& systemPrompt) override;

    /// Lets the model get ready for the next request, which will come with that system prompt. It
    /// makes no session to keep: that is left to the request. Stops the program off the main
    /// thread.
    void prewarm(const QString& systemPrompt);

    /// Lets the session go. A reply that is under way keeps it and runs on. Stops the program off
    /// the main thread.
    void reset() override;

private:
    platform::SystemLanguageModel& m_model;
    platform::TaskScope& m_producers;
    std::shared_ptr<platform::LanguageModelSession> m_session; // main thread only
    ModelInfo m_info = ModelInfo::onDevice();
};

} // namespace tellwick
