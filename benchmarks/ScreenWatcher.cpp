// SPDX-License-Identifier: MIT
#include "benchmarks/ScreenWatcher.h"

#include <poll.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace bench {

namespace {

// A colour that no window shows.
constexpr std::uint32_t emptyScreen = 0x00f010d0;
constexpr std::uint32_t colourBits = 0x00ffffff;

// Room for a start; what is painted after that many changes is no first frame any more.
constexpr std::size_t mostFrames = 100;

// The part of the screen that may differ between a frame and the settled window: a text cursor.
constexpr double cursorShare = 0.001;

template <typename Reply>
struct Free {
    void operator()(Reply* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free<Reply>>;

} // namespace

void ScreenWatcher::CloseConnection::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

ScreenWatcher::ScreenWatcher()
    : m_connection(xcb_connect(nullptr, nullptr)) {
    xcb_connection_t* const connection = m_connection.get();
    if (xcb_connection_has_error(connection) != 0)
        throw std::runtime_error("there is no display to measure on");
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;

    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(connection, &xcb_damage_id);
    if (extension == nullptr || extension->present == 0)
        throw std::runtime_error("the display does not tell of painting (no DAMAGE extension)");
    m_damageEvent = static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
    const auto version = xcb_damage_query_version(connection, 1, 1);
    const Owned<xcb_damage_query_version_reply_t> reply(
        xcb_damage_query_version_reply(connection, version, nullptr));

    // The root window's picture holds the windows on it only where the copy is asked to include
    // them.
    m_copying = xcb_generate_id(connection);
    const std::uint32_t includeWindows = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_create_gc(connection, m_copying, m_screen->root, XCB_GC_SUBWINDOW_MODE, &includeWindows);
    m_damage = xcb_generate_id(connection);
    xcb_damage_create(connection, m_damage, m_screen->root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
}

ScreenWatcher::~ScreenWatcher() = default;

void ScreenWatcher::begin() {
    xcb_connection_t* const connection = m_connection.get();
    xcb_change_window_attributes(connection, m_screen->root, XCB_CW_BACK_PIXEL, &emptyScreen);
    xcb_clear_area(connection, 0, m_screen->root, 0, 0, 0, 0);
    pixels(m_screen->root); // a round trip: what was painted until here has been told of
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
    }
    forgetFrames();
}

void ScreenWatcher::recordUntil(Clock::time_point end) {
    xcb_connection_t* const connection = m_connection.get();
    for (;;) {
        bool painted = false;
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)})
            painted = painted || (event->response_type & 0x7f) == m_damageEvent;
        const Clock::time_point now = Clock::now();
        if (painted)
            record(now);
        if (now >= end)
            return;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
        pollfd ready{xcb_get_file_descriptor(connection), POLLIN, 0};
        poll(&ready, 1, static_cast<int>(left.count()));
        if (xcb_connection_has_error(connection) != 0)
            throw std::runtime_error("the display has gone");
    }
}

std::optional<Clock::time_point> ScreenWatcher::firstSettledFrame() {
    const std::vector<std::uint32_t> settled = pixels(m_screen->root);
    const auto tolerated =
        static_cast<std::size_t>(cursorShare * static_cast<double>(settled.size()));
    for (const Frame& frame : m_frames) {
        const std::vector<std::uint32_t> shown = pixels(frame.pixmap);
        std::size_t differing = 0;
        for (std::size_t i = 0; i < settled.size(); ++i)
            differing += ((shown[i] ^ settled[i]) & colourBits) != 0 ? 1 : 0;
        if (differing <= tolerated)
            return frame.time;
    }
    return std::nullopt;
}

// The copy stays with the server, so that watching costs the watched program next to nothing.
void ScreenWatcher::record(Clock::time_point time) {
    if (m_frames.size() == mostFrames)
        return;
    xcb_connection_t* const connection = m_connection.get();
    const std::uint32_t pixmap = xcb_generate_id(connection);
    const std::uint16_t width = m_screen->width_in_pixels;
    const std::uint16_t height = m_screen->height_in_pixels;
    xcb_create_pixmap(connection, m_screen->root_depth, pixmap, m_screen->root, width, height);
    xcb_copy_area(connection, m_screen->root, pixmap, m_copying, 0, 0, 0, 0, width, height);
    xcb_flush(connection);
    m_frames.push_back({time, pixmap});
}

void ScreenWatcher::forgetFrames() {
    for (const Frame& frame : m_frames)
        xcb_free_pixmap(m_connection.get(), frame.pixmap);
    m_frames.clear();
}

std::vector<std::uint32_t> ScreenWatcher::pixels(std::uint32_t drawable) {
    xcb_connection_t* const connection = m_connection.get();
    const auto request = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, 0, 0,
                                       m_screen->width_in_pixels, m_screen->height_in_pixels, ~0u);
    const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(connection, request, nullptr));
    if (!image)
        throw std::runtime_error("the display gives no picture of itself");
    std::vector<std::uint32_t> result(static_cast<std::size_t>(m_screen->width_in_pixels) *
                                      m_screen->height_in_pixels);
    const auto bytes = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
    if (bytes != result.size() * sizeof(std::uint32_t))
        throw std::runtime_error("the display must have 24 bits of colour a pixel");
    std::memcpy(result.data(), xcb_get_image_data(image.get()), bytes);
    return result;
}

} // namespace bench
