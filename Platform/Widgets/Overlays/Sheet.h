// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Overlays/OverlaySurface.h"

namespace platform {

class Button;
class ScrollView;

/// A screen over the dimmed window, with a button "Close" in its corner. Its content scrolls when
/// it is too high; the scrolling keys work wherever in the sheet the focus is.
class Sheet final : public OverlaySurface {
    Q_OBJECT

public:
    /// Takes ownership of the content, which is `width` pixels wide where there is room.
    Sheet(const Theme& theme, const QString& title, QWidget* content, int width);

    QRect place(const QRect& area) override;
    bool dimsGround() const override { return true; }

protected:
    ColorRole ground() const override { return ColorRole::Sheet; }
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    Button* m_close; // made first: the focus enters here
    ScrollView* m_scroll;
    int m_width;
};

} // namespace platform
