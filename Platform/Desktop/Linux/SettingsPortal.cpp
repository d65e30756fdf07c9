// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/SettingsPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QGuiApplication>

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

/// The font that a description names, family first, its size in points last: "Cantarell Bold 11".
/// None where it names no size.
std::optional<QFont> fontOf(const QString& description, double scale) {
    QStringList words = description.split(u' ', Qt::SkipEmptyParts);
    bool isSize = false;
    const double size = words.isEmpty() ? 0 : words.takeLast().toDouble(&isSize);
    if (!isSize || size <= 0 || words.isEmpty())
        return std::nullopt;
    QFont font;
    static const QMap<QString, QFont::Weight> weights{
        {u"Thin"_s, QFont::Thin},         {u"Light"_s, QFont::Light},
        {u"Regular"_s, QFont::Normal},    {u"Book"_s, QFont::Normal},
        {u"Medium"_s, QFont::Medium},     {u"Semi-Bold"_s, QFont::DemiBold},
        {u"SemiBold"_s, QFont::DemiBold}, {u"Bold"_s, QFont::Bold}};
    while (words.size() > 1) {
        if (weights.contains(words.constLast()))
            font.setWeight(weights.value(words.constLast()));
        else if (words.constLast() == u"Italic" || words.constLast() == u"Oblique")
            font.setItalic(true);
        else
            break;
        words.removeLast();
    }
    font.setFamily(words.join(u' ').remove(u','));
    font.setPointSizeF(size * scale);
    return font;
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
    if (!settings.contains(plasmaGroup)) { // whose fonts Qt knows by itself
        // On X11 the scale is in the display's resolution already.
        const bool scales = QGuiApplication::platformName().startsWith(u"wayland");
        const double factor =
            valueOf<double>(setting(gnomeGroup, u"text-scaling-factor"_s)).value_or(1);
        const double scale = scales && factor > 0 && factor < 10 ? factor : 1;
        const auto text = [&](const QString& key) {
            return valueOf<QString>(setting(gnomeGroup, key)).value_or(QString());
        };
        result.font = fontOf(text(u"font-name"_s), scale);
        result.monospacedFont = fontOf(text(u"monospace-font-name"_s), scale);
    }
    return result;
}

} // namespace

void SettingsPortal::start(const std::optional<QDBusConnection>& bus, Changed changed) {
    m_changed = std::move(changed);
    m_bus = bus;
    if (!m_bus)
        return;
    // First listen, then ask: no change can fall between the two. The bus looks a slot's types up
    // by name, and knows this one only once somebody has registered it.
    qRegisterMetaType<QDBusVariant>("QDBusVariant");
    [[maybe_unused]] const bool isHeard =
        m_bus->connect(service, path, interface, u"SettingChanged"_s, this,
                       SLOT(settingChanged(QString, QString, QDBusVariant)));
    Q_ASSERT(isHeard || !m_bus->isConnected());
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
