// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/SettingsPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

const auto service = u"org.freedesktop.portal.Desktop"_s;
const auto path = u"/org/freedesktop/portal/desktop"_s;
const auto interface = u"org.freedesktop.portal.Settings"_s;

const auto appearanceGroup = u"org.freedesktop.appearance"_s;
const auto gnomeGroup = u"org.gnome.desktop.interface"_s;
const auto gnomeWindowGroup = u"org.gnome.desktop.wm.preferences"_s;
const auto plasmaGroup = u"org.kde.kdeglobals.KDE"_s;

/// A value may come in more than one wrapping.
QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

template <class T>
std::optional<T> valueOf(const QVariant& value) {
    return value.metaType() == QMetaType::fromType<T>() ? std::optional(value.value<T>())
                                                        : std::nullopt;
}

/// A colour of three parts from 0 to 1; anything else stands for no colour.
std::optional<QColor> colorOf(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != u"(ddd)")
        return std::nullopt;
    double red = 0;
    double green = 0;
    double blue = 0;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    for (const double part : {red, green, blue})
        if (!(part >= 0 && part <= 1)) // not a number is out of range, too
            return std::nullopt;
    return QColor(QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                                   static_cast<float>(blue))
                      .rgb());
}

/// What the settings say; one that is not there, or not of the agreed type, says nothing.
DesktopAppearance appearanceIn(const QMap<QString, QVariantMap>& settings) {
    const auto setting = [&settings](const QString& group, const QString& key) {
        return unwrapped(settings.value(group).value(key));
    };
    const auto colorScheme = valueOf<uint>(setting(appearanceGroup, u"color-scheme"_s));
    const auto contrast = valueOf<uint>(setting(appearanceGroup, u"contrast"_s));
    const auto reducedMotion = valueOf<uint>(setting(appearanceGroup, u"reduced-motion"_s));
    const auto animations = valueOf<bool>(setting(gnomeGroup, u"enable-animations"_s));
    bool hasDuration = false;
    const double duration =
        setting(plasmaGroup, u"AnimationDurationFactor"_s).toString().toDouble(&hasDuration);

    DesktopAppearance result;
    if (colorScheme == 1U || colorScheme == 2U)
        result.isDark = colorScheme == 1U;
    result.accent = colorOf(setting(appearanceGroup, u"accent-color"_s));
    if (reducedMotion || animations || hasDuration)
        result.reducesMotion =
            reducedMotion == 1U || animations == false || (hasDuration && duration == 0);
    if (contrast)
        result.increasesContrast = contrast == 1U;
    result.windowButtons = valueOf<QString>(setting(gnomeWindowGroup, u"button-layout"_s));
    return result;
}

} // namespace

void SettingsPortal::start(const std::optional<QDBusConnection>& bus, Changed changed) {
    m_changed = std::move(changed);
    m_bus = bus;
    if (!m_bus)
        return;
    // First listen, then ask: no change can fall between the two.
    m_bus->connect(service, path, interface, u"SettingChanged"_s, this,
                   SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto* watcher =
        new QDBusServiceWatcher(service, *m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    QObject::connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
    ask();
}

void SettingsPortal::settle() {
    if (m_asked && m_asked->isFinished())
        takeAnswer();
}

void SettingsPortal::ask() {
    auto question = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    question << QStringList{appearanceGroup, gnomeGroup, gnomeWindowGroup, plasmaGroup};
    delete m_asked; // an older answer is of no interest any more
    m_asked = new QDBusPendingCallWatcher(m_bus->asyncCall(question), this);
    QObject::connect(m_asked, &QDBusPendingCallWatcher::finished, this, [this] { takeAnswer(); });
}

void SettingsPortal::takeAnswer() {
    const QDBusMessage answer = m_asked->reply();
    m_asked->disconnect(this);
    m_asked->deleteLater(); // it may be the sender of the signal that led here
    m_asked = nullptr;
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != u"a{sa{sv}}")
        return;
    m_settings = qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().constFirst());
    m_changed(appearanceIn(m_settings));
}

void SettingsPortal::settingChanged(const QString& group, const QString& key,
                                    const QDBusVariant& value) {
    const DesktopAppearance before = appearanceIn(m_settings);
    m_settings[group].insert(key, value.variant());
    if (const DesktopAppearance now = appearanceIn(m_settings); now != before)
        m_changed(now);
}

} // namespace platform
