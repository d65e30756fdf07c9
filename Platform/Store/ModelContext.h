// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/FetchDescriptor.h"
#include "Platform/Store/ModelContainer.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <map>
#include <vector>

namespace platform {

/// The records of a store as a program works with them: it fetches, makes, changes and deletes
/// them here, and saves what has changed as one transaction.
///
/// Within a context a record is one object. Changes that nobody saves are saved by themselves: a
/// moment after they were made, when the application quits, and at the end of the context. A save
/// that fails leaves them pending, and they are tried again after a while.
///
/// The context outlives the changes made to its records; records may outlive it. All of it belongs
/// to one thread, which runs a Qt event loop.
class ModelContext {
public:
    /// How long after a change it is saved by itself.
    static constexpr std::chrono::milliseconds defaultAutosaveDelay{500};
    /// The longest time between two attempts to save by itself.
    static constexpr std::chrono::milliseconds longestAutosaveDelay{60000};

    /// The container outlives the context.
    explicit ModelContext(const ModelContainer& container,
                          std::chrono::milliseconds autosaveDelay = defaultAutosaveDelay);
    ModelContext(const ModelContext&) = delete;
    ModelContext& operator=(const ModelContext&) = delete;
    ~ModelContext();

    /// The records of a type, as the store holds them and with all pending changes of this context.
    /// Throws StoreError.
    template <class Model>
    QList<std::shared_ptr<Model>> fetch(const FetchDescriptor<Model>& descriptor = {}) {
        QList<std::shared_ptr<Model>> records;
        for (const auto& record : fetchAll(Model::recordName()))
            records.append(std::static_pointer_cast<Model>(record));
        const auto comesBefore = [&](const auto& a, const auto& b) {
            for (const auto& order : descriptor.sortBy) {
                if (order.comesBefore(*a, *b))
                    return true;
                if (order.comesBefore(*b, *a))
                    return false;
            }
            return false;
        };
        std::stable_sort(records.begin(), records.end(), comesBefore);
        return records;
    }

    /// Takes in a new record. It is in the store from the next save on.
    template <class Model>
    void insert(const std::shared_ptr<Model>& record) {
        insertRecord(Model::recordName(), record);
    }

    /// Marks a record for deletion. It is gone from the store from the next save on.
    void deleteRecord(const std::shared_ptr<PersistentModel>& record);

    /// Whether something waits to be saved.
    bool hasChanges() const;

    /// Writes all pending changes: all of them, durably, or none. Throws StoreError; the changes
    /// are then still pending.
    ///
    /// A record that another program has changed or deleted since it was read here is left as that
    /// program wants it, and the record of this context becomes one of its own.
    void save();

private:
    friend class PersistentModel;
    using Record = std::shared_ptr<PersistentModel>;
    struct Written;

    QList<Record> fetchAll(const QString& type);
    Record materialize(const RecordType& type, const Statement& row);
    void insertRecord(const QString& type, const Record& record);
    void recordChanged(PersistentModel& record);
    std::vector<Written> writeChanges() const;
    void take(const std::vector<Written>& written);
    void autosave();

    const ModelContainer& m_container;
    const std::chrono::milliseconds m_autosaveDelay;
    QTimer m_autosaveTimer;
    std::chrono::milliseconds m_nextDelay;

    std::map<std::pair<QString, PersistentIdentifier>, std::weak_ptr<PersistentModel>> m_known;
    std::vector<Record> m_inserted;
    std::vector<Record> m_changed;
    std::vector<Record> m_deleted;
};

} // namespace platform
