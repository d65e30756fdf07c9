// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/SleepFor.h"
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"

#include <signal.h>

namespace platform {

using namespace std::chrono_literals;
using Kind = LlamaServerError::Kind;

namespace {

constexpr auto socketName = "engine.sock";
constexpr auto lockName = "engine.lock";

// A small model is there in some 50 ms, a large one takes seconds.
constexpr std::chrono::milliseconds shortestWait{4};
constexpr std::chrono::milliseconds longestWait{100};
// A process closes its sockets a little before it has ended.
constexpr std::chrono::milliseconds longestEnd{500};

Task<bool> isHealthy(HttpClient client) {
    HttpRequest request;
    request.target = "/health";
    try {
        const HttpResponse response = co_await client.data(request);
        co_return response.status() == 200;
    } catch (const HttpError&) {
        co_return false; // not listening yet
    }
}

/// Why a process ended while it was loading, from what it said.
Kind reasonOfEnd(int signal, const QByteArray& output) {
    if (signal == SIGKILL || signal == SIGTERM)
        return Kind::EngineStopped;
    if (output.contains("failed to allocate") || output.contains("unable to allocate") ||
        output.contains("out of memory"))
        return Kind::OutOfMemory;
    // A file that makes no sense beyond its first checks makes the engine fall over.
    if (signal != 0 || output.contains("load model"))
        return Kind::ModelDamaged;
    return Kind::EngineUnusable;
}

} // namespace

LlamaServer::LlamaServer(NetworkThread& network, LlamaServerPaths paths,
                         std::chrono::seconds idleTime)
    : m_network(network)
    , m_paths(std::move(paths))
    , m_command(contextSizeFor(m_paths.machineMemory), idleTime) {}

LlamaServer::~LlamaServer() {
    m_start.reset();
    if (m_folderLock)
        m_folder->remove(socketName);
}

Task<HttpClient> LlamaServer::ready() {
    const auto self = shared_from_this();
    const std::shared_ptr<Start> start = currentStart();
    auto wait = shortestWait;
    while (!start->isReady) {
        checkProcess(start);
        if (start->failure)
            throw LlamaServerError(*start->failure);
        if (co_await isHealthy(client())) {
            start->isReady = true;
            break;
        }
        co_await sleepFor(m_network, wait);
        wait = std::min(wait * 5 / 4, longestWait);
    }
    co_return client();
}

std::shared_ptr<LlamaServer::Start> LlamaServer::currentStart() {
    const bool hasEnded = m_start && m_start->isReady && !m_start->process->isRunning();
    if (!m_start || hasEnded) {
        m_start = std::make_shared<Start>();
        launch(*m_start);
    }
    return m_start;
}

/// Whether there is a folder for the socket, and nobody else's engine in it.
bool LlamaServer::hasFolder() {
    if (!m_folder)
        m_folder = PrivateFolder::open(m_paths.runtimeFolders);
    if (m_folder && !m_folderLock)
        m_folderLock = m_folder->takeLock(lockName);
    return static_cast<bool>(m_folderLock);
}

void LlamaServer::launch(Start& start) {
    start.process.reset();
    const std::optional<QString> program = m_paths.program();
    const std::optional<QString> modelFile = m_paths.modelFile();
    if (!modelFile) {
        start.failure = LlamaServerError(Kind::ModelMissing);
    } else if (program && hasFolder()) {
        m_folder->remove(socketName); // the engine does not take over one that is there
        start.process = EngineProcess::start(
            *program, m_command.arguments(*modelFile, m_folder->socketPath(socketName)),
            LlamaServerCommand::environment());
    }
    if (!start.process && !start.failure)
        start.failure = LlamaServerError(Kind::EngineUnusable);
}

/// Notices that the process has ended while it was loading, and starts it once more with other
/// options where that was the reason. The next ready() begins anew after a failure.
void LlamaServer::checkProcess(const std::shared_ptr<Start>& start) {
    while (!start->failure && !start->process->isRunning()) {
        const QByteArray output = start->process->output();
        const int signal = start->process->endSignal();
        if (signal == 0 && m_command.adapt(output))
            launch(*start);
        else
            start->failure = LlamaServerError(reasonOfEnd(signal, output));
    }
    if (start->failure && m_start == start)
        m_start.reset();
}

Task<void> LlamaServer::settle() {
    const auto self = shared_from_this();
    const std::shared_ptr<Start> start = m_start;
    for (auto waited = 0ms; waited < longestEnd; waited += shortestWait) {
        if (!start || !start->process || !start->process->isRunning())
            co_return;
        co_await sleepFor(m_network, shortestWait);
    }
}

void LlamaServer::expectLoading() {
    if (m_start)
        m_start->isReady = false;
}

HttpClient LlamaServer::client() const {
    return {m_network, HttpEndpoint::unixSocket(m_folder->socketPath(socketName))};
}

} // namespace platform
