// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/AppearanceSettings.h"
#include "Platform/Widgets/Controls/WindowButtons.h"
#include "Platform/Widgets/Controls/WindowFrame.h"
#include "Platform/Widgets/Look/Theme.h"

#include <memory>
#include <optional>

class QApplication;

namespace platform {

class SingleInstance;

/// Claims the place of a program's one instance. None: go on; else the exit status to end with,
/// because another one is here and comes to the front, or does not answer, which is said.
///
/// @param name what users know the program by.
std::optional<int> endForOther(SingleInstance& instance, const QByteArray& activationToken,
                               const char* name);

/// What our programs of one window have in common: a theme that follows the user's wishes, the
/// window's frame where the desktop leaves it to the programs, its icon, and the keys of every
/// window: Ctrl-W and Ctrl-Q, and those for larger and smaller text.
///
/// Made right after the application object, before the window's content, which ends before it.
class WindowedApp final {
public:
    explicit WindowedApp(QApplication& application);

    const Theme& theme() const { return m_theme; }
    /// The buttons that the window's header has as its title bar; none: the desktop draws one.
    const Observed<std::optional<WindowButtonLayout>>& windowButtons() const {
        return m_windowButtons;
    }

    /// Makes the widget the content of the window. Called once.
    void setContent(QWidget& content);

    /// Makes text larger by so many steps, or smaller.
    void zoomBy(int steps);

    /// Takes over what the desktop has already said about its looks. Never waits.
    void settle();

    /// Settles, and shows the window, or brings it to the front.
    /// @param activationToken what the desktop gave to the start that asks for it; may be empty.
    void openWindow(const QByteArray& activationToken);

private:
    void follow();
    void makeShortcuts();

    QApplication& m_application;
    AppearanceSettings m_appearance;
    Theme m_theme;
    Observed<std::optional<WindowButtonLayout>> m_windowButtons;
    QObject m_observers;
    const std::unique_ptr<WindowFrame> m_frame; // none: the desktop draws one
    QWidget* m_content = nullptr;
};

} // namespace platform
