// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/PersistentModel.h"

#include <functional>
#include <memory>

namespace platform {

/// What a store knows of its records: the name of their table, their attributes, how to make one.
struct RecordType {
    QString name;
    QStringList attributes;
    std::function<std::shared_ptr<PersistentModel>()> make;

    /// The description that the type gives of itself.
    template <class Model>
    static RecordType of() {
        RecordType type{Model::recordName(), {}, [] { return std::make_shared<Model>(); }};
        const Model example;
        for (const Attribute* attribute : example.attributes())
            type.attributes.append(attribute->name());
        return type;
    }
};

} // namespace platform
