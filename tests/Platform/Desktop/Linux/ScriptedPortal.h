// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QMap>
#include <QVariant>

/// A colour as the portal sends it.
QVariant portalColor(double red, double green, double blue);

/// The group of a setting, and its name there.
using PortalKey = std::pair<QString, QString>;
using PortalSettings = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(PortalSettings)

/// A settings portal that says what a test wants.
class ScriptedPortal final : public QDBusVirtualObject {
public:
    explicit ScriptedPortal(QDBusConnection bus);
    ~ScriptedPortal() override;

    /// Takes the portal's name on the bus.
    bool appear();
    /// Gives the name up.
    void disappear();

    void setValue(const PortalKey& key, const QVariant& value) {
        m_settings[key.first].insert(key.second, value);
    }
    /// Sets a value and tells everybody.
    void changeValue(const PortalKey& key, const QVariant& value);

    void setAnswers(bool answers) { m_answers = answers; }
    /// Answers with this in place of the settings.
    void setAnswer(const QVariant& answer) { m_answer = answer; }

    /// The groups that each question named.
    const QList<QStringList>& questions() const { return m_questions; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;

private:
    QDBusConnection m_bus;
    PortalSettings m_settings;
    QVariant m_answer;
    bool m_answers = true;
    QList<QStringList> m_questions;
};
