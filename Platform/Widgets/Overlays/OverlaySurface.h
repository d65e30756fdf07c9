// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Shadow.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QPainterPath>
#include <QWidget>

namespace platform {

class OverlayHost;

/// Something that is shown above the window's content for a while: a menu, a popover, a sheet, an
/// alert. An OverlayHost shows it, keeps the focus in it and closes it.
///
/// The widget is larger than what is seen of it: its margins hold the shadow and, for a popover,
/// the arrow. Its layout places the content inside the body.
class OverlaySurface : public QWidget, public AccessibleElement {
    Q_OBJECT

public:
    OverlaySurface(const Theme& theme, const QString& title);

    /// What assistive technology announces when the surface opens.
    QString title() const { return accessibleName(); }

    /// Asks the host to close the surface; it is destroyed by a later turn of the event loop.
    void dismiss();

    /// The rectangle of the body for the area of the host.
    virtual QRect place(const QRect& area) = 0;
    /// Whether the window beneath is dimmed.
    virtual bool dimsGround() const { return false; }
    virtual bool closesOnOutsideClick() const { return true; }
    /// Where the focus goes first; none: the surface itself.
    virtual QWidget* initialFocus();
    virtual QAccessible::Event openingEvent() const { return QAccessible::DialogStart; }

    /// The body in the surface's own coordinates.
    QRect bodyRect() const;
    /// Gives the surface the geometry for a body in the host's coordinates.
    void setBodyGeometry(const QRect& body);

    QAccessible::Role accessibleRole() const override { return QAccessible::Dialog; }
    /// The keyboard stays inside.
    void addAccessibleState(QAccessible::State& state) const override { state.modal = true; }

protected:
    const Theme& theme() const { return m_theme; }
    virtual qreal cornerRadius() const { return Theme::overlayRadius; }
    virtual ColorRole ground() const { return ColorRole::Popover; }
    /// The outline, in the surface's own coordinates.
    virtual QPainterPath outline() const;
    /// Puts the focus on the next (or the previous) widget inside, round and round.
    bool moveFocus(bool forward);

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool focusNextPrevChild(bool next) override { return moveFocus(next); }

private:
    friend class OverlayHost;

    const Theme& m_theme;
    OverlayHost* m_host = nullptr;
    Shadow m_shadow;
};

} // namespace platform
