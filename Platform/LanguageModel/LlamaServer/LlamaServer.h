// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Desktop/PrivateFolder.h"
#include "Platform/Http/HttpClient.h"
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerError.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"

#include <atomic>
#include <memory>

namespace platform {

class HttpError;

/// How long the engine may take. The first token of a long prompt on a slow machine takes minutes,
/// as may the model's loading: what counts is whether the engine works.
struct EngineLimits {
    /// After this long without a request the engine gives its memory back; the next request makes
    /// it load the model again.
    std::chrono::seconds idleTime = std::chrono::minutes(5);
    /// An engine that is waited for and does nothing for so long hangs.
    std::chrono::milliseconds longestStandstill = std::chrono::minutes(2);
    /// An engine that works and says nothing for so long works in vain.
    std::chrono::milliseconds longestSilence = std::chrono::minutes(30);
    /// How often a ready engine may refuse one request, and the pause before it is asked again.
    int maximumRefusals = 50;
    std::chrono::milliseconds refusalPause = std::chrono::milliseconds(100);
};

/// The engine of one run of the program: `llama-server` as a private child process behind a Unix
/// socket, started when it is first needed and again when it has ended. One that hangs is ended;
/// one that crashes on the graphics card is started again without it.
///
/// It does one thing at a time: the answer to a prompt, or reading ahead what the next one will
/// build on.
///
/// Made on any thread; everything else happens on the network thread. Tasks hold the object alive;
/// with the last of them and its owner it goes, on whatever thread, and takes the child with it.
class LlamaServer : public std::enable_shared_from_this<LlamaServer> {
public:
    /// Touches nothing of the system.
    LlamaServer(NetworkThread& network, LlamaServerPaths paths, const EngineLimits& limits);
    ~LlamaServer();

    using Work = std::shared_ptr<std::stop_source>;

    /// An answer begins, and what has been under way ends. The new one ends with its stop source;
    /// whoever works on it holds that until then.
    Work beginAnswer();
    /// Reading ahead begins, and with it ends earlier reading. None while there is an answer under
    /// way, which goes on.
    Work beginReading();

    /// The engine, able to answer; it is started where it is not running, and waited for while it
    /// loads. Throws LlamaServerError. Callers at the same time share one start and its outcome.
    Task<HttpClient> ready();

    /// The response to a request for a reply, from an engine that has loaded. One that has gone
    /// since the last request, or goes before it answers, is replaced once. Throws
    /// LlamaServerError.
    Task<HttpBody> post(QByteArray body);

    /// The error to show where the connection to the engine failed in the middle of a reply. An
    /// engine that was silent for too long is ended, so that the next request gets another.
    LlamaServerError lost(const HttpError& error);

    /// The room for one conversation in the engine that was started last, in tokens.
    int contextSize() const { return m_contextSize; }

    /// Whether there is an engine, and the model has its memory. Any thread.
    bool hasEngine() const { return m_hasEngine; }

    /// As long as the result lives somebody waits for the engine: one that stands still meanwhile
    /// is ended.
    std::shared_ptr<void> awaitWork();

private:
    /// One start of the engine with the processes that it took; those who wait for it share it.
    struct Start {
        std::unique_ptr<EngineProcess> process;
        bool isReady = false;
        bool wasReady = false; ///< the process has been ready, though it may be loading again
        std::optional<LlamaServerError> failure;

        /// The engine hangs: ends it, and with it every connection.
        void giveUp();
    };

    static Task<void> watch(NetworkThread& network, std::chrono::milliseconds longestStandstill,
                            std::weak_ptr<LlamaServer> server, std::weak_ptr<void> awaited);
    bool hasFolder();
    std::optional<LlamaServerError> startProcess(std::unique_ptr<EngineProcess>& process);
    void launch(Start& start);
    void checkProcess(Start& start);
    Task<void> settle();
    HttpClient client() const;

    NetworkThread& m_network;
    LlamaServerPaths m_paths;
    EngineLimits m_limits;
    LlamaServerCommand m_command;
    std::optional<PrivateFolder> m_folder;
    UniqueFd m_folderLock;
    std::shared_ptr<Start> m_start;
    int m_contextSize = 0;
    std::atomic<bool> m_hasEngine = false;
    std::weak_ptr<std::stop_source> m_answer;
    std::weak_ptr<std::stop_source> m_reading;
};

} // namespace platform
