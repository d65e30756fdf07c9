// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/Database.h"
#include "Platform/Store/PersistentModel.h"

#include <optional>

namespace platform {

/// A store on disk: one SQLite file with the table of one type of records.
///
/// Making it costs nothing and cannot fail: the file is opened for each fetch and each save, and
/// made (0600, its folder 0700) by the first save. That the store may be anybody's file, or
/// nobody's, is found there: a file that is no database, that a later version has written, or whose
/// table is laid out otherwise is never written to. Both functions that open it throw StoreError.
class ModelContainer {
public:
    /// The version of the table's layout, which the file carries.
    static constexpr int schemaVersion = 1;

    /// @param file absolute path of the store's file.
    ModelContainer(QString file, RecordType type);

    const RecordType& type() const { return m_type; }

    /// The store in a transaction that reads; none when nothing has ever been saved in it.
    std::optional<Database> openForReading() const;

    /// The store in a transaction that writes, and that the caller commits: durable when the
    /// commit has returned.
    Database openForWriting() const;

private:
    void makeFile() const;
    /// Whether the table is there; throws where the file is not, or not entirely, this store's.
    bool hasTable(Database& database) const;

    QString m_file;
    RecordType m_type;
};

} // namespace platform
