// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QPainter>
#include <QWidget>

namespace platform {

/// A soft edge over content that goes on behind the upper or the lower end of what is shown, on the
/// window's background. It lets the pointer through.
class EdgeFade final : public QWidget {
    Q_OBJECT

public:
    static constexpr int depth = 12;

    /// `theme` outlives it.
    EdgeFade(const Theme& theme, Qt::Edge edge, QWidget* parent)
        : QWidget(parent)
        , m_theme(theme)
        , m_isTop(edge == Qt::TopEdge) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const QColor window = m_theme.color(ColorRole::Window);
        QLinearGradient gradient(0, m_isTop ? 0 : height(), 0, m_isTop ? height() : 0);
        gradient.setColorAt(0, window);
        gradient.setColorAt(1, withOpacity(window, 0));
        QPainter(this).fillRect(rect(), gradient);
    }

private:
    const Theme& m_theme;
    const bool m_isTop;
};

} // namespace platform
