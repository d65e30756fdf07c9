// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Overlays/OverlaySurface.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

namespace platform {

class Button;

/// One line of a menu; without a title: a line between groups.
struct MenuEntry {
    QString title;
    QString icon;
    std::function<void()> action; ///< runs after the menu has closed

    static MenuEntry separator() { return {}; }
};

/// A menu: entries to point at, or to walk through with the arrow keys and press with Return.
class Menu final : public OverlaySurface {
    Q_OBJECT

public:
    /// Hangs below a widget, at its trailing edge.
    Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QWidget* anchor);
    /// Opens at a point of the screen, as a context menu.
    Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QPoint global);

    /// The first entry has the focus from the start: for menus opened from the keyboard.
    void setStartsAtFirst(bool startsAtFirst) { m_startsAtFirst = startsAtFirst; }
    /// The row under a point of the screen; none: null.
    Button* rowAt(QPoint global) const;

    QRect place(const QRect& area) override;
    QWidget* initialFocus() override;
    QAccessible::Event openingEvent() const override { return QAccessible::PopupMenuStart; }
    QAccessible::Role accessibleRole() const override { return QAccessible::PopupMenu; }

protected:
    qreal cornerRadius() const override { return Theme::menuRadius; }
    void keyPressEvent(QKeyEvent* event) override;

private:
    Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QWidget* anchor,
         QPoint global);
    void focusRow(qsizetype index);

    std::vector<Button*> m_rows;
    QPointer<QWidget> m_anchor;
    QPoint m_global;
    bool m_startsAtFirst = false;
};

} // namespace platform
