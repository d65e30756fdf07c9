// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>

/// An element of a program as assistive technology meets it on the accessibility bus. A value: it
/// names the element, every question is asked anew. What is gone answers with nothing.
class BusElement {
public:
    /// As the protocol numbers them: what a screen reader goes by, not the words that a toolkit
    /// sends with them.
    enum class Role : uint {
        Alert = 2,
        Dialog = 16,
        Filler = 20,
        Frame = 23,
        Label = 29,
        List = 31,
        ListItem = 32,
        MenuItem = 35,
        PopupMenu = 41,
        ProgressBar = 42,
        PushButton = 43,
        Text = 61,
        Heading = 83,
    };
    enum class State {
        Active = 1,
        Editable = 7,
        Enabled = 8,
        Expandable = 9,
        Expanded = 10,
        Focused = 12,
        Modal = 16,
        MultiLine = 17,
        Pressed = 20,
        Selected = 23,
    };

    BusElement() = default;
    BusElement(QDBusConnection bus, QString service, QString path)
        : m_bus(std::move(bus))
        , m_service(std::move(service))
        , m_path(std::move(path)) {}

    /// The programs that the registry of the bus knows.
    static QList<BusElement> programs(const QDBusConnection& bus) {
        return BusElement(bus, QStringLiteral("org.a11y.atspi.Registry"),
                          QStringLiteral("/org/a11y/atspi/accessible/root"))
            .children();
    }

    bool isNull() const { return m_path.isEmpty(); }
    friend bool operator==(const BusElement& a, const BusElement& b) {
        return a.m_service == b.m_service && a.m_path == b.m_path;
    }

    QString name() const { return property("Name").toString(); }
    QString description() const { return property("Description").toString(); }
    /// A button is one whatever it is for, which later releases of the toolkit tell apart.
    Role role() const {
        constexpr uint toggleButton = 62;
        constexpr uint menuButton = 129;
        const uint role = call("Accessible", "GetRole").toUInt();
        return role == toggleButton || role == menuButton ? Role::PushButton
                                                          : static_cast<Role>(role);
    }
    bool is(State state) const { return stateBits() >> static_cast<int>(state) & 1; }
    BusElement parent() const {
        const QVariant value = property("Parent");
        return value.canConvert<QDBusArgument>() ? element(value.value<QDBusArgument>())
                                                 : BusElement();
    }
    QList<BusElement> children() const {
        QList<BusElement> elements;
        const QVariant value = call("Accessible", "GetChildren");
        if (!value.canConvert<QDBusArgument>())
            return elements;
        const auto argument = value.value<QDBusArgument>();
        argument.beginArray();
        while (!argument.atEnd())
            elements.append(element(argument));
        argument.endArray();
        elements.removeAll(BusElement());
        return elements;
    }

    /// The element of that role and name among those shown below this one, in reading order.
    BusElement find(Role role, const QString& name) const {
        for (const BusElement& child : shownChildren()) {
            if (child.name() == name && child.role() == role)
                return child;
            if (const BusElement found = child.find(role, name); !found.isNull())
                return found;
        }
        return {};
    }
    /// The names of all of that role that are shown below this one, in reading order.
    QStringList namesOf(Role role) const {
        QStringList names;
        for (const BusElement& child : shownChildren()) {
            if (child.role() == role)
                names.append(child.name());
            names += child.namesOf(role);
        }
        return names;
    }
    /// The one that has the keyboard's focus.
    BusElement findFocused() const {
        for (const BusElement& child : children()) {
            if (child.is(State::Focused))
                return child;
            if (const BusElement found = child.findFocused(); !found.isNull())
                return found;
        }
        return {};
    }
    /// Whether this one is the other or lies below it.
    bool isWithin(const BusElement& other) const {
        return !isNull() && (*this == other || parent().isWithin(other));
    }

    /// Does its first action; false if it has none.
    bool act() const { return call("Action", "DoAction", {0}).toBool(); }
    /// What it shows of a range of numbers.
    double value() const { return property("CurrentValue", "Value").toDouble(); }
    /// The text in it.
    QString text() const { return call("Text", "GetText", {0, -1}).toString(); }
    bool setText(const QString& text) const {
        return call("EditableText", "SetTextContents", {text}).toBool();
    }

private:
    QVariant call(const char* interface, const char* method,
                  const QVariantList& arguments = {}) const {
        return ask(QLatin1String("org.a11y.atspi.") + QLatin1String(interface), method, arguments);
    }
    QVariant property(const char* name, const char* interface = "Accessible") const {
        const QVariant value =
            ask(QStringLiteral("org.freedesktop.DBus.Properties"), "Get",
                {QString(QLatin1String("org.a11y.atspi.") + QLatin1String(interface)),
                 QString::fromLatin1(name)});
        return value.value<QDBusVariant>().variant();
    }
    QVariant ask(const QString& interface, const char* method,
                 const QVariantList& arguments) const {
        if (isNull())
            return {};
        auto message = QDBusMessage::createMethodCall(m_service, m_path, interface,
                                                      QString::fromLatin1(method));
        message.setArguments(arguments);
        return m_bus.call(message, QDBus::Block, 10000).arguments().value(0);
    }
    BusElement element(const QDBusArgument& argument) const {
        QString service;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> service >> path;
        argument.endStructure();
        const bool isNone = path.path().endsWith(QLatin1String("/null"));
        return isNone ? BusElement() : BusElement(m_bus, service, path.path());
    }
    quint64 stateBits() const {
        const auto halves = qdbus_cast<QList<uint>>(call("Accessible", "GetState"));
        return halves.size() == 2 ? halves[0] | quint64(halves[1]) << 32 : 0;
    }
    QList<BusElement> shownChildren() const {
        QList<BusElement> shown = children();
        constexpr quint64 bits = 1ULL << 25 | 1ULL << 30; // showing, visible
        shown.removeIf([](const BusElement& child) { return !(child.stateBits() & bits); });
        return shown;
    }

    QDBusConnection m_bus{QString()};
    QString m_service;
    QString m_path;
};
