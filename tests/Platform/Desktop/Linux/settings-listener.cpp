// SPDX-License-Identifier: MIT
// Listens to the settings portal of the bus at an address, in a process in which nothing else has
// to do with the bus, and says a line for what it is told: dark, light or neither.
//
//   settings-listener ADDRESS
#include "Platform/Desktop/Linux/SettingsPortal.h"

#include <QGuiApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    const QString address = application.arguments().value(1);
    platform::SettingsPortal portal;
    portal.start(QDBusConnection::connectToBus(address, u"listener"_s),
                 [](const platform::DesktopAppearance& told) {
                     std::puts(!told.isDark ? "neither" : *told.isDark ? "dark" : "light");
                     std::fflush(stdout);
                 });
    return application.exec();
}
