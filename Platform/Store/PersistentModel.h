// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/Attribute.h"

#include <QByteArrayList>
#include <QList>

#include <memory>
#include <optional>

namespace platform {

class ModelContext;

/// The store's own name for a record: its row.
using PersistentIdentifier = qint64;

/// The base of the records that a store keeps.
///
/// A record type derives from it, names its table in a static `recordName()`, has its attributes as
/// members and a constructor without arguments. It is used through std::shared_ptr, on the thread
/// of its context. Within a context there is one object for each record: two references denote the
/// same record exactly when they point to the same object.
class PersistentModel : public std::enable_shared_from_this<PersistentModel> {
public:
    PersistentModel(const PersistentModel&) = delete;
    PersistentModel& operator=(const PersistentModel&) = delete;
    virtual ~PersistentModel();

    /// What the store knows the record by: none before the record has been saved.
    std::optional<PersistentIdentifier> persistentIdentifier() const { return m_identifier; }

    /// Whether the context that holds the record has yet to write a change of it.
    bool hasChanges() const { return m_hasChanges; }

    /// The attributes in the order of their columns.
    const QList<Attribute*>& attributes() const { return m_attributes; }

protected:
    PersistentModel();

private:
    friend class Attribute;
    friend class ModelContext;

    void markChanged();
    /// What the attributes that tell the record's state hold at present.
    QByteArrayList state() const;

    QList<Attribute*> m_attributes;
    ModelContext* m_context = nullptr;
    QString m_type; ///< the name of its RecordType, from the context
    std::optional<PersistentIdentifier> m_identifier;
    QByteArrayList m_savedState; ///< state() as the store had it when it was last read or written
    bool m_hasChanges = false;
};

} // namespace platform
