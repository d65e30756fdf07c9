// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/WaylandFrames.h"

#include "Platform/Desktop/UniqueFd.h"

#include <QDeadlineTimer>
#include <QHash>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace platform {

namespace {

// The protocol's words: a message is an object, then size and operation in one word, then arguments
// of whole words, in the byte order of the machine.
constexpr qsizetype word = sizeof(uint32_t);
constexpr qsizetype headSize = 2 * word;

// Objects: the first is there, we number the others.
enum Object : uint32_t {
    Display = 1,
    Registry,
    Callback,
    Compositor,
    Shell,
    Decorations,
    Surface,
    ShellSurface,
    Toplevel,
    Decoration,
    LastCallback,
};

// Requests and events, each numbered within its object's interface.
constexpr uint32_t syncRequest = 0;
constexpr uint32_t getRegistryRequest = 1;
constexpr uint32_t bindRequest = 0;
constexpr uint32_t createSurfaceRequest = 0;
constexpr uint32_t getShellSurfaceRequest = 2;
constexpr uint32_t getToplevelRequest = 1;
constexpr uint32_t setApplicationRequest = 3;
constexpr uint32_t getDecorationRequest = 1;
constexpr uint32_t unsetModeRequest = 2;
constexpr uint32_t commitRequest = 6;
constexpr uint32_t errorEvent = 0;
constexpr uint32_t globalEvent = 0;
constexpr uint32_t configureEvent = 0;

constexpr uint32_t serverSide = 2; // a mode of decorations

uint32_t wordAt(const QByteArray& bytes, qsizetype at) {
    uint32_t value = 0;
    std::memcpy(&value, bytes.constData() + at * word, sizeof value);
    return value;
}

QByteArray words(std::initializer_list<uint32_t> values) {
    return {reinterpret_cast<const char*>(values.begin()),
            static_cast<qsizetype>(values.size()) * word};
}

/// A text as an argument: its length with the closing NUL, then whole words.
QByteArray text(const QByteArray& value) {
    const auto length = value.size() + 1;
    return words({static_cast<uint32_t>(length)}) + value +
           QByteArray(1 + (word - length % word) % word, '\0');
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

/// What is said to a compositor and heard from it, up to a deadline.
class Conversation {
public:
    struct Event {
        uint32_t object;
        uint32_t kind;
        QByteArray arguments;
    };

    Conversation(const QByteArray& path, std::chrono::milliseconds limit)
        : m_socket(connectedTo(path))
        , m_deadline(limit) {}

    void request(Object object, uint32_t operation, const QByteArray& arguments = {}) {
        const auto size = static_cast<uint32_t>(headSize + arguments.size());
        m_said += words({object, size << 16U | operation}) + arguments;
    }

    /// Sends the requests. It fails at nothing that would not be heard afterwards.
    void send() {
        if (m_socket)
            static_cast<void>(::send(m_socket.get(), m_said.constData(),
                                     static_cast<size_t>(m_said.size()), MSG_NOSIGNAL));
        m_said.clear();
    }

    /// The next event; none: an error, the connection's end or the deadline's.
    std::optional<Event> hear() {
        while (m_heard.size() < headSize || m_heard.size() < sizeOfFirst())
            if (!receive())
                return std::nullopt;
        const auto size = sizeOfFirst();
        if (size < headSize)
            return std::nullopt;
        Event event{wordAt(m_heard, 0), wordAt(m_heard, 1) & 0xffffU,
                    m_heard.sliced(headSize, size - headSize)};
        m_heard.remove(0, size);
        const bool isError = event.object == Display && event.kind == errorEvent;
        return isError ? std::nullopt : std::optional(std::move(event));
    }

private:
    qsizetype sizeOfFirst() const { return static_cast<qsizetype>(wordAt(m_heard, 1) >> 16U); }

    bool receive() {
        if (!m_socket)
            return false;
        pollfd waiting{m_socket.get(), POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(m_deadline.remainingTime()));
        if (ready < 0 && errno == EINTR)
            return true;
        if (ready <= 0)
            return false;
        QByteArray bytes(4096, Qt::Uninitialized);
        const ssize_t count =
            recv(m_socket.get(), bytes.data(), static_cast<size_t>(bytes.size()), 0);
        if (count <= 0)
            return false;
        m_heard.append(bytes.constData(), count);
        return true;
    }

    const UniqueFd m_socket;
    const QDeadlineTimer m_deadline;
    QByteArray m_said;
    QByteArray m_heard;
};

/// What the compositor announces: numbers by the names of interfaces.
using Globals = QHash<QByteArray, uint32_t>;

/// A global's number, the length of its name with the closing NUL, the name, its version.
void takeGlobal(Globals& globals, const QByteArray& arguments) {
    if (arguments.size() < 2 * word)
        return;
    const auto length = static_cast<qsizetype>(wordAt(arguments, 1));
    if (length > 0 && arguments.size() >= 2 * word + length)
        globals.insert(arguments.sliced(2 * word, length - 1), wordAt(arguments, 0));
}

std::optional<Globals> globalsOf(Conversation& conversation) {
    // The answer to the second request comes after all that the first one brings.
    conversation.request(Display, getRegistryRequest, words({Registry}));
    conversation.request(Display, syncRequest, words({Callback}));
    conversation.send();
    Globals globals;
    while (const auto event = conversation.hear()) {
        if (event->object == Callback)
            return globals;
        if (event->object == Registry && event->kind == globalEvent)
            takeGlobal(globals, event->arguments);
    }
    return std::nullopt;
}

} // namespace

std::optional<bool> waylandDrawsFrames(const QByteArray& socketPath, const QByteArray& application,
                                       std::chrono::milliseconds limit) {
    Conversation conversation(socketPath, limit);
    const auto globals = globalsOf(conversation);
    if (!globals)
        return std::nullopt;
    if (!globals->contains("zxdg_decoration_manager_v1"))
        return false;

    const auto bind = [&](const QByteArray& interface, Object object) {
        constexpr uint32_t version = 1;
        conversation.request(Registry, bindRequest,
                             words({globals->value(interface)}) + text(interface) +
                                 words({version, object}));
    };
    bind("wl_compositor", Compositor);
    bind("xdg_wm_base", Shell);
    bind("zxdg_decoration_manager_v1", Decorations);
    conversation.request(Compositor, createSurfaceRequest, words({Surface}));
    conversation.request(Shell, getShellSurfaceRequest, words({ShellSurface, Surface}));
    conversation.request(ShellSurface, getToplevelRequest, words({Toplevel}));
    conversation.request(Toplevel, setApplicationRequest, text(application));
    conversation.request(Decorations, getDecorationRequest, words({Decoration, Toplevel}));
    conversation.request(Decoration, unsetModeRequest); // as the toolkit asks for its windows
    conversation.request(Surface, commitRequest);
    conversation.send();

    // What a window is to be like comes in parts, closed by the surface's own event. Some say how
    // it is decorated after that, or not at all: what has been said precedes the answer to a
    // further question.
    std::optional<bool> draws;
    bool isLastQuestion = false;
    while (const auto event = conversation.hear()) {
        if (event->object == LastCallback)
            return draws;
        if (event->kind != configureEvent)
            continue;
        if (event->object == Decoration && event->arguments.size() >= word)
            draws = wordAt(event->arguments, 0) == serverSide;
        if (event->object != ShellSurface || isLastQuestion)
            continue;
        if (draws)
            return draws;
        conversation.request(Display, syncRequest, words({LastCallback}));
        conversation.send();
        isLastQuestion = true;
    }
    return std::nullopt;
}

} // namespace platform
