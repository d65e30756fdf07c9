// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <vector>

namespace platform {

class Button;

/// The buttons of a window that a title bar has.
enum class WindowButton { Minimize, Maximize, Close };

/// Which of them stand on which side of the title bar, each side in reading order.
struct WindowButtonLayout {
    QList<WindowButton> left;
    QList<WindowButton> right;

    /// Reads a desktop's setting, such as "appmenu:minimize,maximize,close": the sides lie before
    /// and after the colon, without one all stand on the left. What a window of ours has no button
    /// for is left out, and so is a second button of a kind.
    static WindowButtonLayout parsed(QStringView setting);

    friend bool operator==(const WindowButtonLayout&, const WindowButtonLayout&) = default;
};

/// The buttons on one side of a title bar. They act on the window that they stand in and show
/// whether it is maximised. The keyboard does not stop at them: the desktop has keys of
/// its own for what they do.
class WindowButtons final : public QWidget {
    Q_OBJECT

public:
    WindowButtons(const Theme& theme, const QList<WindowButton>& buttons, QWidget* parent);

    void setQuiet(bool isQuiet);

    /// Maximises a window, or gives a maximised one its former size.
    static void toggleMaximized(QWidget& window);

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Shows what the window is like now.
    void follow();

    struct Shown {
        WindowButton kind;
        Button* button;
    };
    std::vector<Shown> m_shown;
    QPointer<QWidget> m_window;
};

} // namespace platform
