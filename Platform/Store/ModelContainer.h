// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/Database.h"
#include "Platform/Store/RecordType.h"

#include <optional>

namespace platform {

/// A store on disk: one SQLite file with a table for each type of records.
///
/// Making it costs nothing and cannot fail: the file is opened for each fetch and each save, and
/// made (0600, its folder 0700) by the first save. That the store may be anybody's file, or
/// nobody's, is found there: a file that is no database, that a later version has written, or whose
/// tables are laid out otherwise is never written to. Both functions that open it throw StoreError.
class ModelContainer {
public:
    /// @param file absolute path of the store's file.
    /// @param types the types of records that it holds.
    /// @param version the version of their tables' layout, from 1.
    ModelContainer(QString file, QList<RecordType> types, int version = 1);

    const QString& file() const { return m_file; }

    /// The type of that name, which must be one of the container's.
    const RecordType& type(const QString& name) const;

    /// The store in a transaction that reads; none when nothing has ever been saved in it.
    std::optional<Database> openForReading() const;

    /// The store in a transaction that writes, and that the caller commits: durable when the
    /// commit has returned.
    Database openForWriting() const;

private:
    void makeFile() const;
    /// Whether the tables are there; throws where the file is not, or not entirely, this store's.
    bool hasTables(Database& database) const;
    void makeTables(Database& database) const;

    QString m_file;
    QList<RecordType> m_types;
    int m_version;
};

/// The path of a file in the folder where the platform keeps the data of the user's programs.
QString userDataFile(const QString& relativePath);

} // namespace platform
