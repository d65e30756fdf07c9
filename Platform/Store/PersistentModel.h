// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/Attribute.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>

namespace platform {

class ModelContext;

/// What the store has of a record.
struct StoredRow {
    qint64 identifier;  ///< the store's own name for the record
    QByteArray version; ///< the record's first attribute, as it was last read or written
};

/// The base of the records that a store keeps.
///
/// A record type derives from it, names its table in a static `recordName()`, has its attributes as
/// members and a constructor without arguments. The first attribute gets a new value with every
/// change that is saved: by it a context sees that another program has written the record.
///
/// Records are used through std::shared_ptr, on the thread of their context. Within a context there
/// is one object for each record: two references denote the same record exactly when they point to
/// the same object.
class PersistentModel {
public:
    PersistentModel() = default;
    virtual ~PersistentModel() = default;

    /// The attributes in the order of their columns.
    const QList<Attribute*>& attributes() const { return m_attributes; }

private:
    Q_DISABLE_COPY(PersistentModel)
    friend class Attribute;
    friend class ModelContext;

    QList<Attribute*> m_attributes;
    ModelContext* m_context = nullptr;
    std::optional<StoredRow> m_stored; ///< none before the record has been saved
    bool m_hasChanges = false;         ///< whether the context has yet to write it
};

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
