// SPDX-License-Identifier: MIT
#include "Platform/Desktop/WindowActivation.h"

#include "Platform/Desktop/Linux/X11Activation.h"

#include <QWindow>

namespace platform {

QByteArray activationToken() {
    QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    if (token.isEmpty())
        token = qgetenv("DESKTOP_STARTUP_ID");
    return token;
}

void activateWindow(QWindow& window, const QByteArray& token) {
    if (!window.isVisible())
        window.show();
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    // Where Qt looks for it when it asks a Wayland compositor for the focus.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window.raise();
    window.requestActivate();
    qunsetenv("XDG_ACTIVATION_TOKEN");
    activateOnX11(window, token);
}

} // namespace platform
