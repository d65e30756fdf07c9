// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

/// A message bus for one test, which knows no services but those that the test connects to it.
class PrivateBus {
public:
    /// Whether this machine can run one.
    static bool isPossible();

    PrivateBus();
    ~PrivateBus();

    /// Whether the bus runs and takes connections.
    bool isRunning() const { return !m_address.isEmpty(); }

    const QString& address() const { return m_address; }

    /// A new connection, closed with the bus.
    QDBusConnection connect();
    /// Ends the bus at once, as a crash would.
    void kill();

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};
