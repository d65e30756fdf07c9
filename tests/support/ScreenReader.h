// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessible>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <optional>

namespace tests {

/// A screen as assistive technology meets it: elements with names, roles and states, in order.
class ScreenReader {
public:
    using Element = QAccessibleInterface;

    explicit ScreenReader(QWidget* root)
        : m_root(root) {}

    /// Everything below the root that is shown, in reading order.
    QList<Element*> elements() const {
        QList<Element*> found;
        collect(QAccessible::queryAccessibleInterface(m_root), found);
        return found;
    }

    /// The names of the elements with that role, in reading order.
    QStringList names(QAccessible::Role role) const {
        QStringList names;
        for (Element* element : elements())
            if (element->role() == role)
                names.append(element->text(QAccessible::Name));
        return names;
    }

    /// Every text of one line or more that is only to be read, in reading order.
    QStringList texts() const {
        QStringList texts;
        for (Element* element : elements())
            if (element->role() == QAccessible::StaticText ||
                element->role() == QAccessible::Heading)
                texts.append(element->text(QAccessible::Name));
        return texts;
    }

    /// The one element of that name, and of that role if one is given; none if it is not shown.
    Element* find(const QString& name, std::optional<QAccessible::Role> role = {}) const {
        for (Element* element : elements())
            if (element->text(QAccessible::Name) == name && (!role || element->role() == *role))
                return element;
        return nullptr;
    }

    bool shows(const QString& name, std::optional<QAccessible::Role> role = {}) const {
        return find(name, role) != nullptr;
    }

    /// The widget of the one element of that name; none if it is not shown or is no such widget.
    template <class Widget = QWidget>
    Widget* widget(const QString& name, std::optional<QAccessible::Role> role = {}) const {
        Element* element = find(name, role);
        return element ? qobject_cast<Widget*>(element->object()) : nullptr;
    }

    /// Presses it as assistive technology does; false when there is nothing to press.
    bool press(const QString& name, std::optional<QAccessible::Role> role = {}) const {
        Element* element = find(name, role);
        auto* actions = element ? element->actionInterface() : nullptr;
        if (!actions || !actions->actionNames().contains(QAccessibleActionInterface::pressAction()))
            return false;
        actions->doAction(QAccessibleActionInterface::pressAction());
        return true;
    }

    /// Clicks with the pointer into its middle; false when it is not shown.
    bool click(const QString& name, std::optional<QAccessible::Role> role = {}) const {
        QWidget* target = widget(name, role);
        if (!target)
            return false;
        clickAt(target->mapTo(target->window(), target->rect().center()));
        return true;
    }

    /// Clicks at a point of the window.
    void clickAt(QPoint position, Qt::MouseButton button = Qt::LeftButton) const {
        QTest::mouseClick(m_root->window()->windowHandle(), button, Qt::NoModifier, position);
    }

    /// Presses a key, wherever the focus is.
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QTest::keyClick(m_root->window()->windowHandle(), key, modifiers);
    }

    /// Types a text, wherever the focus is.
    void type(const char* text) const {
        for (; *text; ++text)
            QTest::keyClick(m_root->window()->windowHandle(), *text);
    }

private:
    static void collect(Element* element, QList<Element*>& found) {
        for (int i = 0; i < element->childCount(); ++i) {
            Element* child = element->child(i);
            if (!child || child->state().invisible)
                continue;
            found.append(child);
            collect(child, found);
        }
    }

    QWidget* m_root;
};

} // namespace tests
