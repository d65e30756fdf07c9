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

Script Script::reply(int status, const QByteArray& body, const QByteArray& contentType) {
    return Script().send(httpReply(status, body, contentType));
}

Script Script::streamed(QByteArray body) {
    return Script().head(200, {"Content-Type: application/x-ndjson"}).send(std::move(body));
}

ScriptedServer::Exchange::Exchange()
    : gate(eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)) {}

ScriptedServer::Exchange::~Exchange() {
    close(gate);
}

void ScriptedServer::enqueue(Script script) {
    const std::lock_guard lock(m_mutex);
    m_scripts.push_back(std::move(script));
}

void ScriptedServer::setFallback(Script script) {
    const std::lock_guard lock(m_mutex);
    m_fallback = std::move(script);
}

std::shared_ptr<ScriptedServer::Exchange> ScriptedServer::exchange(int index) const {
    const std::lock_guard lock(m_mutex);
    // Made on first use, so that a test may open a gate before the request has arrived.
    const auto at = static_cast<size_t>(index);
    while (m_exchanges.size() <= at)
        m_exchanges.push_back(std::make_shared<Exchange>());
    return m_exchanges[at];
}

void ScriptedServer::release(int request) {
    eventfd_write(exchange(request)->gate, 1);
}

int ScriptedServer::requestCount() const {
    const std::lock_guard lock(m_mutex);
    return m_requestCount;
}

RecordedRequest ScriptedServer::request(int index) const {
    const auto asked = exchange(index);
    const std::lock_guard lock(m_mutex);
    return asked->request;
}

void ScriptedServer::play(LoopbackConnection& connection) {
    std::shared_ptr<Exchange> exchange;
    Script script;
    {
        const std::lock_guard lock(m_mutex);
        const int index = m_requestCount++;
        exchange = this->exchange(index);
        exchange->request = connection.request();
        const auto at = static_cast<size_t>(index);
        script = at < m_scripts.size() ? m_scripts[at] : m_fallback;
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
