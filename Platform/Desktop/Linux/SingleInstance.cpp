// SPDX-License-Identifier: MIT
#include "Platform/Desktop/SingleInstance.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QSocketNotifier>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>

namespace platform {

namespace {

constexpr auto lockName = "instance.lock";
constexpr auto socketName = "instance.sock";

// One packet each way: the request, which is this and the token, and the answer.
constexpr QByteArrayView request = "activate\n";
constexpr QByteArrayView answer = "activated\n";
constexpr qsizetype longestToken = 4096;

/// How long a start waits before it looks again for the lock and the socket of an instance that is
/// itself just starting or ending.
constexpr std::chrono::milliseconds betweenAttempts{10};

/// More starts than these at one moment are no user's.
constexpr qsizetype maximumPeers = 32;

UniqueFd makeSocket() {
    return UniqueFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

/// Calls `connect` or `bind` with the address of the folder's socket.
template <class Call>
bool atSocket(const PrivateFolder& folder, const UniqueFd& socket, Call call) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(folder.socketPath(socketName));
    std::copy(path.begin(), path.end(), address.sun_path);
    return call(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// The folder keeps other users out; this holds even where its mode does not.
bool isOwnPeer(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool sendPacket(int socket, const QByteArray& packet) {
    return send(socket, packet.constData(), static_cast<size_t>(packet.size()), MSG_NOSIGNAL) ==
           packet.size();
}

bool waitToRead(int socket, const QDeadlineTimer& deadline) {
    pollfd waiting{.fd = socket, .events = POLLIN, .revents = 0};
    while (true) {
        const int ready = poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

/// Asks the running instance to come to the front; true once it has answered.
bool handOver(const PrivateFolder& folder, const QByteArray& token,
              const QDeadlineTimer& deadline) {
    const UniqueFd socket = makeSocket();
    if (!socket || !atSocket(folder, socket, &connect) || !isOwnPeer(socket.get()) ||
        !sendPacket(socket.get(), request.toByteArray() + token.left(longestToken)) ||
        !waitToRead(socket.get(), deadline))
        return false;
    std::array<char, answer.size()> packet{};
    const ssize_t size = recv(socket.get(), packet.data(), packet.size(), 0);
    return size == answer.size() && answer == QByteArrayView(packet.data(), size);
}

} // namespace

SingleInstance::SingleInstance(const QStringList& folders)
    : m_folder(PrivateFolder::open(folders)) {}

SingleInstance::~SingleInstance() {
    // While the lock is still ours: afterwards it could be the next instance's socket.
    if (m_listener)
        m_folder->remove(socketName);
}

SingleInstance::Claim SingleInstance::claim(const QByteArray& token,
                                            std::chrono::milliseconds limit) {
    if (!m_folder)
        return Claim::First;
    const QDeadlineTimer deadline(limit);
    while (true) {
        m_lock = m_folder->takeLock(lockName);
        if (m_lock) {
            listenForOthers();
            return Claim::First;
        }
        if (handOver(*m_folder, token, deadline))
            return Claim::HandedOver;
        if (deadline.hasExpired())
            return Claim::Unanswered;
        // The other one has the lock but no socket yet, or no socket any more.
        std::this_thread::sleep_for(betweenAttempts);
    }
}

void SingleInstance::onActivated(std::function<void(const QByteArray&)> activated) {
    m_activated = std::move(activated);
    if (!m_listener)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_listener.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { accept(); });
}

void SingleInstance::listenForOthers() {
    m_folder->remove(socketName); // of an instance that was killed
    UniqueFd listener = makeSocket();
    if (listener && atSocket(*m_folder, listener, &bind) && listen(listener.get(), 8) == 0)
        m_listener = std::move(listener);
}

void SingleInstance::accept() {
    UniqueFd socket(accept4(m_listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket || !isOwnPeer(socket.get()))
        return;
    if (m_notifier->children().size() >= maximumPeers)
        delete m_notifier->children().constFirst();
    auto* peer = new QSocketNotifier(socket.get(), QSocketNotifier::Read, m_notifier.get());
    QObject::connect(peer, &QSocketNotifier::activated, peer,
                     [this, peer, owned = std::move(socket)] { read(*peer); });
}

void SingleInstance::read(QSocketNotifier& peer) {
    const auto socket = static_cast<int>(peer.socket());
    QByteArray packet(request.size() + longestToken, Qt::Uninitialized);
    const ssize_t size = recv(socket, packet.data(), static_cast<size_t>(packet.size()), 0);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    peer.setEnabled(false);
    peer.deleteLater(); // it is the sender of the signal that led here
    packet.truncate(std::max(size, ssize_t{0}));
    if (!packet.startsWith(request))
        return;
    sendPacket(socket, answer.toByteArray());
    m_activated(packet.mid(request.size()));
}

} // namespace platform
