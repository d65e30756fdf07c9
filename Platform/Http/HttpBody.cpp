// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpBody.h"

#include "Platform/Concurrency/Errors.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/HttpResponseParser.h"

#include <QFile>

#include <boost/asio/buffer.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>

namespace platform {

namespace asio = boost::asio;
namespace beast = boost::beast;
using beast::error_code;
using Protocol = asio::generic::stream_protocol;
using Stream = beast::basic_stream<Protocol, asio::io_context::executor_type>;

/// The connection with what an operation on it needs for as long as it runs: an operation holds it,
/// so that the body and its tasks may go at any time.
struct HttpBody::Connection {
    Connection(asio::io_context& context, std::chrono::milliseconds wantedTimeout)
        : stream(context.get_executor())
        , idleTimeout(wantedTimeout) {}

    Stream stream;
    std::chrono::milliseconds idleTimeout;
    HttpResponseParser parser;
    std::exception_ptr fault; // thrown once all that came before it has been taken
    QByteArray outgoing;
    std::array<char, 64 * 1024> incoming;
};

namespace {

struct Outcome {
    error_code error;
    std::size_t count = 0;
};

/// `co_await` of one operation of the network library, which `Start` begins when it is called with
/// the completion handler. Cancelling the task closes the connection.
template <class Connection, class Start>
class Operation : public WaitingAwaiter {
public:
    Operation(std::shared_ptr<Connection> connection, Start start)
        : m_connection(std::move(connection))
        , m_start(std::move(start)) {}

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        m_connection->stream.expires_after(m_connection->idleTimeout);
        m_start([connection = m_connection, outcome = m_outcome,
                 waiter = makeWaiter(awaiting)](error_code error, std::size_t count = 0) {
            *outcome = {error, count};
            waiter->resume();
        });
        m_stop = awaiting.promise().context().stop;
        m_onCancel.emplace(m_stop, [connection = m_connection] {
            asio::post(connection->stream.get_executor(),
                       [connection] { connection->stream.close(); });
        });
    }
    Outcome await_resume() const {
        if (m_stop.stop_requested())
            throw CancellationError();
        return *m_outcome;
    }

private:
    std::shared_ptr<Connection> m_connection;
    Start m_start;
    std::shared_ptr<Outcome> m_outcome = std::make_shared<Outcome>();
    std::stop_token m_stop;
    std::optional<std::stop_callback<std::function<void()>>> m_onCancel;
};

QByteArray encode(const HttpEndpoint& endpoint, const HttpRequest& request) {
    const QByteArray host = endpoint.isUnixSocket()
                                ? QByteArray("localhost")
                                : "127.0.0.1:" + QByteArray::number(endpoint.port());
    QByteArray bytes = request.method + ' ' + request.target + " HTTP/1.1\r\nHost: " + host +
                       "\r\nConnection: close\r\n";
    for (const auto& [name, value] : request.headers)
        bytes += name + ": " + value + "\r\n";
    if (!request.body.isEmpty() || request.method == "POST")
        bytes += "Content-Length: " + QByteArray::number(request.body.size()) + "\r\n";
    return bytes + "\r\n" + request.body;
}

void throwIfFailed(const error_code& error, HttpError::Kind kind) {
    if (error == beast::error::timeout)
        throw HttpError(HttpError::Kind::TimedOut);
    if (error)
        throw HttpError(kind);
}

Protocol::endpoint address(const HttpEndpoint& endpoint) {
    if (!endpoint.isUnixSocket())
        return asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), endpoint.port());
    try {
        return asio::local::stream_protocol::endpoint(
            QFile::encodeName(endpoint.path()).toStdString());
    } catch (const boost::system::system_error&) { // longer than such a path may be
        throw HttpError(HttpError::Kind::CouldNotConnect);
    }
}

