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
    BusElement() = default;
    BusElement(QDBusConnection bus, QString service, QString path);

    /// The programs that the registry of the bus knows.
    static QList<BusElement> programs(const QDBusConnection& bus);

    bool isNull() const { return m_path.isEmpty(); }
    const QString& path() const { return m_path; }

    QString name() const;
    QString description() const;
    /// The role by its name, such as "push button".
    QString role() const;
    /// The states by their names, such as "focused"; those that say little are left out.
    QStringList states() const;
    bool is(const QString& state) const { return states().contains(state); }
    BusElement parent() const;
    QList<BusElement> children() const;

    /// The element of that name and role among those shown below this one, in reading order.
    BusElement find(const QString& name, const QString& role) const;
    /// All of that role that are shown below this one, in reading order.
    QList<BusElement> findAll(const QString& role) const;
    /// The one that has the keyboard's focus.
    BusElement findFocused() const;
    /// Whether this one is the other or lies below it.
    bool isWithin(const BusElement& other) const;

    /// Does its first action; false if it has none.
    bool act() const;
    /// The text in it.
    QString text() const;
    bool setText(const QString& text) const;

    /// Everything below, a line each: role, name, states and description, indented.
    QString outline(int depth = 0) const;

    friend bool operator==(const BusElement& a, const BusElement& b) {
        return a.m_service == b.m_service && a.m_path == b.m_path;
    }

private:
    QVariant call(const QString& interface, const QString& method,
                  const QVariantList& arguments = {}) const;
    QVariant property(const QString& interface, const QString& name) const;
    quint64 stateBits() const;
    bool isShown() const;

    QDBusConnection m_bus{QString()};
    QString m_service;
    QString m_path;
};
