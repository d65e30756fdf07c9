// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/AbstractScrollArea.h"

#include <QBasicTimer>
#include <QObject>

#include <algorithm>
#include <functional>

namespace platform {

/// Goes on with a selection that a pressed pointer draws beyond an end of the vertical area around:
/// scrolls the area by a step a frame, the farther the pointer the faster.
class DragScroll final : public QObject {
public:
    /// `moved` is called when something has scrolled, with the pointer in coordinates of `inside`.
    DragScroll(QWidget* inside, std::function<void(QPointF)> moved)
        : m_inside(inside)
        , m_moved(std::move(moved)) {}

    /// The pointer is there, on the screen.
    void follow(QPoint pointer) {
        m_pointer = pointer;
        if (!m_frames.isActive())
            m_frames.start(16, this);
    }
    void stop() { m_frames.stop(); }

protected:
    void timerEvent(QTimerEvent*) override {
        auto* area = AbstractScrollArea::around(m_inside);
        if (area && scroll(*area))
            m_moved(m_inside->mapFromGlobal(QPointF(m_pointer)));
        else
            stop();
    }

private:
    bool scroll(AbstractScrollArea& area) const {
        const int place = area.mapFromGlobal(m_pointer).y();
        const int beyond = std::min(place, 0) + std::max(place - area.height() + 1, 0);
        const int before = area.offset();
        if (beyond != 0)
            area.setOffset(before + std::clamp(beyond / 4, -40, 40) + (beyond < 0 ? -1 : 1));
        return area.offset() != before;
    }

    QWidget* const m_inside;
    const std::function<void(QPointF)> m_moved;
    QBasicTimer m_frames;
    QPoint m_pointer;
};

} // namespace platform
