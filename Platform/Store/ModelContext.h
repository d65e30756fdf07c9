// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/ModelContainer.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <vector>

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

/// The records of a store as a program works with them: it fetches, makes, changes and deletes
/// them here, and saves what has changed as one transaction.
///
/// Within a context a record is one object, which the context keeps. Changes that nobody saves are
/// saved by themselves: a moment after they were made, when the application quits, and at the end
/// of the context. A save that fails leaves them pending, and they are tried again after a while.
///
/// Records may outlive the context. All of it belongs to one thread, which runs a Qt event loop.
class ModelContext {
public:
    /// How long after a change it is saved by itself.
    static constexpr std::chrono::milliseconds defaultAutosaveDelay{500};
    /// The longest time between two attempts to save by itself.
    static constexpr std::chrono::milliseconds longestAutosaveDelay{60000};

    /// The container outlives the context.
    explicit ModelContext(const ModelContainer& container,
                          std::chrono::milliseconds autosaveDelay = defaultAutosaveDelay);
    ~ModelContext();

    /// The records as the store holds them, with all pending changes of this context. `Model` is
    /// the container's type of records. Throws StoreError.
    template <class Model>
    QList<std::shared_ptr<Model>> fetch(const FetchDescriptor<Model>& descriptor) {
        QList<std::shared_ptr<Model>> records;
        for (const Record& record : fetchAll())
            records.append(std::static_pointer_cast<Model>(record));
        const auto date = descriptor.sortBy.latestFirst;
        std::stable_sort(records.begin(), records.end(), [date](const auto& a, const auto& b) {
            return ((*a).*date).value() > ((*b).*date).value();
        });
        return records;
    }

    /// Takes in a new record. It is in the store from the next save on.
    void insert(const std::shared_ptr<PersistentModel>& record);

    /// Marks a record for deletion. It is gone from the store from the next save on.
    void deleteRecord(std::shared_ptr<PersistentModel> record);

    /// Whether something waits to be saved.
    bool hasChanges() const;

    /// Writes all pending changes: all of them, durably, or none. Throws StoreError; the changes
    /// are then still pending.
    ///
    /// A record that another program has changed or deleted since it was read here is left as that
    /// program wants it, and the record of this context becomes one of its own.
    void save();

private:
    friend class Attribute;
    using Record = std::shared_ptr<PersistentModel>;

    QList<Record> fetchAll();
    Record materialize(const Statement& row);
    void markChanged(PersistentModel& record);
    std::vector<StoredRow> writeChanges() const;
    void scheduleAutosave();
    void autosave();

    const ModelContainer& m_container;
    const std::chrono::milliseconds m_autosaveDelay;
    QTimer m_autosaveTimer;
    std::chrono::milliseconds m_nextDelay;

    std::vector<Record> m_records;    ///< all that were fetched or inserted, but the deleted ones
    std::vector<StoredRow> m_deleted; ///< what the next save deletes
};

} // namespace platform
