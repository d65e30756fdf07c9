// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/NetworkThread.h"

#include <QFileInfo>

#include <signal.h>

namespace platform {

using namespace std::chrono_literals;
using Kind = LlamaServerError::Kind;

namespace {

constexpr auto socketName = "engine.sock";
constexpr auto lockName = "engine.lock";

constexpr int statusOk = 200;
constexpr int statusLoading = 503;

// A small model is there in some 50 ms, a large one takes seconds.
constexpr std::chrono::milliseconds shortestWait{4};
constexpr std::chrono::milliseconds longestWait{100};
// What an engine with nothing to do may use of the processor between two looks.
constexpr quint64 idleWork = 1;
// A process closes its sockets a little before it has ended.
constexpr std::chrono::milliseconds longestEnd{500};

Task<bool> isHealthy(HttpClient client) {
    HttpRequest request("/health");
    try {
        const HttpResponse response = co_await client.data(request);
        co_return response.status == statusOk;
    } catch (const HttpError&) {
        co_return false; // not listening yet
    }
}

bool isCrash(int signal) {
    return signal != 0 && signal != SIGKILL && signal != SIGTERM;
}

/// Whether a process may have ended for a fault of the graphics card or its driver.
bool mayBeTheCards(int signal, const QByteArray& output) {
    return isCrash(signal) || output.toLower().contains("vulkan") || output.contains("vk::");
}

void endWork(const std::weak_ptr<std::stop_source>& work) {
    if (const auto underWay = work.lock())
        underWay->request_stop();
}

/// Why a process ended while it was loading, from what it said.
Kind reasonOfEnd(int signal, const QByteArray& output) {
    if (signal != 0 && !isCrash(signal))
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

LlamaServer::LlamaServer(NetworkThread& network, LlamaServerPaths paths, const EngineLimits& limits)
    : m_network(network)
    , m_paths(std::move(paths))
    , m_limits(limits)
    , m_command(limits.idleTime) {}

LlamaServer::~LlamaServer() {
    m_start.reset();
    if (m_folderLock)
        m_folder->remove(socketName);
}

LlamaServer::Work LlamaServer::beginAnswer() {
    endWork(m_reading);
    endWork(m_answer);
    auto answer = std::make_shared<std::stop_source>();
    m_answer = answer;
    return answer;
}

LlamaServer::Work LlamaServer::beginReading() {
    if (!m_answer.expired())
        return nullptr;
    endWork(m_reading);
    auto reading = std::make_shared<std::stop_source>();
    m_reading = reading;
    return reading;
}

Task<HttpClient> LlamaServer::ready() {
    const auto self = shared_from_this();
    const auto awaited = awaitWork();
    if (!m_start || m_start->failure) {
        m_start = std::make_shared<Start>();
        launch(*m_start);
    }
    const std::shared_ptr<Start> start = m_start;
    start->isReady = start->isReady && start->process->isRunning();
    auto wait = shortestWait;
    while (!start->isReady) {
        checkProcess(*start);
        if (start->failure)
            throw LlamaServerError(*start->failure);
        if (co_await isHealthy(client())) {
            start->isReady = start->wasReady = true;
            break;
        }
        co_await sleepFor(m_network, wait);
        wait = std::min(wait * 5 / 4, longestWait);
    }
    co_return client();
}

Task<HttpBody> LlamaServer::post(QByteArray body) {
    const auto self = shared_from_this();
    HttpRequest request("/v1/chat/completions");
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = std::move(body);
    request.idleTimeout = m_limits.longestSilence;
    bool wasReplaced = false;
    for (int refusals = 0; refusals < m_limits.maximumRefusals;) {
        const HttpClient client = co_await ready();
        std::optional<LlamaServerError> failure;
        try {
            HttpBody response = co_await client.bytes(request);
            if (response.status() != statusLoading)
                co_return response;
        } catch (const HttpError& error) {
            failure = lost(error);
        }
        if (!failure) {
            // It has gone back to loading.
            ++refusals;
            m_start->isReady = false;
            co_await sleepFor(m_network, m_limits.refusalPause);
        } else if (failure->kind() == Kind::EngineStopped && !std::exchange(wasReplaced, true)) {
            co_await settle();
        } else {
            throw LlamaServerError(*failure);
        }
    }
    throw LlamaServerError(Kind::NoAnswer);
}

LlamaServerError LlamaServer::lost(const HttpError& error) {
    if (error.kind() == HttpError::Kind::TimedOut && m_start)
        m_start->giveUp();
    return m_start && m_start->failure ? *m_start->failure : LlamaServerError(Kind::EngineStopped);
}

void LlamaServer::Start::giveUp() {
    if (failure)
        return;
    failure = LlamaServerError(Kind::EngineHung);
    process->kill();
}

std::shared_ptr<void> LlamaServer::awaitWork() {
    auto awaited = std::make_shared<bool>();
    m_network.scope().start(
        watch(m_network, m_limits.longestStandstill, weak_from_this(), awaited));
    return awaited;
}

Task<void> LlamaServer::watch(NetworkThread& network, std::chrono::milliseconds longestStandstill,
                              std::weak_ptr<LlamaServer> server, std::weak_ptr<void> awaited) {
    constexpr int looks = 4;
    quint64 work = 0;
    for (int unchanged = 0; unchanged < looks;) {
        co_await sleepFor(network, longestStandstill / looks);
        const auto watched = server.lock();
        const auto start = watched ? watched->m_start : nullptr;
        if (awaited.expired() || !start || start->failure)
            co_return;
        const quint64 now = start->process->workDone();
        unchanged = now - std::exchange(work, now) <= idleWork ? unchanged + 1 : 0;
        if (unchanged == looks)
            start->giveUp();
    }
}

/// Whether there is a folder for the socket, and nobody else's engine in it.
bool LlamaServer::hasFolder() {
    if (!m_folder)
        m_folder = PrivateFolder::open(m_paths.runtimeFolders);
    if (m_folder && !m_folderLock)
        m_folderLock = m_folder->takeLock(lockName);
    return static_cast<bool>(m_folderLock);
}

std::optional<LlamaServerError> LlamaServer::startProcess(std::unique_ptr<EngineProcess>& process) {
    const std::optional<QString> program = m_paths.program();
    const std::optional<QString> modelFile = m_paths.modelFile();
    if (!modelFile)
        return LlamaServerError(Kind::ModelMissing);
    const auto modelSize = static_cast<quint64>(QFileInfo(*modelFile).size());
    const std::optional<int> contextSize = contextSizeFor(modelSize, m_paths.memory());
    if (!contextSize)
        return LlamaServerError(Kind::OutOfMemory);
    if (program && hasFolder()) {
        m_folder->remove(socketName); // the engine does not take over one that is there
        process = EngineProcess::start(
            *program,
            m_command.arguments(*modelFile, m_folder->socketPath(socketName), *contextSize),
            m_command.environment());
    }
    m_contextSize = *contextSize;
    return process ? std::nullopt : std::optional(LlamaServerError(Kind::EngineUnusable));
}

void LlamaServer::launch(Start& start) {
    start = {};
    m_hasEngine = false;
    start.failure = startProcess(start.process);
    m_hasEngine = !start.failure;
}

/// Notices that the process has ended while it was loading, and starts it once more where it had
/// served before, wants other options, or may do without the graphics card.
void LlamaServer::checkProcess(Start& start) {
    while (!start.failure && !start.process->isRunning()) {
        const QByteArray output = start.process->output();
        const int signal = start.process->endSignal();
        const bool isAnotherCommand =
            (signal == 0 && m_command.adapt(output)) ||
            (mayBeTheCards(signal, output) && m_command.leaveOutTheCard());
        if (start.wasReady || isAnotherCommand)
            launch(start);
        else
            start.failure = LlamaServerError(reasonOfEnd(signal, output));
        m_hasEngine = !start.failure;
    }
}

/// After a connection to the engine broke off: gives its process the moment that it may take to end
/// altogether, so that the next ready() knows.
Task<void> LlamaServer::settle() {
    const std::shared_ptr<Start> start = m_start;
    for (auto waited = 0ms; waited < longestEnd; waited += shortestWait) {
        if (!start->process || !start->process->isRunning())
            co_return;
        co_await sleepFor(m_network, shortestWait);
    }
}

HttpClient LlamaServer::client() const {
    return {m_network, HttpEndpoint::unixSocket(m_folder->socketPath(socketName))};
}

} // namespace platform
