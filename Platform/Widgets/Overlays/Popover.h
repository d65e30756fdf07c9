// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Overlays/OverlaySurface.h"

#include <QPointer>

namespace platform {

class ScrollView;

/// A small screen with an arrow that points to the widget it belongs to. Its content has a width of
/// its own, is made narrower in a narrow window, and scrolls when it is too high.
class Popover final : public OverlaySurface {
    Q_OBJECT

public:
    /// Takes ownership of the content, which is `width` pixels wide where there is room. Without an
    /// anchor (or when it goes) the popover stands below the top of the window, in the middle.
    Popover(const Theme& theme, const QString& title, QWidget* content, int width, QWidget* anchor);

    QRect place(const QRect& area) override;

protected:
    QPainterPath outline() const override;
    bool event(QEvent* event) override;

private:
    QRect anchorRect(const QRect& area) const;

    ScrollView* m_scroll;
    int m_width;
    QPointer<QWidget> m_anchor;
    int m_tip = 0; // where the arrow points, in pixels from the body's left edge
    bool m_isBelow = true;
};

} // namespace platform
