// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QString>
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
    BusElement(QDBusConnection bus, QString service, QString path);

    /// The programs that the registry of the bus knows.
    static QList<BusElement> programs(const QDBusConnection& bus);

    bool isNull() const { return m_path.isEmpty(); }
    QString name() const;
    QString description() const;
    Role role() const;
    bool is(State state) const { return stateBits() >> static_cast<int>(state) & 1; }
    BusElement parent() const;
    QList<BusElement> children() const;

    /// The element of that name and role among those shown below this one, in reading order.
    BusElement find(Role role, const QString& name) const;
    /// The names of all of that role that are shown below this one, in reading order.
    QStringList namesOf(Role role) const;
    /// The one that has the keyboard's focus.
    BusElement findFocused() const;
    /// Whether this one is the other or lies below it.
    bool isWithin(const BusElement& other) const;

    /// Does its first action; false if it has none.
    bool act() const;
    /// The text in it.
    QString text() const;
    bool setText(const QString& text) const;

    friend bool operator==(const BusElement& a, const BusElement& b) {
        return a.m_service == b.m_service && a.m_path == b.m_path;
    }

private:
    QVariant call(const QString& interface, const QString& method,
                  const QVariantList& arguments = {}) const;
    QVariant property(const QString& interface, const QString& name) const;
    quint64 stateBits() const;
    QList<BusElement> shownChildren() const;

    QDBusConnection m_bus{QString()};
    QString m_service;
    QString m_path;
};
