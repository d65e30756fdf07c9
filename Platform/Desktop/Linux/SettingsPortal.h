// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/AppearanceSettings.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

QT_BEGIN_NAMESPACE
class QDBusPendingCallWatcher;
QT_END_NAMESPACE

namespace platform {

/// Asks the desktop's settings portal for the user's wishes and listens to its changes. Main thread
/// only.
///
/// Knows the portal's own keys (colour scheme, accent colour, contrast, reduced motion) and, for
/// motion, the two older ones of GNOME and Plasma. A portal that starts later, or anew, is asked
/// then. What was told last holds when the portal or the bus goes away.
class SettingsPortal final : public QObject {
    Q_OBJECT

public:
    using Changed = std::function<void(const DesktopAppearance&)>;

    /// Asks, without waiting for the answer, and tells `changed` the answer and every change after
    /// it, as long as this lives. Where there is nobody to ask, `changed` is never called. Called
    /// once.
    ///
    /// @param bus the connection to ask on; none where there is no bus.
    void start(const std::optional<QDBusConnection>& bus, Changed changed);

    /// Tells at once, without waiting, an answer that has already come and would otherwise be told
    /// by a later turn of the event loop.
    void settle();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask();
    void takeAnswer();

    std::optional<QDBusConnection> m_bus;
    Changed m_changed;
    QDBusPendingCallWatcher* m_asked = nullptr; // owned as a child
    QMap<QString, QVariantMap> m_settings;      // what was told last, by group and key
};

} // namespace platform
