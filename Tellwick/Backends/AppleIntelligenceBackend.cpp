// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/AppleIntelligenceBackend.h"

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Produce.h"
#include "Platform/LanguageModel/LanguageModelSession.h"

#include <exception>

namespace tellwick {

namespace {

using ReplyContinuation = platform::StreamContinuation<platform::TextSnapshot>;

// Holds the session and the prompt, not the backend: a reset or the backend's end leaves it alone.
platform::Task<void> readReply(std::shared_ptr<platform::LanguageModelSession> session,
                               QString prompt, ReplyContinuation reply) {
    auto snapshots = session->streamResponse(prompt, platform::GenerationOptions());
    while (auto snapshot = co_await snapshots.next()) {
        if (co_await platform::isCancelled())
            break;
        reply.yield(std::move(*snapshot));
    }
}

} // namespace

AppleIntelligenceBackend::AppleIntelligenceBackend(platform::SystemLanguageModel& model,
                                                   platform::TaskScope& producers)
    : m_model(model)
    , m_producers(producers) {}

bool AppleIntelligenceBackend::isAvailable() const {
    return m_model.isAvailable();
}

std::optional<AppleIntelligenceBackend::UnavailableReason>
AppleIntelligenceBackend::unavailabilityReason() const {
    return m_model.availability().unavailableReason();
}

ReplyStream AppleIntelligenceBackend::streamResponse(const QString& prompt,
                                                     const QList<ChatMessage>&,
                                                     const QString& systemPrompt) {
    platform::requireMainThread("AppleIntelligenceBackend::streamResponse");
    return platform::produce<platform::TextSnapshot>(m_producers, [&](ReplyContinuation reply) {
        if (!m_session)
            m_session = m_model.makeSession(systemPrompt);
        return readReply(m_session, prompt, std::move(reply));
    });
}

void AppleIntelligenceBackend::prewarm(const QString& systemPrompt) {
    platform::requireMainThread("AppleIntelligenceBackend::prewarm");
    try {
        (m_session ? m_session : m_model.makeSession(systemPrompt))->prewarm();
    } catch (const std::exception&) {
        // The request will meet the same fault and tell it.
    }
}

void AppleIntelligenceBackend::reset() {
    platform::requireMainThread("AppleIntelligenceBackend::reset");
    m_session.reset();
}

} // namespace tellwick
