// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

namespace platform {

class OverlayScrollBar;

/// Shows a widget that may be higher than the space for it. The content always has the view's
/// width.
///
/// Scrolls by wheel, touchpad, the scroll bar, and by Up, Down, Page Up, Page Down, Home and End;
/// what takes the focus is scrolled into view.
class ScrollView final : public QWidget {
    Q_OBJECT

public:
    explicit ScrollView(const Theme& theme, QWidget* parent = nullptr);

    /// Takes ownership and shows the content from its top; destroys the former one.
    void setContent(QWidget* content);
    QWidget* content() const { return m_content; }

    /// How far the content's top lies above the view's, in pixels: 0 to maximum().
    int offset() const { return m_offset; }
    int maximum() const;
    void setOffset(int offset);
    /// Scrolls as little as shows the whole widget, or its top if it is too high.
    void ensureVisible(const QWidget* widget);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    int contentHeight(int width) const;
    void layOut();

    const Theme& m_theme;
    QWidget* m_content = nullptr;
    OverlayScrollBar* m_bar;
    int m_offset = 0;
    int m_wheelRest = 0; // eighths of a degree not yet made into pixels
};

} // namespace platform
