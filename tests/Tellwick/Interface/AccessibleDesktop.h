// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <optional>

/// The desktop that scripts/with-display --managed gave, with an accessibility bus and its registry
/// as a screen reader finds them. Nothing of the user's is touched.
class AccessibleDesktop {
public:
    ~AccessibleDesktop();

    /// Starts the bus; the error tells what cannot be had here.
    bool start();
    const QString& errorString() const { return m_error; }

    /// The accessibility bus.
    QDBusConnection& bus() { return *m_bus; }

    /// Starts a program on the desktop, with a home folder of its own. One that still runs is
    /// ended.
    bool startProgram(const QString& path);
    /// Ends the program and waits for it; whether it ended by itself and without a fault.
    bool endProgram();

    /// Presses and releases a key of the keyboard, by the number that X knows it by.
    void press(unsigned keySymbol);

private:
    bool fail(const QString& error);

    QTemporaryDir m_folder;
    QProcess m_launcher;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QTemporaryDir> m_home;
    QProcess m_program;
    QString m_error;
};
