// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessible>
#include <QString>
#include <QStringList>

class QWidget;

namespace platform {

/// A text as assistive technology can be told it: its bus ends a text at a NUL, so U+FFFD stands
/// for that. As long as the text. Any thread.
QString speakable(QString text);

/// What a custom-painted widget tells assistive technology. A widget class derives from QWidget and
/// from this; its interface then is made of these answers.
///
/// The name is the widget's accessibleName() or, without one, accessibleText().
class AccessibleElement {
public:
    virtual ~AccessibleElement() = default;

    virtual QAccessible::Role accessibleRole() const = 0;
    /// Adds to the state that every widget has (focusable, disabled, invisible…).
    virtual void addAccessibleState(QAccessible::State&) const {}
    virtual QString accessibleText() const { return {}; }
    /// The description, if the widget has no accessibleDescription().
    virtual QString accessibleDetail() const { return {}; }
    /// Names as in QAccessibleActionInterface, all for one action.
    virtual QStringList accessibleActions() const { return {}; }
    virtual void performAccessibleAction() {}

    /// Makes the elements known to Qt; to call it again changes nothing.
    static void install();
};

/// Tells assistive technology which parts of a widget's state have changed.
void tellChanged(QWidget* widget, QAccessible::State changed);

/// Has assistive technology read a text out, once, without moving the focus.
///
/// Before Qt 6.8, which has no announcements, the widget tells that its name has changed, which is
/// what screen readers of the time listen to; so the text should be the widget's name.
void announce(QWidget* widget, const QString& text);

} // namespace platform