/// The library would open the socket so that a program which is started meanwhile inherits it, and
/// holds the connection open when this one has ended. Marked by the call that opens it, there is no
/// moment at which a fork on another thread could copy it unmarked. (The library's own descriptors,
/// of its epoll and its wake-up event, are opened in this way too.)
void open(Stream::socket_type& socket, const Protocol& protocol) {
    const int descriptor = ::socket(protocol.family(), SOCK_STREAM | SOCK_CLOEXEC, 0);
    error_code error = asio::error::no_descriptors;
    if (descriptor >= 0)
        socket.assign(protocol, descriptor, error);
    if (error && descriptor >= 0)
        ::close(descriptor);
    throwIfFailed(error, HttpError::Kind::CouldNotConnect);
}

} // namespace

HttpBody::HttpBody(std::shared_ptr<Connection> connection)
    : m_connection(std::move(connection)) {}

HttpBody::~HttpBody() {
    if (m_connection)
        m_connection->stream.close();
}

int HttpBody::status() const {
    return *m_connection->parser.status();
}

Task<HttpBody> HttpBody::open(NetworkThread& network, HttpEndpoint endpoint, HttpRequest request) {
    if (!network.scope().executor().isCurrent())
        qFatal("a request was made off the network thread");
    const auto connection = std::make_shared<Connection>(network.context(), request.idleTimeout);
    HttpBody body(connection);
    Stream& stream = connection->stream;
    const Protocol::endpoint to = address(endpoint);
    platform::open(stream.socket(), to.protocol());
    Operation connecting(connection,
                         [&](auto handler) { stream.async_connect(to, std::move(handler)); });
    throwIfFailed((co_await connecting).error, HttpError::Kind::CouldNotConnect);

    connection->outgoing = encode(endpoint, request);
    for (qsizetype sent = 0; sent < connection->outgoing.size();) {
        const asio::const_buffer rest(connection->outgoing.constData() + sent,
                                      static_cast<std::size_t>(connection->outgoing.size() - sent));
        Operation sending(connection,
                          [&](auto handler) { stream.async_write_some(rest, std::move(handler)); });
        const Outcome outcome = co_await sending;
        // A server that does not want the rest may have said why: the answer is looked for next.
        if (outcome.error && outcome.error != beast::error::timeout)
            break;
        throwIfFailed(outcome.error, HttpError::Kind::ConnectionLost);
        sent += static_cast<qsizetype>(outcome.count);
    }
    connection->outgoing.clear();

    while (!connection->parser.status())
        co_await body.receive();
    co_return std::move(body);
}

Task<void> HttpBody::receive() {
    Connection& connection = *m_connection;
    if (connection.fault)
        std::rethrow_exception(connection.fault);
    Operation receiving(m_connection, [&](auto handler) {
        connection.stream.async_read_some(asio::buffer(connection.incoming), std::move(handler));
    });
    const Outcome outcome = co_await receiving;
    try {
        connection.parser.append({connection.incoming.data(), qsizetype(outcome.count)});
        if (outcome.error == asio::error::eof)
            connection.parser.finish();
        else
            throwIfFailed(outcome.error, HttpError::Kind::ConnectionLost);
    } catch (const HttpError&) {
        connection.fault = std::current_exception();
    }
}

Task<QByteArray> HttpBody::nextBytes() {
    HttpResponseParser& parser = m_connection->parser;
    QByteArray bytes = parser.takeBody();
    while (bytes.isEmpty() && !parser.isComplete()) {
        co_await receive();
        bytes = parser.takeBody();
    }
    if (bytes.isEmpty())
        m_connection->stream.close();
    co_return bytes;
}

Task<std::optional<QByteArray>> HttpBody::nextLine() {
    while (!m_hasEnded && !m_lines.hasLine()) {
        if (m_lines.pendingBytes() > maximumLineLength)
            throw HttpError(HttpError::Kind::TooLarge);
        const QByteArray bytes = co_await nextBytes();
        m_hasEnded = bytes.isEmpty();
        m_hasEnded ? m_lines.finish() : m_lines.append(bytes);
    }
    co_return m_lines.takeLine();
}

} // namespace platform
