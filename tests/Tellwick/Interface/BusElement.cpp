// SPDX-License-Identifier: MIT
#include "tests/Tellwick/Interface/BusElement.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const auto accessible = u"org.a11y.atspi.Accessible"_s;

BusElement elementOf(const QDBusConnection& bus, const QDBusArgument& argument) {
    QString service;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> service >> path;
    argument.endStructure();
    return path.path().endsWith("/null"_L1) ? BusElement() : BusElement(bus, service, path.path());
}

QList<BusElement> elementsOf(const QDBusConnection& bus, const QVariant& value) {
    QList<BusElement> elements;
    if (!value.canConvert<QDBusArgument>())
        return elements;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd())
        elements.append(elementOf(bus, argument));
    argument.endArray();
    elements.removeAll(BusElement());
    return elements;
}

} // namespace

BusElement::BusElement(QDBusConnection bus, QString service, QString path)
    : m_bus(std::move(bus))
    , m_service(std::move(service))
    , m_path(std::move(path)) {}

QList<BusElement> BusElement::programs(const QDBusConnection& bus) {
    const BusElement registry(bus, u"org.a11y.atspi.Registry"_s,
                              u"/org/a11y/atspi/accessible/root"_s);
    return registry.children();
}

QVariant BusElement::call(const QString& interface, const QString& method,
                          const QVariantList& arguments) const {
    if (isNull())
        return {};
    auto message = QDBusMessage::createMethodCall(m_service, m_path, interface, method);
    message.setArguments(arguments);
    return m_bus.call(message, QDBus::Block, 10000).arguments().value(0);
}

QVariant BusElement::property(const QString& interface, const QString& name) const {
    const QVariant value = call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    return value.value<QDBusVariant>().variant();
}

QString BusElement::name() const {
    return property(accessible, u"Name"_s).toString();
}

QString BusElement::description() const {
    return property(accessible, u"Description"_s).toString();
}

BusElement::Role BusElement::role() const {
    return static_cast<Role>(call(accessible, u"GetRole"_s).toUInt());
}

quint64 BusElement::stateBits() const {
    const auto halves = qdbus_cast<QList<uint>>(call(accessible, u"GetState"_s));
    return halves.size() == 2 ? halves[0] | quint64(halves[1]) << 32 : 0;
}

BusElement BusElement::parent() const {
    const QVariant value = property(accessible, u"Parent"_s);
    return value.canConvert<QDBusArgument>() ? elementOf(m_bus, value.value<QDBusArgument>())
                                             : BusElement();
}

QList<BusElement> BusElement::children() const {
    return elementsOf(m_bus, call(accessible, u"GetChildren"_s));
}

QList<BusElement> BusElement::shownChildren() const {
    QList<BusElement> shown = children();
    constexpr quint64 bits = 1ULL << 25 | 1ULL << 30; // showing, visible
    shown.removeIf([](const BusElement& child) { return !(child.stateBits() & bits); });
    return shown;
}

BusElement BusElement::find(Role role, const QString& name) const {
    for (const BusElement& child : shownChildren()) {
        if (child.name() == name && child.role() == role)
            return child;
        if (const BusElement found = child.find(role, name); !found.isNull())
            return found;
    }
    return {};
}

QStringList BusElement::namesOf(Role role) const {
    QStringList names;
    for (const BusElement& child : shownChildren()) {
        if (child.role() == role)
            names.append(child.name());
        names += child.namesOf(role);
    }
    return names;
}

BusElement BusElement::findFocused() const {
    for (const BusElement& child : children()) {
        if (child.is(State::Focused))
            return child;
        if (const BusElement found = child.findFocused(); !found.isNull())
            return found;
    }
    return {};
}

bool BusElement::isWithin(const BusElement& other) const {
    for (BusElement element = *this; !element.isNull(); element = element.parent())
        if (element == other)
            return true;
    return false;
}

bool BusElement::act() const {
    return call(u"org.a11y.atspi.Action"_s, u"DoAction"_s, {0}).toBool();
}

QString BusElement::text() const {
    return call(u"org.a11y.atspi.Text"_s, u"GetText"_s, {0, -1}).toString();
}

bool BusElement::setText(const QString& text) const {
    return call(u"org.a11y.atspi.EditableText"_s, u"SetTextContents"_s, {text}).toBool();
}
