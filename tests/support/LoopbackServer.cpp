// SPDX-License-Identifier: MIT
#include "tests/support/LoopbackServer.h"

#include <QFile>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>

namespace tests {

QByteArray RecordedRequest::header(QByteArrayView name) const {
    const QByteArray wanted = name.toByteArray().toLower() + ':';
    for (const QByteArray& line : head.split('\n'))
        if (line.toLower().startsWith(wanted))
            return line.mid(wanted.size()).trimmed();
    return {};
}

QByteArray httpReply(int status, const QByteArray& body, const QByteArray& contentType) {
    return "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\nContent-Type: " + contentType +
           "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

LoopbackConnection::Wake LoopbackConnection::wait(int event, short socketEvents, int milliseconds) {
    while (!m_clientClosed && !m_reset) {
        pollfd watched[] = {{m_stopEvent, POLLIN, 0},
                            {m_socket, static_cast<short>(socketEvents | POLLIN), 0},
                            {event, POLLIN, 0}};
        const int count = poll(watched, 3, milliseconds);
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            return Wake::Timeout;
        if (count < 0 || watched[0].revents != 0)
            return Wake::Gone;
        if ((watched[2].revents & POLLIN) != 0 || (watched[1].revents & socketEvents) != 0)
            return Wake::Ready;
        QByteArray ignored;
        if (watched[1].revents != 0)
            receive(ignored);
    }
    return Wake::Gone;
}

/// Appends what has come; false when the client sends no more.
bool LoopbackConnection::receive(QByteArray& bytes) {
    char buffer[65536];
    const ssize_t count = recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT);
    if (count > 0)
        bytes.append(buffer, count);
    else if (count == 0 || (errno != EAGAIN && errno != EINTR))
        m_clientClosed = true;
    return !m_clientClosed;
}

bool LoopbackConnection::send(QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        if (wait(-1, POLLOUT, -1) != Wake::Ready)
            return false;
        const ssize_t count = ::send(m_socket, bytes.data(), static_cast<size_t>(bytes.size()),
                                     MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0)
            bytes = bytes.sliced(count);
        else if (errno != EAGAIN && errno != EINTR)
            m_clientClosed = true;
    }
    return true;
}

bool LoopbackConnection::pause(std::chrono::milliseconds duration) {
    return wait(-1, 0, static_cast<int>(duration.count())) == Wake::Timeout;
}

bool LoopbackConnection::waitForEvent(int event) {
    if (wait(event, 0, -1) != Wake::Ready)
        return false;
    eventfd_t taken = 0;
    return eventfd_read(event, &taken) == 0;
}

void LoopbackConnection::holdUntilGone() {
    wait(-1, 0, -1);
}

void LoopbackConnection::reset() {
    const linger discard = {1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &discard, sizeof discard);
    m_reset = true;
}

bool LoopbackConnection::readRequest() {
    const auto readMore = [this](QByteArray& bytes) {
        return wait(-1, POLLIN, -1) == Wake::Ready && receive(bytes);
    };
    while (!m_request.head.contains("\r\n\r\n"))
        if (!readMore(m_request.head))
            return false;
    const qsizetype headSize = m_request.head.indexOf("\r\n\r\n") + 4;
    m_request.body = m_request.head.mid(headSize);
    m_request.head.truncate(headSize);
    while (m_request.body.size() < m_request.header("content-length").toLongLong())
        if (!readMore(m_request.body))
            return false;
    const QList<QByteArray> words = m_request.head.left(m_request.head.indexOf('\r')).split(' ');
    m_request.method = words.value(0);
    m_request.target = words.value(1);
    return true;
}

LoopbackServer::~LoopbackServer() {
    stop();
}

bool LoopbackServer::listenOnPort(quint16 port, Handler handler) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (!start(listener, &address, sizeof address, std::move(handler)))
        return false;
    socklen_t length = sizeof address;
    getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length);
    m_port = ntohs(address.sin_port);
    return true;
}

bool LoopbackServer::listenOnPath(const QString& path, Handler handler) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray encoded = QFile::encodeName(path);
    if (static_cast<size_t>(encoded.size()) >= sizeof address.sun_path)
        qFatal("the path of the socket is too long");
    std::copy(encoded.begin(), encoded.end(), address.sun_path);
    unlink(encoded.constData());
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return start(listener, &address, sizeof address, std::move(handler));
}

bool LoopbackServer::start(int socket, const void* address, unsigned length, Handler handler) {
    stop();
    if (bind(socket, static_cast<const sockaddr*>(address), length) != 0 ||
        listen(socket, SOMAXCONN) != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        close(socket);
        return false;
    }
    m_listener = socket;
    m_stopEvent = eventfd(0, EFD_CLOEXEC);
    m_handler = std::move(handler);
    m_acceptThread = std::thread([this] { acceptConnections(); });
    return true;
}

void LoopbackServer::stopAccepting() {
    eventfd_write(m_stopEvent, 1);
    if (m_acceptThread.joinable())
        m_acceptThread.join();
}

void LoopbackServer::stop() {
    if (m_listener < 0)
        return;
    stopAccepting();
    for (std::thread& thread : m_connectionThreads)
        thread.join();
    m_connectionThreads.clear();
    close(m_listener);
    close(m_stopEvent);
    m_listener = -1;
    m_stopEvent = -1;
}

void LoopbackServer::acceptConnections() {
    while (true) {
        pollfd watched[] = {{m_stopEvent, POLLIN, 0}, {m_listener, POLLIN, 0}};
        if (poll(watched, 2, -1) < 0 && errno == EINTR)
            continue;
        if (watched[0].revents != 0)
            return;
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        m_connectionThreads.emplace_back([this, socket] {
            LoopbackConnection connection(socket, m_stopEvent);
            if (connection.readRequest())
                m_handler(connection);
            close(socket);
        });
    }
}

} // namespace tests
