// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QWidget>

namespace platform {

/// An area in a colour of the theme, with square corners or rounded ones.
class Surface : public QWidget {
    Q_OBJECT

public:
    Surface(const Theme& theme, ColorRole role, qreal radius = 0)
        : m_theme(theme)
        , m_role(role)
        , m_radius(radius) {}

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        if (m_radius > 0)
            fillRounded(painter, rect(), m_radius, m_theme.color(m_role));
        else
            painter.fillRect(rect(), m_theme.color(m_role));
    }

    const Theme& m_theme;

private:
    const ColorRole m_role;
    const qreal m_radius;
};

/// A horizontal line between two areas.
class Divider final : public Surface {
    Q_OBJECT

public:
    explicit Divider(const Theme& theme)
        : Surface(theme, ColorRole::Divider) {
        setFixedHeight(1);
    }
};

} // namespace platform
