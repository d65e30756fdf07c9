// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace tests {

/// One HTTP request as a client sent it, byte for byte.
struct RecordedRequest {
    QByteArray method;
    QByteArray target;
    QByteArray head; ///< request line and header fields, with the empty line that ends them
    QByteArray body;

    /// The value of the first header field of that name (in any case), or a null array.
    QByteArray header(QByteArrayView name) const;
};

/// A whole reply of that status, its length given.
QByteArray httpReply(int status, const QByteArray& body,
                     const QByteArray& contentType = "application/json");

/// The server's end of one connection, handed to the handler after the request has been read.
/// Used on that connection's own thread only.
class LoopbackConnection {
public:
    LoopbackConnection(int socket, int stopEvent)
        : m_socket(socket)
        , m_stopEvent(stopEvent) {}

    const RecordedRequest& request() const { return m_request; }

    /// Sends all of the bytes. False when the client has gone or the server is being taken down.
    bool send(QByteArrayView bytes);

    /// Lets time pass, for a server that is watched by people. False as in send().
    bool pause(std::chrono::milliseconds duration);

    /// Waits until the event (an eventfd in semaphore mode) is raised, and takes one raise of it.
    /// False as in send().
    bool waitForEvent(int event);

    /// Says nothing until the client closes or the server is taken down.
    void holdUntilGone();

    /// Drops the connection so that the client sees a reset instead of an end.
    void reset();

    /// The client closed or reset the connection, as far as sending and waiting have noticed.
    bool clientClosed() const { return m_clientClosed; }

private:
    friend class LoopbackServer;
    enum class Wake { Ready, Timeout, Gone };
    Wake wait(int event, short socketEvents, int milliseconds);
    bool receive(QByteArray& bytes);
    bool readRequest();

    int m_socket;
    int m_stopEvent;
    bool m_clientClosed = false;
    bool m_reset = false;
    RecordedRequest m_request;
};

/// A small HTTP server for tests, on 127.0.0.1 or on a Unix socket: one request a connection, each
/// connection on a thread of its own, which runs the handler. Destroying it ends every handler that
/// sends or waits, and joins all threads.
class LoopbackServer {
public:
    using Handler = std::function<void(LoopbackConnection&)>;

    LoopbackServer() = default;
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// Listens on 127.0.0.1; port 0 picks a free one. False (see errorString()) when it is taken.
    bool listenOnPort(quint16 port, Handler handler);

    /// Listens on a Unix socket at that path.
    bool listenOnPath(const QString& path, Handler handler);

    /// Accepts no further connection, although clients can still connect: a server that hangs.
    void stopAccepting();

    /// Stops listening and ends all connections; may listen again afterwards.
    void stop();

    quint16 port() const { return m_port; }
    QString errorString() const { return m_error; }

private:
    bool start(int socket, const void* address, unsigned length, Handler handler);
    void acceptConnections();

    Handler m_handler;
    QString m_error;
    quint16 m_port = 0;
    int m_listener = -1;
    int m_stopEvent = -1;
    std::thread m_acceptThread;
    std::vector<std::thread> m_connectionThreads; // touched by the accepting thread until it ended
};

} // namespace tests
