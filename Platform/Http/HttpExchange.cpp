// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpExchange.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/HttpResponseParser.h"
#include "Platform/Http/NetworkThreadCore.h"

#include <QFile>

#include <boost/asio/buffer.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>

namespace platform {

namespace asio = boost::asio;
namespace beast = boost::beast;
using beast::error_code;
using Protocol = asio::generic::stream_protocol;
using Stream = beast::basic_stream<Protocol, asio::io_context::executor_type>;

/// The connection with what an operation on it needs for as long as it runs: an operation holds it,
/// so that the exchange and its tasks may go at any time.
struct HttpExchange::Connection {
    explicit Connection(asio::io_context& context)
        : stream(context.get_executor()) {}

    Stream stream;
    std::chrono::milliseconds idleTimeout{};
    HttpResponseParser parser;
    QByteArray outgoing;
    std::array<char, 64 * 1024> incoming;
};

namespace {

struct Outcome {
    error_code error;
    std::size_t count = 0;
};

/// `co_await` of one operation of the network library. `Start` is called with the completion
/// handler.
template <class Connection, class Start>
class Operation {
public:
    Operation(std::shared_ptr<Connection> connection, Start start)
        : m_connection(std::move(connection))
        , m_start(std::move(start)) {}
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() {
        m_onCancel.reset();
        if (m_state)
            m_state->waiter->detach();
    }

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) {
        const TaskContext& context = awaiting.promise().context();
        m_stop = context.stop;
        m_state = std::make_shared<State>();
        m_state->waiter = std::make_shared<Waiter>(*context.executor, awaiting);
        m_connection->stream.expires_after(m_connection->idleTimeout);
        m_start([connection = m_connection, state = m_state](error_code error, std::size_t count) {
            state->outcome = {error, count};
            state->waiter->resume();
        });
        m_onCancel.emplace(m_stop, Cancel{context.executor, m_connection});
    }

    Outcome await_resume() const {
        if (m_stop.stop_requested())
            throw CancellationError();
        return m_state->outcome;
    }

private:
    struct State {
        std::shared_ptr<Waiter> waiter;
        Outcome outcome;
    };
    struct Cancel {
        Executor* executor;
        std::weak_ptr<Connection> connection;
        void operator()() const {
            executor->post([weak = connection] {
                if (const auto alive = weak.lock())
                    alive->stream.close();
            });
        }
    };

    std::shared_ptr<Connection> m_connection;
    Start m_start;
    std::stop_token m_stop;
    std::shared_ptr<State> m_state;
    std::optional<std::stop_callback<Cancel>> m_onCancel;
};

QByteArray encode(const HttpEndpoint& endpoint, const HttpRequest& request) {
    QByteArray bytes = request.method + ' ' + request.target + " HTTP/1.1\r\n";
    bytes += "Host: " + endpoint.host() + "\r\nConnection: close\r\n";
    for (const auto& [name, value] : request.headers)
        bytes += name + ": " + value + "\r\n";
    if (!request.body.isEmpty() || request.method == "POST")
        bytes += "Content-Length: " + QByteArray::number(request.body.size()) + "\r\n";
    return bytes + "\r\n" + request.body;
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

void throwIfFailed(const error_code& error, HttpError::Kind kind) {
    if (error == beast::error::timeout)
        throw HttpError(HttpError::Kind::TimedOut);
    if (error)
        throw HttpError(kind);
}

} // namespace

HttpExchange::HttpExchange(NetworkThread::Core& network)
    : m_connection(std::make_shared<Connection>(network.context())) {}

HttpExchange::~HttpExchange() {
    close();
}

void HttpExchange::close() {
    m_connection->stream.close();
}

Task<HttpHead> HttpExchange::begin(HttpEndpoint endpoint, HttpRequest request) {
    m_connection->idleTimeout = request.idleTimeout;
    co_await connect(endpoint);
    co_await send(encode(endpoint, request));
    while (!m_connection->parser.head()) {
        if (m_fault)
            std::rethrow_exception(m_fault);
        co_await receive();
    }
    co_return *m_connection->parser.head();
}

Task<void> HttpExchange::connect(HttpEndpoint endpoint) {
    Connection* const connection = m_connection.get();
    Operation operation(m_connection, [connection, to = address(endpoint)](auto handler) {
        connection->stream.async_connect(
            to, [handler = std::move(handler)](error_code error) { handler(error, 0); });
    });
    const Outcome outcome = co_await operation;
    throwIfFailed(outcome.error, HttpError::Kind::CouldNotConnect);
}

Task<void> HttpExchange::send(QByteArray bytes) {
    Connection* const connection = m_connection.get();
    connection->outgoing = std::move(bytes);
    qsizetype sent = 0;
    while (sent < connection->outgoing.size()) {
        Operation operation(m_connection, [connection, sent](auto handler) {
            const QByteArray& all = connection->outgoing;
            connection->stream.async_write_some(
                asio::buffer(all.constData() + sent, static_cast<std::size_t>(all.size() - sent)),
                std::move(handler));
        });
        const Outcome outcome = co_await operation;
        // A server that does not want the rest may have said why: the answer is looked for next.
        if (outcome.error && outcome.error != beast::error::timeout)
            break;
        throwIfFailed(outcome.error, HttpError::Kind::ConnectionLost);
        sent += static_cast<qsizetype>(outcome.count);
    }
    connection->outgoing.clear();
}

Task<void> HttpExchange::receive() {
    Connection* const connection = m_connection.get();
    Operation operation(m_connection, [connection](auto handler) {
        connection->stream.async_read_some(asio::buffer(connection->incoming), std::move(handler));
    });
    const Outcome outcome = co_await operation;
    try {
        connection->parser.append({connection->incoming.data(), qsizetype(outcome.count)});
        if (outcome.error == asio::error::eof)
            connection->parser.finish();
        else
            throwIfFailed(outcome.error, HttpError::Kind::ConnectionLost);
    } catch (const HttpError&) {
        m_fault = std::current_exception();
    }
}

Task<QByteArray> HttpExchange::readBody() {
    HttpResponseParser& parser = m_connection->parser;
    QByteArray bytes = parser.takeBody();
    while (bytes.isEmpty() && !parser.isComplete()) {
        if (m_fault)
            std::rethrow_exception(m_fault);
        co_await receive();
        bytes = parser.takeBody();
    }
    if (bytes.isEmpty())
        close();
    co_return bytes;
}

} // namespace platform
