// SPDX-License-Identifier: MIT
#include "tests/Tellwick/Interface/AccessibleDesktop.h"

#include <QDBusInterface>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20000; // milliseconds
const auto busName = u"tests-accessibility"_s;

QString launcherProgram() {
    return QStandardPaths::findExecutable(u"at-spi-bus-launcher"_s,
                                          {u"/usr/libexec"_s, u"/usr/lib/at-spi2-core"_s});
}

} // namespace

AccessibleDesktop::AccessibleDesktop() {
    for (QProcess* process : {&m_display, &m_windowManager})
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_launcher.setStandardErrorFile(QProcess::nullDevice()); // it has no settings to read here
    m_program.setProcessChannelMode(QProcess::ForwardedChannels);
}

AccessibleDesktop::~AccessibleDesktop() {
    endProgram();
    if (m_bus)
        QDBusConnection::disconnectFromBus(busName);
    for (QProcess* process : {&m_launcher, &m_windowManager, &m_display}) {
        process->terminate();
        if (process->state() != QProcess::NotRunning && !process->waitForFinished(5000))
            process->kill();
    }
}

bool AccessibleDesktop::fail(const QString& error) {
    m_error = error;
    return false;
}

bool AccessibleDesktop::start() {
    if (!PrivateBus::isPossible())
        return fail(u"dbus-daemon is not installed."_s);
    m_environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"WAYLAND_DISPLAY", "XAUTHORITY", "AT_SPI_BUS_ADDRESS",
                             "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR", "QT_STYLE_OVERRIDE"})
        m_environment.remove(QString::fromLatin1(name));
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    m_environment.insert(u"HOME"_s, m_folder.path());
    if (!startDisplay())
        return false;
    m_sessionBus = std::make_unique<PrivateBus>();
    if (!m_sessionBus->isRunning())
        return fail(u"The session bus does not start."_s);
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_sessionBus->address());
    return startAccessibilityBus();
}

bool AccessibleDesktop::startDisplay() {
    m_display.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1000x1000x24"_s,
                                u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    if (!m_display.waitForStarted())
        return fail(u"Xvfb is not installed."_s);
    while (!m_display.canReadLine() && m_display.waitForReadyRead(patience)) {
    }
    const QString number = QString::fromLatin1(m_display.readLine().trimmed());
    if (number.isEmpty())
        return fail(u"Xvfb does not start."_s);
    m_environment.insert(u"DISPLAY"_s, u':' + number);
    m_windowManager.setProcessEnvironment(m_environment);
    m_windowManager.start(u"openbox"_s, {u"--sm-disable"_s});
    return m_windowManager.waitForStarted() || fail(u"openbox is not installed."_s);
}

bool AccessibleDesktop::startAccessibilityBus() {
    if (launcherProgram().isEmpty())
        return fail(u"at-spi2-core is not installed."_s);
    m_launcher.setProcessEnvironment(m_environment);
    m_launcher.start(launcherProgram(), {u"--launch-immediately"_s});
    QDBusConnection session = m_sessionBus->connect();
    const auto question = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                         u"org.a11y.Bus"_s, u"GetAddress"_s);
    const QDeadlineTimer limit(patience);
    QDBusReply<QString> address;
    do {
        QTest::qWait(20); // the launcher is still on its way to its name
        address = session.call(question);
    } while (!address.isValid() && !limit.hasExpired());
    if (!address.isValid())
        return fail(u"The accessibility bus does not start: "_s + address.error().message());
    m_bus = QDBusConnection::connectToBus(address.value(), busName);
    if (!m_bus->isConnected())
        return fail(u"The accessibility bus takes no connection."_s);
    return true;
}

bool AccessibleDesktop::startProgram(const QString& path) {
    m_home = std::make_unique<QTemporaryDir>();
    QProcessEnvironment environment = m_environment;
    environment.insert(u"HOME"_s, m_home->path());
    environment.insert(u"XDG_DATA_HOME"_s, m_home->path());
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_home->path());
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    m_program.setProcessEnvironment(environment);
    m_program.start(path, QStringList());
    return m_program.waitForStarted();
}

bool AccessibleDesktop::endProgram() {
    if (m_program.state() == QProcess::NotRunning)
        return true;
    m_program.terminate();
    if (!m_program.waitForFinished(patience)) {
        m_program.kill();
        m_program.waitForFinished();
        return false;
    }
    return m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0;
}

void AccessibleDesktop::press(unsigned keySymbol) {
    constexpr quint32 pressAndRelease = 3; // of a symbol
    auto call = QDBusMessage::createMethodCall(
        u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/registry/deviceeventcontroller"_s,
        u"org.a11y.atspi.DeviceEventController"_s, u"GenerateKeyboardEvent"_s);
    call << static_cast<qint32>(keySymbol) << QString() << pressAndRelease;
    bus().call(call);
}
