// SPDX-License-Identifier: MIT
#pragma once

#include <QProperty>

#include <functional>

namespace tests {

/// Counts how often a piece of observed state notifies its readers, and calls a function each time.
/// The state outlives it.
class Notifications {
public:
    template <class State>
    explicit Notifications(
        const State& state, std::function<void()> onNotified = [] {})
        : m_onNotified(std::move(onNotified)) {
        m_tracker.setBinding([this, &state] {
            static_cast<void>(state.value());
            if (++m_count > 0)
                m_onNotified();
            return m_count;
        });
    }

    int count() const { return m_count; }

private:
    std::function<void()> m_onNotified;
    int m_count = -1; // the binding is evaluated once to begin with
    QProperty<int> m_tracker;
};

} // namespace tests
