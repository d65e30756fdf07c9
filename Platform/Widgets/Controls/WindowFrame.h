// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

#include <array>
#include <functional>

namespace platform {

/// A window that draws its own frame: rounded corners and a shadow, at whose edge the window is
/// resized. Maximised, it is its content and nothing else.
///
/// It takes over title, size and minimum size of its content, which ends before it.
class WindowFrame : public QWidget, public AccessibleElement {
    Q_OBJECT

public:
    /// Tells the desktop how much of the window is room for the shadow; the window then keeps its
    /// content and grows or shrinks by the room. Called when the room changes.
    using SetMargins = std::function<void(QWindow&, const QMargins&)>;

    /// The room for the shadow on every side, and how much of it can be grasped to resize.
    static constexpr int room = Shadow::extent;
    static constexpr int grip = 10;
    static constexpr int radius = Theme::overlayRadius;

    WindowFrame(const Theme& theme, SetMargins setMargins);

    void setContent(QWidget& content);

    /// The edges that are dragged from a point of the frame.
    Qt::Edges edgesAt(QPoint point) const;

    QAccessible::Role accessibleRole() const override { return QAccessible::Window; }

protected:
    /// Has the desktop move the edges along with the pointer.
    virtual void resizeWindow(Qt::Edges edges);

    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    class Corner;

    /// Paints what lies round the content, in the frame's coordinates.
    void paintAround(QPainter& painter);
    QRect contentRect() const { return rect().marginsRemoved(m_margins); }
    bool isRounded() const { return !m_margins.isNull(); }
    void arrange();

    const Theme& m_theme;
    SetMargins m_setMargins;
    QWidget* m_content = nullptr;
    std::array<Corner*, 4> m_corners{};
    QMargins m_margins;
    Shadow m_shadow;
};

} // namespace platform
