// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/WaylandInterfaces.h"

#include "Platform/Desktop/UniqueFd.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

// The protocol's words: a message is an object, then size and operation in one word, then arguments
// of whole words, in the byte order of the machine.
constexpr uint32_t display = 1;
constexpr uint32_t registry = 2;
constexpr uint32_t callback = 3;
constexpr uint32_t syncRequest = 0;
constexpr uint32_t getRegistryRequest = 1;
constexpr uint32_t globalEvent = 0;
constexpr uint32_t errorEvent = 0;
constexpr qsizetype word = sizeof(uint32_t);
constexpr qsizetype headSize = 2 * word;

constexpr uint32_t head(uint32_t size, uint32_t operation) {
    return size << 16U | operation;
}

uint32_t wordAt(const QByteArray& bytes, qsizetype at) {
    uint32_t value = 0;
    std::memcpy(&value, bytes.constData() + at * word, sizeof value);
    return value;
}

UniqueFd connectedTo(const QByteArray& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        return {};
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket ||
        connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return {};
    return socket;
}

/// The answer to the question below, as it comes in.
class Answer {
public:
    enum class State { Unfinished, Finished, Refused };

    State take(const QByteArray& bytes) {
        m_bytes += bytes;
        while (m_bytes.size() >= headSize) {
            const uint32_t object = wordAt(m_bytes, 0);
            const auto size = static_cast<qsizetype>(wordAt(m_bytes, 1) >> 16U);
            const uint32_t event = wordAt(m_bytes, 1) & 0xffffU;
            if (size < headSize || (object == display && event == errorEvent))
                return State::Refused;
            if (m_bytes.size() < size)
                break;
            if (object == callback)
                return State::Finished;
            if (object == registry && event == globalEvent)
                takeGlobal(m_bytes.sliced(headSize, size - headSize));
            m_bytes.remove(0, size);
        }
        return State::Unfinished;
    }

    QByteArrayList interfaces;

private:
    /// A global's number, the length of its name with the closing NUL, the name, its version.
    void takeGlobal(const QByteArray& arguments) {
        if (arguments.size() < 2 * word)
            return;
        const auto length = static_cast<qsizetype>(wordAt(arguments, 1));
        if (length > 0 && arguments.size() >= 2 * word + length)
            interfaces.append(arguments.sliced(2 * word, length - 1));
    }

    QByteArray m_bytes;
};

} // namespace

std::optional<QByteArrayList> waylandInterfaces(const QByteArray& socketPath,
                                                std::chrono::milliseconds limit) {
    const UniqueFd socket = connectedTo(socketPath);
    // The answer to the second request comes after all that the first one brings.
    constexpr uint32_t size = 3 * word;
    const std::array<uint32_t, 6> question{display, head(size, getRegistryRequest), registry,
                                           display, head(size, syncRequest),        callback};
    if (!socket || send(socket.get(), question.data(), sizeof question, MSG_NOSIGNAL) !=
                       static_cast<ssize_t>(sizeof question))
        return std::nullopt;

    const QDeadlineTimer deadline(limit);
    Answer answer;
    while (true) {
        pollfd waiting{socket.get(), POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return std::nullopt;
        QByteArray bytes(4096, Qt::Uninitialized);
        const ssize_t count =
            recv(socket.get(), bytes.data(), static_cast<size_t>(bytes.size()), 0);
        if (count <= 0)
            return std::nullopt;
        bytes.truncate(count);
        switch (answer.take(bytes)) {
        case Answer::State::Unfinished:
            break;
        case Answer::State::Finished:
            return answer.interfaces;
        case Answer::State::Refused:
            return std::nullopt;
        }
    }
}

} // namespace platform
