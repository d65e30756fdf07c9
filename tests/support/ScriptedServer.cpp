// SPDX-License-Identifier: MIT
#include "tests/support/ScriptedServer.h"

#include <QFile>

#include <boost/asio.hpp>
#include <fcntl.h>

#include <array>
#include <atomic>
#include <thread>

namespace tests {

namespace asio = boost::asio;
using asio::generic::stream_protocol;
using boost::system::error_code;
using Next = std::function<void()>;

/// A request and what has come of it.
struct ScriptedServer::Exchange {
    RecordedRequest request; // the server's mutex is held
    std::atomic<int> gatesReached = 0;
    std::atomic<bool> clientClosed = false;
    std::atomic<bool> finished = false;

    // On the server's thread.
    int openGates = 0;
    Next waiting; ///< what comes behind the gate that the script waits at

    void passGate() {
        if (!waiting || openGates == 0)
            return;
        --openGates;
        std::exchange(waiting, nullptr)();
    }
};

/// A connection from its request to the end of its script; kept alive by what it waits for. On the
/// server's thread.
struct ScriptedConnection : std::enable_shared_from_this<ScriptedConnection> {
    ScriptedConnection(ScriptedServer& wanted, stream_protocol::socket accepted)
        : server(wanted)
        , socket(std::move(accepted)) {}

    void readHead() {
        asio::async_read_until(
            socket, asio::dynamic_buffer(input), "\r\n\r\n",
            [self = shared_from_this()](error_code error, size_t size) {
                if (!error)
                    self->readBody(size);
            });
    }

    void readBody(size_t headSize) {
        RecordedRequest request;
        request.head = QByteArray::fromStdString(input.substr(0, headSize));
        const QByteArrayList words = request.head.left(request.head.indexOf('\r')).split(' ');
        request.method = words.value(0);
        request.target = words.value(1);
        const size_t size = headSize + request.header("content-length").toULongLong();
        asio::async_read(
            socket, asio::dynamic_buffer(input),
            asio::transfer_exactly(size - std::min(size, input.size())),
            [self = shared_from_this(), headSize, request](error_code error, size_t) mutable {
                request.body = QByteArray::fromStdString(self->input.substr(headSize));
                if (!error)
                    self->answer(request);
            });
    }

    void answer(const RecordedRequest& request) {
        exchange = server.begin(request, script);
        watchClient();
        play(0);
    }

    void watchClient() {
        socket.async_read_some(
            asio::buffer(ignored),
            [self = shared_from_this()](error_code error, size_t) {
                error ? self->loseClient() : self->watchClient();
            });
    }
    void loseClient() {
        if (!exchange->finished)
            exchange->clientClosed = true;
        end();
    }

    void play(size_t step) {
        if (exchange->finished)
            return;
        if (step == script.m_steps.size())
            return end();
        script.m_steps[step](*this, [self = shared_from_this(), step] { self->play(step + 1); });
    }
    void end() {
        exchange->finished = true;
        exchange->waiting = nullptr;
        error_code error; // it may be closed already
        socket.close(error);
    }

    ScriptedServer& server;
    stream_protocol::socket socket;
    std::string input;
    std::array<char, 4096> ignored{};
    std::shared_ptr<ScriptedServer::Exchange> exchange;
    Script script;
};

/// What listens, and the thread on which all happens.
class ScriptedServer::Network {
public:
    Network(ScriptedServer& server, const stream_protocol::endpoint& endpoint)
        : m_server(server) {
        m_acceptor.open(endpoint.protocol());
        fcntl(m_acceptor.native_handle(), F_SETFD, FD_CLOEXEC);
        m_acceptor.set_option(asio::socket_base::reuse_address(true));
        m_acceptor.bind(endpoint);
        m_acceptor.listen();
        accept();
        m_thread = std::thread([this] { io.run(); });
    }
    ~Network() { hang(); }

    void hang() {
        io.stop();
        if (m_thread.joinable())
            m_thread.join();
    }
    quint16 port() const {
        const auto endpoint = m_acceptor.local_endpoint();
        return ntohs(reinterpret_cast<const sockaddr_in*>(endpoint.data())->sin_port);
    }

    asio::io_context io;

private:
    void accept() {
        m_acceptor.async_accept([this](error_code error, stream_protocol::socket socket) {
            if (error)
                return;
            fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
            error_code ignored; // not every kind of socket has the option
            socket.set_option(asio::ip::tcp::no_delay(true), ignored);
            std::make_shared<ScriptedConnection>(m_server, std::move(socket))->readHead();
            accept();
        });
    }

