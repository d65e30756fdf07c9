// SPDX-License-Identifier: MIT
#pragma once

#include <QProperty>

namespace platform {

/// A piece of observable state of a comparable type: reading it inside observe() registers the
/// reader, and setting it notifies the readers when, and only when, the value actually changes.
///
/// Used on the thread of the object that holds it.
template <class T>
using Observed = QProperty<T>;

/// A piece of observable state that notifies its readers at every assignment, also of an equal
/// value.
///
/// Meant for lists, whose comparison would cost more than a notification, and which change in
/// place. Used on the thread of the object that holds it.
template <class T>
class ObservedOnAssignment {
public:
    ObservedOnAssignment() = default;
    explicit ObservedOnAssignment(T initial)
        : m_value(std::move(initial)) {}

    /// The value; registers the reader. The reference holds until the next change.
    const T& value() const {
        [[maybe_unused]] const auto registered = m_revision.value();
        return m_value;
    }
    operator const T&() const { return value(); }

    void setValue(T value) {
        m_value = std::move(value);
        notify();
    }
    ObservedOnAssignment& operator=(T value) {
        setValue(std::move(value));
        return *this;
    }

    /// Changes the value in place, without a copy of it, and notifies: `change(T&)`.
    template <class Change>
    void mutate(Change&& change) {
        std::forward<Change>(change)(m_value);
        notify();
    }

private:
    void notify() { m_revision.setValue(m_revision.valueBypassingBindings() + 1); }

    T m_value{};
    QProperty<quint64> m_revision{0};
};

} // namespace platform
