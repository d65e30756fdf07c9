// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/LoopbackServer.h"

#include <QByteArrayList>

#include <atomic>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

namespace tests {

/// What the server does with one request, step by step. Without an end of its own (reset or hold)
/// a script ends by closing the connection.
class Script {
public:
    /// Sends these bytes at once, as they are.
    Script& send(QByteArray bytes);
    /// Sends a status line and header fields, and the empty line after them. Each field is a whole
    /// line without its line break.
    Script& head(int status, const QList<QByteArray>& fields = {});
    /// Sends the bytes as one chunk of a chunked body; no bytes: the end of such a body.
    Script& chunk(QByteArrayView bytes);
    /// Waits until the test lets it go on with ScriptedServer::release().
    Script& gate();
    /// Ends the connection by a reset. What the client has not read yet is lost to it.
    Script& reset();
    /// Says nothing more and keeps the connection until the client closes it.
    Script& hold();

    /// A whole reply of that status, its length given.
    static Script reply(int status, const QByteArray& body,
                        const QByteArray& contentType = "application/json");
    /// A reply of status 200 whose body ends with the connection.
    static Script streamed(QByteArray body);

private:
    friend class ScriptedServer;
    struct Gate {};
    struct Reset {};
    struct Hold {};
    std::vector<std::variant<QByteArray, Gate, Reset, Hold>> m_steps;
};

/// A loopback HTTP server that answers each request with the next script, in the order in which
/// requests arrive, and remembers what it was asked. Every function may be called from any thread.
class ScriptedServer {
public:
    /// Listens on 127.0.0.1, on a free port when none is given.
    bool listen(quint16 port = 0) {
        return m_server.listenOnPort(
            port, [this](LoopbackConnection& c) { play(c); });
    }
    /// Listens on a Unix socket at that path.
    bool listen(const QString& path) {
        return m_server.listenOnPath(
            path, [this](LoopbackConnection& c) { play(c); });
    }
    /// Takes the server down; every connection ends.
    void stop() { m_server.stop(); }

    quint16 port() const { return m_server.port(); }
    /// Why listen() failed.
    QString errorString() const { return m_server.errorString(); }

    /// The script of the next request that has none yet.
    void enqueue(Script script);
    /// The script of all requests beyond the enqueued ones; without it they get status 501.
    void setFallback(Script script);

    /// Opens the gate that this request's script waits at, or the next one that it comes to.
    void release(int request = 0);

    int requestCount() const;
    RecordedRequest request(int index = 0) const;
    /// The client closed the connection of that request before its script had ended.
    bool clientClosed(int index = 0) const { return exchange(index)->clientClosed; }
    /// How many gates that request's script has come to, opened or not.
    int gatesReached(int index = 0) const { return exchange(index)->gatesReached; }
    /// The script of that request has been played to its end, or the client has gone.
    bool isFinished(int index = 0) const { return exchange(index)->finished; }

private:
    struct Exchange {
        Exchange();
        ~Exchange();

        RecordedRequest request;
        int gate;
        std::atomic<int> gatesReached = 0;
        std::atomic<bool> clientClosed = false;
        std::atomic<bool> finished = false;
    };
    void play(LoopbackConnection& connection);
    std::shared_ptr<Exchange> exchange(int index) const;

    mutable std::recursive_mutex m_mutex;
    std::vector<Script> m_scripts; // one a request, in order
    Script m_fallback = Script::reply(501, "no script for this request", "text/plain");
    mutable std::vector<std::shared_ptr<Exchange>> m_exchanges; // by the order of requests
    int m_requestCount = 0;
    LoopbackServer m_server; // last: its threads end before the rest goes
};

} // namespace tests
