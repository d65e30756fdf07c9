// SPDX-License-Identifier: MIT
#include "Platform/Desktop/OwnFrame.h"

#include "Platform/Desktop/Linux/WaylandFrames.h"

#include <QGuiApplication>
#include <QLibraryInfo>
#include <QMargins>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

using SetMargins = void (*)(QWindow*, const QMargins&);

/// The toolkit's function for it; none where it has none. It is not part of the toolkit's stable
/// interface: asked only in the release that the program was built with.
SetMargins toolkitSetMargins() {
    const QVersionNumber running = QLibraryInfo::version();
    if (running.majorVersion() != QT_VERSION_MAJOR || running.minorVersion() != QT_VERSION_MINOR)
        return nullptr;
    auto* toolkit = QGuiApplication::platformNativeInterface();
    auto* function = toolkit
                         ? toolkit->nativeResourceFunctionForWindow(QByteArrayLiteral("setmargins"))
                         : nullptr;
    return reinterpret_cast<SetMargins>(reinterpret_cast<QFunctionPointer>(function));
}

QByteArray socketPath() {
    QByteArray name = qgetenv("WAYLAND_DISPLAY");
    if (name.isEmpty())
        name = QByteArrayLiteral("wayland-0");
    return name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name;
}

bool compositorDrawsFrames() {
    using namespace std::chrono_literals;
    const QByteArray application = QGuiApplication::desktopFileName().toUtf8();
    return waylandDrawsFrames(socketPath(), application, 1s).value_or(true);
}

} // namespace

SetFrameMargins ownFrame() {
    if (!QGuiApplication::platformName().startsWith("wayland"_L1))
        return {};
    const SetMargins setMargins = toolkitSetMargins();
    if (!setMargins || compositorDrawsFrames())
        return {};
    return [setMargins](QWindow& window, const QMargins& margins) {
        if (window.handle())
            setMargins(&window, margins);
    };
}

} // namespace platform
