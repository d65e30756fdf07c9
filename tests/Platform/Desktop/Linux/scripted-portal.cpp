// SPDX-License-Identifier: MIT
// A settings portal for the window to be pictured with: says what it is told to on the session bus,
// that no motion is wanted, and the fonts of a GNOME as Debian sets it up.
//
//   scripted-portal light|dark [BUTTONS]
//
// BUTTONS: those of title bars, as ":minimize,maximize,close".
#include "tests/Platform/Desktop/Linux/ScriptedPortal.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QString scheme = application.arguments().value(1);
    if (scheme != u"light" && scheme != u"dark") {
        std::fputs("Usage: scripted-portal light|dark [BUTTONS]\n", stderr);
        return 2;
    }
    const auto appearance = u"org.freedesktop.appearance"_s;
    ScriptedPortal portal(QDBusConnection::sessionBus());
    portal.setValue({appearance, u"color-scheme"_s}, scheme == u"dark" ? 1U : 2U);
    portal.setValue({appearance, u"reduced-motion"_s}, 1U);
    const auto gnome = u"org.gnome.desktop.interface"_s;
    portal.setValue({gnome, u"font-name"_s}, u"Cantarell 11"_s);
    portal.setValue({gnome, u"monospace-font-name"_s}, u"Monospace 11"_s);
    if (application.arguments().size() > 2)
        portal.setValue({u"org.gnome.desktop.wm.preferences"_s, u"button-layout"_s},
                        application.arguments().at(2));
    if (!portal.appear()) {
        std::fputs("There is no session bus, or another portal on it.\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return application.exec();
}
