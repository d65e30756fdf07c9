// SPDX-License-Identifier: MIT
#include "tests/Tellwick/Interface/AccessibleDesktop.h"

#include <QDBusReply>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20000; // milliseconds
const auto busName = u"tests-accessibility"_s;

bool end(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return true;
    process.terminate();
    if (process.waitForFinished(patience))
        return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    process.kill();
    process.waitForFinished();
    return false;
}

} // namespace

AccessibleDesktop::~AccessibleDesktop() {
    end(m_program);
    if (m_bus)
        QDBusConnection::disconnectFromBus(busName);
    end(m_launcher);
}

bool AccessibleDesktop::fail(const QString& error) {
    m_error = error;
    return false;
}

bool AccessibleDesktop::start() {
    const auto session = QDBusConnection::sessionBus();
    if (!qEnvironmentVariableIsSet("DISPLAY") || !session.isConnected())
        return fail(u"Run it in scripts/with-display --managed."_s);
    const auto launcher = QStandardPaths::findExecutable(
        u"at-spi-bus-launcher"_s, {u"/usr/libexec"_s, u"/usr/lib/at-spi2-core"_s});
    if (launcher.isEmpty())
        return fail(u"at-spi2-core is not installed."_s);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    environment.insert(u"HOME"_s, m_folder.path());
    m_launcher.setProcessEnvironment(environment);
    m_launcher.setStandardErrorFile(QProcess::nullDevice()); // it has no settings to read here
    m_launcher.start(launcher, {u"--launch-immediately"_s});
    const auto question = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                         u"org.a11y.Bus"_s, u"GetAddress"_s);
    QDBusReply<QString> address;
    const auto isThere = [&] {
        address = session.call(question);
        return address.isValid();
    };
    if (!QTest::qWaitFor(isThere, patience))
        return fail(u"The accessibility bus does not start: "_s + address.error().message());
    m_bus = QDBusConnection::connectToBus(address.value(), busName);
    if (!m_bus->isConnected())
        return fail(u"The accessibility bus takes no connection."_s);
    return true;
}

bool AccessibleDesktop::startProgram(const QString& path) {
    end(m_program);
    m_home = std::make_unique<QTemporaryDir>();
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const auto& folder : {u"HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_RUNTIME_DIR"_s})
        environment.insert(folder, m_home->path());
    environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    m_program.setProcessEnvironment(environment);
    m_program.setProcessChannelMode(QProcess::ForwardedChannels);
    m_program.start(path, QStringList());
    return m_program.waitForStarted();
}

bool AccessibleDesktop::endProgram() {
    return end(m_program);
}

void AccessibleDesktop::press(unsigned keySymbol) {
    constexpr quint32 pressAndRelease = 3; // of a symbol
    auto call = QDBusMessage::createMethodCall(
        u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/registry/deviceeventcontroller"_s,
        u"org.a11y.atspi.DeviceEventController"_s, u"GenerateKeyboardEvent"_s);
    call << static_cast<qint32>(keySymbol) << QString() << pressAndRelease;
    bus().call(call);
}
