// SPDX-License-Identifier: MIT
#include "Platform/Store/ModelContainer.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace platform {

namespace {

/// The statement that makes the type's table. The store keeps it word for word, hence it is also
/// what the table's layout is recognised by.
QByteArray tableDefinition(const RecordType& type) {
    QByteArrayList columns;
    for (const QString& attribute : type.attributes)
        columns.append(quoted(attribute) + " TEXT NOT NULL");
    return "CREATE TABLE " + quoted(type.name) + " (" + columns.join(", ") + ")";
}

/// Whether there is a file; throws where what is there can be no database.
bool isThere(const QString& file) {
    struct stat status {};
    if (::stat(QFile::encodeName(file).constData(), &status) != 0) {
        if (errno == ENOENT)
            return false;
        throw StoreError(std::strerror(errno));
    }
    // SQLite takes a file of one byte for an empty one and would write over it.
    const bool isCutShort = status.st_size > 0 && status.st_size < 100;
    if (!S_ISREG(status.st_mode) || isCutShort)
        throw StoreError("not a database");
    return true;
}

/// Makes the folder and those above it, for the user alone.
void makeFolder(const QString& folder) {
    if (QFileInfo::exists(folder))
        return;
    makeFolder(QFileInfo(folder).path());
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST)
        throw StoreError(std::strerror(errno));
}

} // namespace

ModelContainer::ModelContainer(QString file, RecordType type)
    : m_file(std::move(file))
    , m_type(std::move(type)) {}

std::optional<Database> ModelContainer::openForReading() const {
    if (!isThere(m_file))
        return std::nullopt;
    Database database(m_file);
    database.execute("BEGIN");
    if (!hasTable(database))
        return std::nullopt;
    return database;
}

Database ModelContainer::openForWriting() const {
    makeFile();
    Database database(m_file);
    // The journal is emptied, not removed: that makes the end of a commit durable without another
    // write of the folder. What is deleted is overwritten, and nothing of a record goes to
    // files elsewhere: what the user deletes does not linger.
    database.execute("PRAGMA synchronous=FULL; PRAGMA journal_mode=TRUNCATE;"
                     "PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY; BEGIN IMMEDIATE");
    if (!hasTable(database))
        database.execute(tableDefinition(m_type) +
                         "; PRAGMA user_version=" + QByteArray::number(schemaVersion));
    return database;
}

void ModelContainer::makeFile() const {
    // A file that is there is not opened here: closing it would drop the locks that this process
    // may hold on it.
    if (isThere(m_file))
        return;
    makeFolder(QFileInfo(m_file).path());
    QFile file(m_file);
    const auto forTheUserAlone = QFile::ReadOwner | QFile::WriteOwner;
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, forTheUserAlone) && !file.exists())
        throw StoreError(file.errorString().toStdString());
}

bool ModelContainer::hasTable(Database& database) const {
    const qint64 version = database.number("PRAGMA user_version");
    if (version > schemaVersion)
        throw StoreError("written by a later version");
    if (version == 0 && database.number("SELECT count(*) FROM sqlite_schema") == 0)
        return false;
    const QByteArray definition = tableDefinition(m_type);
    Statement table(database, "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND sql = ?");
    if (!table.bind(definition).step())
        throw StoreError("a table of another layout");
    return true;
}

} // namespace platform