    ScriptedServer& m_server;
    asio::basic_socket_acceptor<stream_protocol> m_acceptor{io};
    std::thread m_thread;
};

QByteArray RecordedRequest::header(QByteArrayView name) const {
    const QByteArray wanted = name.toByteArray().toLower() + ':';
    for (const QByteArray& line : head.split('\n'))
        if (line.toLower().startsWith(wanted))
            return line.mid(wanted.size()).trimmed();
    return {};
}

Script& Script::send(const QByteArray& bytes) {
    m_steps.emplace_back([bytes](ScriptedConnection& connection, const Next& next) {
        asio::async_write(connection.socket, asio::buffer(bytes.constData(), size_t(bytes.size())),
                          [self = connection.shared_from_this(), bytes, next](
                              error_code error, size_t) { error ? self->loseClient() : next(); });
    });
    return *this;
}

Script& Script::head(int status, const QByteArrayList& fields) {
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n";
    for (const QByteArray& field : fields)
        bytes += field + "\r\n";
    return send(bytes + "\r\n");
}

Script& Script::chunk(QByteArrayView bytes) {
    return send(QByteArray::number(bytes.size(), 16) + "\r\n" + bytes.toByteArray() + "\r\n");
}

Script& Script::gate() {
    m_steps.emplace_back([](ScriptedConnection& connection, const Next& next) {
        ++connection.exchange->gatesReached;
        connection.exchange->waiting = next;
        connection.exchange->passGate();
    });
    return *this;
}

Script& Script::pause(std::chrono::milliseconds time) {
    m_steps.emplace_back([time](ScriptedConnection& connection, const Next& next) {
        const auto timer =
            std::make_shared<asio::steady_timer>(connection.socket.get_executor(), time);
        timer->async_wait([timer, next](error_code) { next(); });
    });
    return *this;
}

Script& Script::call(const std::function<void()>& function) {
    m_steps.emplace_back([function](ScriptedConnection&, const Next& next) {
        function();
        next();
    });
    return *this;
}

Script& Script::reset() {
    m_steps.emplace_back([](ScriptedConnection& connection, const Next&) {
        connection.socket.set_option(asio::socket_base::linger(true, 0));
        connection.end();
    });
    return *this;
}

Script& Script::hold() {
    m_steps.emplace_back([](ScriptedConnection&, const Next&) {});
    return *this;
}

Script Script::reply(int status, const QByteArray& body, const QByteArray& contentType) {
    return Script()
        .head(status, {"Content-Type: " + contentType,
                       "Content-Length: " + QByteArray::number(body.size())})
        .send(body);
}

Script Script::streamed(const QByteArray& body) {
    return Script().head(200, {"Content-Type: application/x-ndjson"}).send(body);
}

ScriptedServer::ScriptedServer() {
    setFallback(Script::reply(501, "no script for this request", "text/plain"));
}

ScriptedServer::~ScriptedServer() {
    stop();
}

template <class Endpoint>
bool ScriptedServer::listenAt(const Endpoint& endpoint) {
    stop();
    try {
        m_network = std::make_unique<Network>(*this, endpoint);
        m_port = m_network->port();
    } catch (const boost::system::system_error& error) {
        m_error = QString::fromLocal8Bit(error.what());
    }
    return m_network != nullptr;
}

bool ScriptedServer::listen(quint16 port) {
    return listenAt(asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), port));
}

bool ScriptedServer::listen(const QString& path) {
    QFile::remove(path);
    return listenAt(asio::local::stream_protocol::endpoint(QFile::encodeName(path).toStdString()));
}

void ScriptedServer::stop() {
    hang();
    for (const auto& each : m_exchanges)
        each->waiting = nullptr;
    m_network.reset();
}

void ScriptedServer::hang() {
    if (m_network)
        m_network->hang();
}

void ScriptedServer::enqueue(const Script& script) {
    const std::lock_guard lock(m_mutex);
    m_scripts.push_back(script);
}

void ScriptedServer::setFallback(const Script& script) {
    setAnswer([script](const RecordedRequest&) { return script; });
}

void ScriptedServer::setAnswer(const Answer& answer) {
    const std::lock_guard lock(m_mutex);
    m_answer = answer;
}

void ScriptedServer::release(int request) {
    asio::post(
        m_network->io,
        [released = exchange(request)] {
            ++released->openGates;
            released->passGate();
        });
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
    return exchange(index)->clientClosed;
}

int ScriptedServer::gatesReached(int index) const {
    return exchange(index)->gatesReached;
}

bool ScriptedServer::isFinished(int index) const {
    return exchange(index)->finished;
}

std::shared_ptr<ScriptedServer::Exchange> ScriptedServer::exchange(int index) const {
    const std::lock_guard lock(m_mutex);
    // Made on first use, so that a test may open a gate before the request has arrived.
    const auto at = static_cast<size_t>(index);
    while (m_exchanges.size() <= at)
        m_exchanges.push_back(std::make_shared<Exchange>());
    return m_exchanges[at];
}

/// Takes a request down and gives the script for it.
std::shared_ptr<ScriptedServer::Exchange> ScriptedServer::begin(const RecordedRequest& request,
                                                                Script& script) {
    const std::lock_guard lock(m_mutex);
    const auto exchange = this->exchange(m_requestCount);
    exchange->request = request;
    const auto at = static_cast<size_t>(m_requestCount++);
    script = at < m_scripts.size() ? m_scripts[at] : m_answer(request);
    return exchange;
}

} // namespace tests
