// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QPainterPath>
#include <QPointer>
#include <QWidget>

#include <memory>

class QVBoxLayout;

namespace platform {

class Button;
class OverlayHost;
class ScrollArea;

/// Something that is shown above the window's content for a while: a menu, a popover, a sheet, an
/// alert. An OverlayHost shows it, keeps the focus in it and closes it. What is too high scrolls,
/// by the scrolling keys from wherever in the panel the focus is. Escape closes it.
///
/// The widget is larger than what is seen of it: its margins hold the shadow and, for a popover,
/// the arrow. Its layout places the content inside the body.
class Panel : public QWidget, public AccessibleElement {
    Q_OBJECT

public:
    enum class Kind { Menu, Popover, Sheet, Alert };

    /// A small screen with an arrow that points to the widget it belongs to; without that widget
    /// (or when it goes) it stands below the top of the window, in the middle. Takes ownership of
    /// the content, which is `width` pixels wide where there is room.
    static std::unique_ptr<Panel> popover(const Theme& theme, const QString& title,
                                          QWidget* content, int width, QWidget* anchor);
    /// A screen over the dimmed window, with a button "Close" in its corner. Takes ownership of the
    /// content, which is `width` pixels wide where there is room.
    static std::unique_ptr<Panel> sheet(const Theme& theme, const QString& title, QWidget* content,
                                        int width);
    /// A message over the dimmed window, with one button. Closed by the button, Return or Escape,
    /// not by a click beside it.
    static std::unique_ptr<Panel> alert(const Theme& theme, const QString& title,
                                        const QString& message, const QString& button);

    Kind kind() const { return m_kind; }
    /// The body in the panel's own coordinates.
    QRect bodyRect() const;

    /// Asks the host to close the panel; it is destroyed by a later turn of the event loop.
    void dismiss();

    QAccessible::Role accessibleRole() const override;
    /// The keyboard stays inside.
    void addAccessibleState(QAccessible::State& state) const override { state.modal = true; }

protected:
    Panel(const Theme& theme, Kind kind, const QString& title, QWidget* anchor);

    const Theme& theme() const { return m_theme; }
    QWidget* anchor() const { return m_anchor; }
    /// Where the anchor stands in the host.
    QRect anchorRect() const;
    /// What stands in the body; its margins are the shadow's.
    QVBoxLayout* column() const { return m_column; }
    /// The rectangle of the body in the host, whose area is given.
    virtual QRect place(const QRect& area);

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    friend class OverlayHost;

    void setContent(QWidget* content, int width);
    void fit();
    QRect placeAtAnchor(const QRect& area);
    /// The widget that gets the focus after one inside (or after the panel itself); none: null.
    QWidget* focusAfter(QWidget* from, bool forward) const;
    QWidget* initialFocus();
    qreal cornerRadius() const;
    QPainterPath outline() const;

    const Theme& m_theme;
    const Kind m_kind;
    OverlayHost* m_host = nullptr;
    QVBoxLayout* m_column;
    QPointer<QWidget> m_anchor;
    ScrollArea* m_scroll = nullptr;
    Button* m_button = nullptr; // that closes the panel
    int m_width = 0;
    int m_tip = 0; // where the arrow points, in pixels from the body's left edge
    bool m_isBelow = true;
    Shadow m_shadow;
};

} // namespace platform
