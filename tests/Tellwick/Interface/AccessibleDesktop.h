// SPDX-License-Identifier: MIT
#pragma once

#include "tests/Platform/Desktop/Linux/PrivateBus.h"

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <optional>

/// A desktop for one test program: a display in memory with a window manager, a session bus, and
/// the accessibility bus with its registry, as a screen reader finds them. Nothing of the user's is
/// touched.
class AccessibleDesktop {
public:
    AccessibleDesktop();
    ~AccessibleDesktop();

    /// Starts everything; the error tells what cannot be had here.
    bool start();
    const QString& errorString() const { return m_error; }

    /// The accessibility bus.
    QDBusConnection& bus() { return *m_bus; }

    /// Starts a program on the desktop, with a home folder of its own.
    bool startProgram(const QString& path);
    /// Ends the program and waits for it; whether it ended by itself and without a fault.
    bool endProgram();

    /// Presses and releases a key of the keyboard, by the number that X knows it by.
    void press(unsigned keySymbol);

private:
    bool fail(const QString& error);
    bool startDisplay();
    bool startAccessibilityBus();

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QProcess m_display;
    QProcess m_windowManager;
    std::unique_ptr<PrivateBus> m_sessionBus;
    QProcess m_launcher;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QTemporaryDir> m_home;
    QProcess m_program;
    QString m_error;
};
