// SPDX-License-Identifier: MIT
#include "tests/support/ScriptedServer.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace tests {

Script& Script::send(QByteArray bytes) {
    m_steps.emplace_back(std::move(bytes));
    return *this;
}

Script& Script::head(int status, const QList<QByteArray>& fields) {
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n";
    for (const QByteArray& field : fields)
        bytes += field + "\r\n";
    return send(bytes + "\r\n");
}

Script& Script::chunk(QByteArrayView bytes) {
    QByteArray framed = QByteArray::number(bytes.size(), 16) + "\r\n";
    framed.append(bytes);
    return send(framed + "\r\n");
}

Script& Script::gate() {
    m_steps.emplace_back(Gate());
    return *this;
}

Script& Script::reset() {
    m_steps.emplace_back(Reset());
    return *this;
}

Script& Script::hold() {
    m_steps.emplace_back(Hold());
    return *this;
}

Script Script::reply(int status, QByteArray body, QByteArray contentType) {
    Script script;
    script.head(status, {"Content-Type: " + contentType,
                         "Content-Length: " + QByteArray::number(body.size())});
    script.send(std::move(body));
    return script;
}

Script Script::streamed(QByteArray body) {
    Script script;
    script.head(200, {"Content-Type: application/x-ndjson"});
    script.send(std::move(body));
    return script;
}

struct ScriptedServer::Exchange {
    Exchange()
        : gate(eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)) {}
    ~Exchange() { close(gate); }

    RecordedRequest request;
    int gate;
    std::atomic<int> gatesReached = 0;
    std::atomic<bool> clientClosed = false;
    std::atomic<bool> finished = false;
};

ScriptedServer::ScriptedServer() = default;

ScriptedServer::~ScriptedServer() {
    m_server.stop();
}

bool ScriptedServer::listen(quint16 port) {
    return m_server.listenOnPort(
        port, [this](LoopbackConnection& c) { play(c); });
}

bool ScriptedServer::listen(const QString& path) {
    return m_server.listenOnPath(
        path, [this](LoopbackConnection& c) { play(c); });
}

void ScriptedServer::stop() {
    m_server.stop();
}

void ScriptedServer::enqueue(Script script) {
    const std::lock_guard lock(m_mutex);
    m_scripts.push_back(std::move(script));
}

void ScriptedServer::setFallback(Script script) {
    const std::lock_guard lock(m_mutex);
    m_fallback = std::make_unique<Script>(std::move(script));
}

std::shared_ptr<ScriptedServer::Exchange> ScriptedServer::exchange(int index) const {
    // Made on first use, so that a test may open a gate before the request has arrived.
    const auto at = static_cast<size_t>(index);
    while (m_exchanges.size() <= at)
        m_exchanges.push_back(std::make_shared<Exchange>());
    return m_exchanges[at];
}

void ScriptedServer::release(int request) {
    const std::lock_guard lock(m_mutex);
    eventfd_write(exchange(request)->gate, 1);
}

int ScriptedServer::requestCount() const {
    const std::lock_guard lock(m_mutex);
    return m_requestCount;
}

RecordedRequest ScriptedServer::request(int index) const {
    const std::lock_guard lock(m_mutex);
    return exchange(index)->request;
}

bool ScriptedServer::clientClosed(int index) const {
    const std::lock_guard lock(m_mutex);
    return exchange(index)->clientClosed;
}

int ScriptedServer::gatesReached(int index) const {
    const std::lock_guard lock(m_mutex);
    return exchange(index)->gatesReached;
}

bool ScriptedServer::isFinished(int index) const {
    const std::lock_guard lock(m_mutex);
    return exchange(index)->finished;
}

void ScriptedServer::play(LoopbackConnection& connection) {
    std::shared_ptr<Exchange> exchange;
    Script script = Script::reply(501, "no script for this request", "text/plain");
    {
        const std::lock_guard lock(m_mutex);
        const int index = m_requestCount++;
        exchange = this->exchange(index);
        exchange->request = connection.request();
        if (static_cast<size_t>(index) < m_scripts.size())
            script = m_scripts[static_cast<size_t>(index)];
        else if (m_fallback)
            script = *m_fallback;
    }
    bool going = true;
    for (const auto& step : script.m_steps) {
        if (const auto* bytes = std::get_if<QByteArray>(&step))
            going = connection.send(*bytes);
        else if (std::holds_alternative<Script::Gate>(step)) {
            ++exchange->gatesReached;
            going = connection.waitForEvent(exchange->gate);
        } else if (std::holds_alternative<Script::Reset>(step))
            connection.reset();
        else
            connection.holdUntilGone();
        if (!going)
            break;
    }
    exchange->clientClosed = connection.clientClosed();
    exchange->finished = true;
}

} // namespace tests
