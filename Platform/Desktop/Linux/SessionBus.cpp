// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/SessionBus.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// Whether the user's own bus listens in the place that needs no variable to be found.
bool isInRuntimeFolder() {
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    struct stat status {};
    return !folder.isEmpty() &&
           stat(QFile::encodeName(folder + u"/bus"_s).constData(), &status) == 0 &&
           S_ISSOCK(status.st_mode) && status.st_uid == geteuid();
}

} // namespace

std::optional<QDBusConnection> sessionBus() {
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") && !isInRuntimeFolder())
        return std::nullopt;
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::optional(std::move(bus)) : std::nullopt;
}

} // namespace platform
