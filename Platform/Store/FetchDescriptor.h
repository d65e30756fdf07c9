// SPDX-License-Identifier: MIT
#pragma once

#include <QList>

#include <functional>

namespace platform {

enum class SortOrder { Forward, Reverse };

/// An order of records by one attribute: `SortDescriptor(&ChatSession::updatedAt,
/// SortOrder::Reverse)`.
template <class Model>
class SortDescriptor {
public:
    template <class Attribute>
    SortDescriptor(Attribute Model::*attribute, SortOrder order = SortOrder::Forward)
        : m_comesBefore([attribute, order](const Model& a, const Model& b) {
            const Model& first = order == SortOrder::Forward ? a : b;
            const Model& second = order == SortOrder::Forward ? b : a;
            return (first.*attribute).value() < (second.*attribute).value();
        }) {}

    bool comesBefore(const Model& a, const Model& b) const { return m_comesBefore(a, b); }

private:
    std::function<bool(const Model&, const Model&)> m_comesBefore;
};

/// What to fetch: all records of a type, in the order of the first descriptor, where that leaves
/// two alike in that of the second, and so on; without descriptors in the store's own order.
template <class Model>
struct FetchDescriptor {
    QList<SortDescriptor<Model>> sortBy;
};

} // namespace platform
