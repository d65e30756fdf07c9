// SPDX-License-Identifier: MIT
#pragma once

#include "benchmarks/RunningProgram.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct xcb_connection_t;
struct xcb_screen_t;

namespace bench {

/// Sees, from outside the program, when its window is painted: every change of the screen is
/// recorded with its time, and once the window has come to rest the first picture that already
/// showed what it shows then is its first painted frame. A window that is mapped empty and filled
/// later counts when it is filled.
class ScreenWatcher {
public:
    /// Connects to the display of the environment. Throws std::runtime_error where that fails.
    ScreenWatcher();
    ~ScreenWatcher();
    ScreenWatcher(const ScreenWatcher&) = delete;
    ScreenWatcher& operator=(const ScreenWatcher&) = delete;

    /// Forgets all frames and paints the empty screen in a colour of its own.
    void begin();

    /// Records frames until the given moment.
    void recordUntil(Clock::time_point end);

    /// True once anything has been painted since begin().
    bool sawPaint() const { return !m_frames.empty(); }

    /// When the screen first showed what it shows now, but for a blinking cursor; none if nothing
    /// has been painted since begin().
    std::optional<Clock::time_point> firstSettledFrame();

private:
    struct Frame {
        Clock::time_point time;
        std::uint32_t pixmap;
    };
    struct CloseConnection {
        void operator()(xcb_connection_t* connection) const;
    };

    void record(Clock::time_point time);
    void forgetFrames();
    std::vector<std::uint32_t> pixels(std::uint32_t drawable);

    std::unique_ptr<xcb_connection_t, CloseConnection> m_connection;
    xcb_screen_t* m_screen = nullptr;
    std::uint32_t m_copying = 0;
    std::uint32_t m_damage = 0;
    std::uint8_t m_damageEvent = 0;
    std::vector<Frame> m_frames;
};

} // namespace bench
