// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/Attribute.h"

namespace platform {

/// An order of records: the latest by one of their dates first.
template <class Model>
struct SortDescriptor {
    DateAttribute Model::*latestFirst;
};

/// What to fetch: all records, in this order; where two are alike in it, in the store's own.
template <class Model>
struct FetchDescriptor {
    SortDescriptor<Model> sortBy;
};

} // namespace platform
