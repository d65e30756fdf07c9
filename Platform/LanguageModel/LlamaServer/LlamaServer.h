// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Desktop/Linux/PrivateFolder.h"
#include "Platform/Http/HttpClient.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerError.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"

#include <memory>

namespace platform {

class EngineProcess;

/// The engine of one run of the program: `llama-server` as a private child process behind a Unix
/// socket, started when it is first needed and again when it has ended.
///
/// Made on any thread; everything else happens on the network thread, and the child ends with that
/// thread. Tasks hold the object alive.
class LlamaServer : public std::enable_shared_from_this<LlamaServer> {
public:
    /// Touches nothing of the system.
    LlamaServer(NetworkThread& network, LlamaServerPaths paths, std::chrono::seconds idleTime);
    ~LlamaServer();

    /// The engine, able to answer; it is started where it is not running, and waited for while it
    /// loads. Throws LlamaServerError. Callers at the same time share one start and its outcome.
    Task<HttpClient> ready();

    /// After a connection to the engine broke off: gives its process the moment that it may take to
    /// end altogether, so that the next ready() knows.
    Task<void> settle();

    /// The engine has gone back to loading: the next ready() waits for it again.
    void expectLoading();

private:
    /// One start of the engine with the processes that it took; those who wait for it share it.
    struct Start {
        std::unique_ptr<EngineProcess> process;
        bool isReady = false;
        std::optional<LlamaServerError> failure;
    };

    std::shared_ptr<Start> currentStart();
    bool hasFolder();
    void launch(Start& start);
    void checkProcess(const std::shared_ptr<Start>& start);
    HttpClient client() const;

    NetworkThread& m_network;
    LlamaServerPaths m_paths;
    LlamaServerCommand m_command;
    std::optional<PrivateFolder> m_folder;
    UniqueFd m_folderLock;
    std::shared_ptr<Start> m_start;
};

} // namespace platform
