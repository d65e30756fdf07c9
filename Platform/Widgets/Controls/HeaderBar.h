// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/WindowButtons.h"

#include <QWidget>

#include <optional>

class QHBoxLayout;

namespace platform {

class Label;

/// The bar at the top of the window's content: title and subtitle, and buttons at the trailing end.
/// It can be dragged to move the window. Where nobody else draws one, it is the window's title bar,
/// whose texts and buttons are quieter while the window is not the active one.
class HeaderBar : public QWidget {
    Q_OBJECT

public:
    HeaderBar(const Theme& theme, const QString& title);

    void setSubtitle(const QString& subtitle);

    /// Adds a widget after the ones added before. Takes ownership.
    void addTrailing(QWidget* item);

    /// Makes the bar the window's title bar, with these buttons, and a double click maximises the
    /// window; none: the desktop draws one.
    void setWindowButtons(const std::optional<WindowButtonLayout>& buttons);

    /// What is dimmed is quiet already, and can still be used.
    void setDimmed(bool isDimmed);

    /// Whether a widget (null: none) is a part of a title bar that belongs to the window, as all do
    /// but the items: it can be used whatever covers the window's content.
    static bool isPartOfTitleBar(const QWidget* widget);

protected:
    /// Has the desktop move the window along with the pointer.
    virtual void moveWindow();

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    /// Shows what the window is like now.
    void follow();

    const Theme& m_theme;
    Label* m_heading;
    Label* m_subtitle;
    QHBoxLayout* m_trailing;
    QHBoxLayout* m_row;
    bool m_isTitleBar = false;
    bool m_isDimmed = false;
    QList<WindowButtons*> m_windowButtons;
    std::optional<QPoint> m_pressed; // of a title bar: where a drag may have begun
};

} // namespace platform
