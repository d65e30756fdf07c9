// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <stdexcept>

namespace bench {

using Clock = std::chrono::steady_clock;

/// When the first and the last snapshot of a turn reached the main thread, from the request on.
struct TurnTimes {
    double firstWord = 0; // milliseconds
    double lastWord = 0;
    int snapshots = 0;

    double tokensPerSecond() const { return (snapshots - 1) / (lastWord - firstWord) * 1'000; }
};

/// The on-device model as the program uses it: replies are consumed on the main thread.
class Conversation {
public:
    explicit Conversation(const platform::LlamaServerPaths& paths,
                          QString instructions = QStringLiteral("Be kind."))
        : m_model(m_network, paths)
        , m_instructions(std::move(instructions)) {}

    /// The user begins to type, and types for so long.
    void type(std::chrono::milliseconds time) {
        begin();
        m_session->prewarm();
        QThread::msleep(static_cast<unsigned long>(time.count()));
    }

    /// One turn from the request to its end; the first one makes the session.
    TurnTimes turn(const QString& prompt, const platform::GenerationOptions& options = {}) {
        const Clock::time_point began = Clock::now();
        begin();
        TurnTimes times;
        bool hasEnded = false;
        m_scope.start(
            consume(m_session->streamResponse(prompt, options), &times, &hasEnded, began));
        while (!hasEnded)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (times.snapshots < 2)
            throw std::runtime_error("the model gave no reply");
        return times;
    }

private:
    void begin() {
        if (!m_session)
            m_session = m_model.makeSession(m_instructions);
    }

    static platform::Task<void> consume(platform::AsyncStream<platform::TextSnapshot> stream,
                                        TurnTimes* times, bool* hasEnded, Clock::time_point began) {
        try {
            while (co_await stream.next()) {
                const std::chrono::duration<double, std::milli> now = Clock::now() - began;
                if (times->snapshots++ == 0)
                    times->firstWord = now.count();
                times->lastWord = now.count();
            }
        } catch (const std::exception&) {
            times->snapshots = 0;
        }
        *hasEnded = true;
    }

    platform::MainExecutor m_executor;
    platform::NetworkThread m_network;
    platform::TaskScope m_scope{m_executor};
    platform::LlamaServerModel m_model;
    QString m_instructions;
    std::shared_ptr<platform::LanguageModelSession> m_session;
};

} // namespace bench
