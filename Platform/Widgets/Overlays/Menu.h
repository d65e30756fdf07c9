// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Overlays/Panel.h"

#include <functional>
#include <vector>

class QLineEdit;
class QPlainTextEdit;

namespace platform {

class OverlayHost;

/// One line of a menu; without a title: a line between groups.
struct MenuEntry {
    QString title;
    QString icon;
    std::function<void()> action; ///< runs after the menu has closed
    bool isEnabled = true;

    static MenuEntry separator() { return {}; }
};

/// A menu: entries to point at, or to walk through with the arrow keys and press with Return.
/// Drawn inside the window like every panel: a pop-up window of the toolkit's would be placed by a
/// Wayland compositor, and show black corners on X11 without one.
class Menu final : public Panel {
    Q_OBJECT

public:
    /// Opens at a point of the screen, as a context menu, or hangs below the trailing edge of an
    /// anchor.
    Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QPoint global,
         QWidget* anchor = nullptr);

    /// Puts the focus on an entry or, where it is disabled, on the next one in a direction. One
    /// before the first is the last, one behind the last is the first.
    void focusRow(qsizetype index, qsizetype direction = 1);
    /// The row under a point of the screen; none: null.
    Button* rowAt(QPoint global) const;

protected:
    QRect place(const QRect& area) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::vector<Button*> m_rows;
    QPoint m_global;
};

/// Gives a field for text its menu, which opens by the right button of the pointer and by the keys
/// for it: Undo, Redo, Cut, Copy, Paste and Select All, greyed where they cannot be used. All
/// outlive the field.
void addEditMenu(QLineEdit& field, const Theme& theme, OverlayHost& overlays);
void addEditMenu(QPlainTextEdit& field, const Theme& theme, OverlayHost& overlays);

} // namespace platform
