// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tests {

struct ScriptedConnection;

/// One HTTP request as a client sent it, byte for byte.
struct RecordedRequest {
    QByteArray method;
    QByteArray target;
    QByteArray head; ///< request line and header fields, with the empty line that ends them
    QByteArray body;

    /// The value of the first header field of that name (in any case), or a null array.
    QByteArray header(QByteArrayView name) const;
};

/// What the server does with one request, step by step. Without an end of its own (reset or hold)
/// a script ends by closing the connection.
class Script {
public:
    /// Sends these bytes at once, as they are.
    Script& send(const QByteArray& bytes);
    /// Sends a status line and header fields, and the empty line after them. Each field is a whole
    /// line without its line break.
    Script& head(int status, const QByteArrayList& fields = {});
    /// Sends the bytes as one chunk of a chunked body; no bytes: the end of such a body.
    Script& chunk(QByteArrayView bytes);
    /// Waits until the test lets it go on with ScriptedServer::release().
    Script& gate();
    Script& pause(std::chrono::milliseconds time);
    /// Calls the function on the server's thread.
    Script& call(const std::function<void()>& function);
    /// Ends the connection by a reset. What the client has not read yet is lost to it.
    Script& reset();
    /// Says nothing more and keeps the connection until the client closes it.
    Script& hold();

    /// A whole reply of that status, its length given.
    static Script reply(int status, const QByteArray& body,
                        const QByteArray& contentType = "application/json");
    /// A reply of status 200 whose body ends with the connection.
    static Script streamed(const QByteArray& body);

private:
    friend struct ScriptedConnection;
    using Next = std::function<void()>;
    using Step = std::function<void(ScriptedConnection&, const Next&)>;
    std::vector<Step> m_steps;
};

/// A loopback HTTP server, of one request a connection, that answers each request with the next
/// script, in the order in which requests arrive, and remembers what it was asked. Every function
/// may be called from any thread; the server has one of its own.
class ScriptedServer {
public:
    using Answer = std::function<Script(const RecordedRequest&)>;

    ScriptedServer();
    ~ScriptedServer();

    /// Listens on 127.0.0.1, on a free port when none is given.
    bool listen(quint16 port = 0);
    /// Listens on a Unix socket at that path.
    bool listen(const QString& path);
    /// Takes the server down; every connection ends.
    void stop();
    /// From here on does nothing, although clients can still connect.
    void hang();

    quint16 port() const { return m_port; }
    /// Why listen() failed.
    QString errorString() const { return m_error; }

    /// The script of the next request that has none yet.
    void enqueue(const Script& script);
    /// The script of all requests beyond the enqueued ones; without it they get status 501.
    void setFallback(const Script& script);
    /// The same, by what is asked; called on the server's thread.
    void setAnswer(const Answer& answer);

    /// Opens the gate that this request's script waits at, or the next one that it comes to.
    void release(int request = 0);

    int requestCount() const;
    RecordedRequest request(int index = 0) const;
    /// The client closed the connection of that request before its script had ended.
    bool clientClosed(int index = 0) const;
    /// How many gates that request's script has come to, opened or not.
    int gatesReached(int index = 0) const;
    /// The script of that request has been played to its end, or the client has gone.
    bool isFinished(int index = 0) const;

private:
    friend struct ScriptedConnection;
    struct Exchange;
    class Network;
    template <class Endpoint>
    bool listenAt(const Endpoint& endpoint);
    std::shared_ptr<Exchange> exchange(int index) const;
    std::shared_ptr<Exchange> begin(const RecordedRequest& request, Script& script);

    mutable std::recursive_mutex m_mutex;
    std::vector<Script> m_scripts; // one a request, in order
    Answer m_answer;
    mutable std::vector<std::shared_ptr<Exchange>> m_exchanges; // by the order of requests
    int m_requestCount = 0;
    quint16 m_port = 0;
    QString m_error;
    std::unique_ptr<Network> m_network; // last: its thread ends before the rest goes
};

} // namespace tests
