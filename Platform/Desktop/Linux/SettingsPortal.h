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
    /// Gives the connection to ask on, or none; called by start().
    using Connect = std::function<std::optional<QDBusConnection>()>;
    using Changed = std::function<void(const DesktopAppearance&)>;

    explicit SettingsPortal(Connect connect);

    /// Asks, without waiting for the answer, and tells `changed` the answer and every change after
    /// it, as long as this lives. Where there is nobody to ask, `changed` is never called. Called
    /// once.
    void start(Changed changed);

    /// Tells at once, without waiting, an answer that has already come and would otherwise be told
    /// by a later turn of the event loop.
    void settle();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    /// The portal's values as they are; none: not told, or not of the agreed type.
    struct Values {
        std::optional<uint> colorScheme;
        std::optional<QColor> accent;
        std::optional<uint> contrast;
        std::optional<uint> reducedMotion;
        std::optional<bool> enablesAnimations;
        std::optional<double> animationDuration;

        /// Takes over one value; false if the key is none of ours.
        bool take(const QString& group, const QString& key, const QVariant& value);
        DesktopAppearance appearance() const;
    };

    void ask();
    void takeAnswer();
    void tell();

    Connect m_connect;
    std::optional<QDBusConnection> m_bus;
    Changed m_changed;
    QDBusPendingCallWatcher* m_asked = nullptr; // owned as a child
    Values m_values;
};

} // namespace platform
