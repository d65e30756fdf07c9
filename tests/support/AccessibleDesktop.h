// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusReply>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

/// The desktop that scripts/with-display --managed gave, with an accessibility bus and its registry
/// as a screen reader finds them. Nothing of the user's is touched.
class AccessibleDesktop {
public:
    ~AccessibleDesktop() {
        end(m_program);
        if (m_bus)
            QDBusConnection::disconnectFromBus(busName);
        end(m_launcher);
    }

    /// Starts the bus; the error tells what cannot be had here.
    bool start() {
        using namespace Qt::StringLiterals;
        const auto session = QDBusConnection::sessionBus();
        if (!qEnvironmentVariableIsSet("DISPLAY") || !session.isConnected())
            return fail(u"Run it in scripts/with-display --managed."_s);
        const auto launcher = QStandardPaths::findExecutable(
            u"at-spi-bus-launcher"_s, {u"/usr/libexec"_s, u"/usr/lib/at-spi2-core"_s});
        if (launcher.isEmpty())
            return fail(u"at-spi2-core is not installed."_s);
        m_launcher.setProcessEnvironment(homeIn(m_folder));
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
        return m_bus->isConnected() || fail(u"The accessibility bus takes no connection."_s);
    }
    const QString& errorString() const { return m_error; }

    /// The accessibility bus.
    QDBusConnection& bus() { return *m_bus; }

    /// Starts a program on the desktop, with a home folder of its own. One that still runs is
    /// ended.
    bool startProgram(const QString& path) {
        end(m_program);
        m_home = std::make_unique<QTemporaryDir>();
        auto environment = homeIn(*m_home);
        environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
        m_program.setProcessEnvironment(environment);
        m_program.setProcessChannelMode(QProcess::ForwardedChannels);
        m_program.start(path, QStringList());
        return m_program.waitForStarted();
    }
    /// Ends the program and waits for it; whether it ended by itself and without a fault.
    bool endProgram() { return end(m_program); }
    /// Waits until the program has ended by itself; false if it does not, or with a fault.
    bool programEnds() {
        if (m_program.state() != QProcess::NotRunning && !m_program.waitForFinished(patience))
            return false;
        return m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0;
    }

    /// Presses and releases a key of the keyboard, by the number that X knows it by.
    void press(unsigned keySymbol) {
        using namespace Qt::StringLiterals;
        constexpr quint32 pressAndRelease = 3; // of a symbol
        auto call = QDBusMessage::createMethodCall(
            u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/registry/deviceeventcontroller"_s,
            u"org.a11y.atspi.DeviceEventController"_s, u"GenerateKeyboardEvent"_s);
        call << static_cast<qint32>(keySymbol) << QString() << pressAndRelease;
        bus().call(call);
    }

private:
    static bool end(QProcess& process) {
        if (process.state() == QProcess::NotRunning)
            return true;
        process.terminate();
        if (process.waitForFinished(patience))
            return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
        process.kill();
        process.waitForFinished();
        return false;
    }
    static QProcessEnvironment homeIn(const QTemporaryDir& folder) {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            environment.insert(QString::fromLatin1(variable), folder.path());
        return environment;
    }
    bool fail(const QString& error) {
        m_error = error;
        return false;
    }

    static constexpr int patience = 20000; // milliseconds
    inline static const QString busName = QStringLiteral("tests-accessibility");

    QTemporaryDir m_folder;
    QProcess m_launcher;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QTemporaryDir> m_home;
    QProcess m_program;
    QString m_error;
};
