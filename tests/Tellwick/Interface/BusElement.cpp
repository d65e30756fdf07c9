// SPDX-License-Identifier: MIT
#include "tests/Tellwick/Interface/BusElement.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const auto accessible = u"org.a11y.atspi.Accessible"_s;

/// Numbers of states as the protocol gives them.
constexpr int showing = 25;
constexpr int visible = 30;

constexpr std::array<std::pair<int, const char*>, 21> stateNames{{
    {1, "active"},           {3, "busy"},       {4, "checked"},      {5, "collapsed"},
    {7, "editable"},         {9, "expandable"}, {10, "expanded"},    {11, "focusable"},
    {12, "focused"},         {16, "modal"},     {17, "multi-line"},  {20, "pressed"},
    {22, "selectable"},      {23, "selected"},  {26, "single-line"}, {27, "stale"},
    {38, "selectable-text"}, {39, "default"},   {41, "checkable"},   {42, "has-popup"},
    {43, "read-only"},
}};
constexpr int enabled = 8;

/// Numbers of roles: what a screen reader goes by, not the words that a toolkit sends with them.
constexpr std::array<std::pair<uint, const char*>, 25> roleNames{{
    {2, "alert"},      {7, "check box"},   {16, "dialog"},      {20, "filler"},
    {23, "frame"},     {26, "icon"},       {27, "image"},       {29, "label"},
    {31, "list"},      {32, "list item"},  {33, "menu"},        {35, "menu item"},
    {39, "panel"},     {41, "popup menu"}, {43, "push button"}, {48, "scroll bar"},
    {50, "separator"}, {51, "slider"},     {61, "text"},        {62, "toggle button"},
    {67, "unknown"},   {69, "window"},     {75, "application"}, {83, "heading"},
    {88, "link"},
}};

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

QString BusElement::role() const {
    const uint number = call(accessible, u"GetRole"_s).toUInt();
    for (const auto& [known, name] : roleNames)
        if (known == number)
            return QString::fromLatin1(name);
    return u"role %1"_s.arg(number);
}

quint64 BusElement::stateBits() const {
    const QVariant value = call(accessible, u"GetState"_s);
    const auto halves = qdbus_cast<QList<uint>>(value);
    return halves.size() == 2 ? halves[0] | quint64(halves[1]) << 32 : 0;
}

QStringList BusElement::states() const {
    const quint64 bits = stateBits();
    QStringList names;
    for (const auto& [number, name] : stateNames)
        if (bits >> number & 1)
            names.append(QString::fromLatin1(name));
    if (!(bits >> enabled & 1))
        names.append(u"disabled"_s);
    return names;
}

bool BusElement::isShown() const {
    const quint64 bits = stateBits();
    return (bits >> visible & 1) || (bits >> showing & 1);
}

BusElement BusElement::parent() const {
    const QVariant value = property(accessible, u"Parent"_s);
    return value.canConvert<QDBusArgument>() ? elementOf(m_bus, value.value<QDBusArgument>())
                                             : BusElement();
}

QList<BusElement> BusElement::children() const {
    return elementsOf(m_bus, call(accessible, u"GetChildren"_s));
}

BusElement BusElement::find(const QString& name, const QString& role) const {
    for (const BusElement& child : children()) {
        if (!child.isShown())
            continue;
        if (child.name() == name && child.role() == role)
            return child;
        if (const BusElement found = child.find(name, role); !found.isNull())
            return found;
    }
    return {};
}

QList<BusElement> BusElement::findAll(const QString& role) const {
    QList<BusElement> found;
    for (const BusElement& child : children()) {
        if (!child.isShown())
            continue;
        if (child.role() == role)
            found.append(child);
        found += child.findAll(role);
    }
    return found;
}

BusElement BusElement::findFocused() const {
    for (const BusElement& child : children()) {
        if (child.is(u"focused"_s))
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

QString BusElement::outline(int depth) const {
    QString lines =
        u"%1%2 \"%3\" %4"_s.arg(QString(2 * depth, u' '), role(), name(), states().join(u' '));
    if (const QString detail = description(); !detail.isEmpty())
        lines += u" (%1)"_s.arg(detail);
    lines += u'\n';
    for (const BusElement& child : children())
        if (child.isShown())
            lines += child.outline(depth + 1);
    return lines;
}
