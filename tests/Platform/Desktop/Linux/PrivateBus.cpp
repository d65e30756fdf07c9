// SPDX-License-Identifier: MIT
#include "tests/Platform/Desktop/Linux/PrivateBus.h"

#include "tests/support/Files.h"

#include <QStandardPaths>

using namespace Qt::StringLiterals;

bool PrivateBus::isPossible() {
    return !QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty();
}

PrivateBus::PrivateBus() {
    m_daemon.start(u"dbus-daemon"_s, {u"--config-file=" SCRIPTS_FOLDER "/session-bus.conf"_s,
                                      u"--address=unix:dir="_s + m_folder.path(), u"--nofork"_s,
                                      u"--print-address"_s});
    m_address = QString::fromUtf8(tests::lineOf(m_daemon));
}

PrivateBus::~PrivateBus() {
    for (const QString& name : std::as_const(m_names))
        QDBusConnection::disconnectFromBus(name);
    kill();
}

QDBusConnection PrivateBus::connect() {
    m_names.append(u"%1-%2"_s.arg(m_address).arg(m_names.size()));
    return QDBusConnection::connectToBus(m_address, m_names.constLast());
}

void PrivateBus::kill() {
    m_daemon.kill();
    m_daemon.waitForFinished();
}
