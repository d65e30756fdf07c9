// SPDX-License-Identifier: MIT
#include "tests/Platform/Desktop/Linux/ScriptedPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace {

const auto service = u"org.freedesktop.portal.Desktop"_s;
const auto path = u"/org/freedesktop/portal/desktop"_s;
const auto interface = u"org.freedesktop.portal.Settings"_s;

} // namespace

QVariant portalColor(double red, double green, double blue) {
    QDBusArgument color;
    color.beginStructure();
    color << red << green << blue;
    color.endStructure();
    return QVariant::fromValue(color);
}

ScriptedPortal::ScriptedPortal(QDBusConnection bus)
    : m_bus(std::move(bus)) {
    qDBusRegisterMetaType<PortalSettings>();
    m_bus.registerVirtualObject(path, this);
}

ScriptedPortal::~ScriptedPortal() {
    m_bus.unregisterObject(path);
}

bool ScriptedPortal::appear() {
    return m_bus.registerService(service);
}

void ScriptedPortal::disappear() {
    m_bus.unregisterService(service);
}

void ScriptedPortal::changeValue(const PortalKey& key, const QVariant& value) {
    setValue(key, value);
    auto signal = QDBusMessage::createSignal(path, interface, u"SettingChanged"_s);
    signal << key.first << key.second << QVariant::fromValue(QDBusVariant(value));
    m_bus.send(signal);
}

bool ScriptedPortal::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.interface() != interface || message.member() != u"ReadAll")
        return false;
    m_questions.append(message.arguments().constFirst().toStringList());
    if (!m_answers) {
        message.setDelayedReply(true);
        return true;
    }
    PortalSettings asked;
    for (const QString& group : m_questions.constLast())
        if (m_settings.contains(group))
            asked.insert(group, m_settings.value(group));
    return connection.send(
        message.createReply(m_answer.isValid() ? m_answer : QVariant::fromValue(asked)));
}

QString ScriptedPortal::introspect(const QString& /*path*/) const {
    return {};
}
