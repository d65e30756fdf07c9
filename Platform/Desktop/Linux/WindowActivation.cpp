// SPDX-License-Identifier: MIT
#include "Platform/Desktop/WindowActivation.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace platform {

namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};

/// The time that a startup id ends in: "…_TIME123", in the server's milliseconds.
std::optional<xcb_timestamp_t> timeOf(const QByteArray& startupId) {
    const QByteArray mark = "_TIME";
    const qsizetype at = startupId.lastIndexOf(mark);
    if (at < 0)
        return std::nullopt;
    bool isNumber = false;
    const uint time = startupId.mid(at + mark.size()).toUInt(&isNumber);
    return isNumber && time != XCB_CURRENT_TIME ? std::optional(time) : std::nullopt;
}

/// The text that ends a start, with its id quoted; its closing NUL belongs to it.
QByteArray endOfStart(const QByteArray& startupId) {
    QByteArray message = "remove: ID=\"";
    for (const char character : startupId) {
        if (character == '"' || character == '\\')
            message += '\\';
        message += character;
    }
    return message + '"' + '\0';
}

class WindowManager {
public:
    WindowManager(xcb_connection_t* connection, xcb_window_t window)
        : m_connection(connection)
        , m_window(window)
        , m_root(rootOf(window)) {}

    void activate(std::optional<xcb_timestamp_t> time) const {
        if (time)
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window,
                                atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1, &*time);
        // A start from a terminal has no time to show. It is the user's action all the same, which
        // is what the second kind of source stands for.
        constexpr uint32_t application = 1;
        constexpr uint32_t user = 2;
        const std::array<uint32_t, 2> wish{time ? application : user,
                                           time.value_or(XCB_CURRENT_TIME)};
        send("_NET_ACTIVE_WINDOW", 32, {reinterpret_cast<const char*>(wish.data()), sizeof wish},
             XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    }

    void endStart(const QByteArray& startupId) const {
        const QByteArray text = endOfStart(startupId);
        for (qsizetype at = 0; at < text.size(); at += messageSize)
            send(at == 0 ? "_NET_STARTUP_INFO_BEGIN" : "_NET_STARTUP_INFO", 8,
                 text.mid(at, messageSize), XCB_EVENT_MASK_PROPERTY_CHANGE);
    }

private:
    xcb_window_t rootOf(xcb_window_t window) const {
        const std::unique_ptr<xcb_get_geometry_reply_t, Free> geometry(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        return geometry ? geometry->root : xcb_window_t{XCB_NONE};
    }

    xcb_atom_t atom(const char* name) const {
        const auto length = static_cast<uint16_t>(std::strlen(name));
        const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, length, name), nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    /// Sends a message of at most 20 bytes; `format` is the size of its numbers, in bits.
    void send(const char* type, uint8_t format, QByteArrayView data, uint32_t mask) const {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = format;
        event.window = m_window;
        event.type = atom(type);
        std::copy(data.begin(), data.end(), reinterpret_cast<char*>(event.data.data8));
        xcb_send_event(m_connection, 0, m_root, mask, reinterpret_cast<const char*>(&event));
        xcb_flush(m_connection);
    }

    static constexpr qsizetype messageSize = sizeof(xcb_client_message_data_t);
    xcb_connection_t* m_connection;
    xcb_window_t m_window;
    xcb_window_t m_root;
};

/// Asks an X11 window manager to give a window the focus, as the user who started the program again
/// wants it, and tells the desktop that this start is over. `startupId` ends in the time of the
/// user's action.
void activateOnX11(const QWindow& window, const QByteArray& startupId) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection() || !window.handle()) // a display in memory has no connection
        return;
    const WindowManager manager(x11->connection(), static_cast<xcb_window_t>(window.winId()));
    manager.activate(timeOf(startupId));
    if (!startupId.isEmpty())
        manager.endStart(startupId);
}

} // namespace

QByteArray activationToken() {
    QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    if (token.isEmpty())
        token = qgetenv("DESKTOP_STARTUP_ID");
    return token;
}

void activateWindow(QWindow& window, const QByteArray& token) {
    if (!window.isVisible())
        window.show();
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    // Where Qt looks for it when it asks a Wayland compositor for the focus.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window.raise();
    window.requestActivate();
    qunsetenv("XDG_ACTIVATION_TOKEN");
    activateOnX11(window, token);
}

} // namespace platform
