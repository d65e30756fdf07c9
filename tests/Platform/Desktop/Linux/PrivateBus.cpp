// SPDX-License-Identifier: MIT
#include "tests/Platform/Desktop/Linux/PrivateBus.h"

#include <QFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

constexpr auto configuration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

QString daemonProgram() {
    return QStandardPaths::findExecutable(u"dbus-daemon"_s);
}

} // namespace

bool PrivateBus::isPossible() {
    return !daemonProgram().isEmpty();
}

PrivateBus::PrivateBus() {
    const QString path = m_folder.filePath(u"bus.conf"_s);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(QString::fromLatin1(configuration).arg(m_folder.path()).toUtf8());
    file.close();
    m_daemon.start(daemonProgram(),
                   {u"--config-file="_s + path, u"--nofork"_s, u"--print-address"_s});
    while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(5000)) {
    }
    if (m_daemon.canReadLine())
        m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
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
