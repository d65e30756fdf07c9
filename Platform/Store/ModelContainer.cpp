// SPDX-License-Identifier: MIT
#include "Platform/Store/ModelContainer.h"

#include "Platform/Store/StoreError.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace platform {

using namespace Qt::StringLiterals;
using Reason = StoreError::Reason;

namespace {

[[noreturn]] void throwUnreachable(int error) {
    throw StoreError(Reason::Unreachable, std::strerror(error));
}

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
        throwUnreachable(errno);
    }
    // SQLite takes a file of one byte for an empty one and would write over it.
    const bool isCutShort = status.st_size > 0 && status.st_size < 100;
    if (!S_ISREG(status.st_mode) || isCutShort)
        throw StoreError(Reason::NotAStore, "not a database");
    return true;
}

/// Makes the folder and those above it, for the user alone.
void makeFolder(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    if (::mkdir(path.constData(), 0700) == 0 || errno == EEXIST)
        return;
    if (errno != ENOENT)
        throwUnreachable(errno);
    makeFolder(QFileInfo(folder).path());
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        throwUnreachable(errno);
}

} // namespace

ModelContainer::ModelContainer(QString file, QList<RecordType> types, int version)
    : m_file(std::move(file))
    , m_types(std::move(types))
    , m_version(version) {}

const RecordType& ModelContainer::type(const QString& name) const {
    const auto found = std::find_if(m_types.begin(), m_types.end(),
                                    [&](const RecordType& type) { return type.name == name; });
    if (found == m_types.end())
        qFatal("ModelContainer: there is no record type of that name in the store");
    return *found;
}

std::optional<Database> ModelContainer::openForReading() const {
    if (!isThere(m_file))
        return std::nullopt;
    Database database = Database::open(m_file);
    database.execute("BEGIN");
    if (!hasTables(database))
        return std::nullopt;
    return database;
}

Database ModelContainer::openForWriting() const {
    makeFile();
    Database database = Database::open(m_file);
    // The journal is emptied, not removed: that makes the end of a commit durable without another
    // write of the folder. What is deleted is overwritten, and nothing of a record goes to
    // files elsewhere: what the user deletes does not linger.
    database.execute("PRAGMA synchronous=FULL; PRAGMA journal_mode=TRUNCATE;"
                     "PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY; BEGIN IMMEDIATE");
    if (!hasTables(database))
        makeTables(database);
    return database;
}

void ModelContainer::makeFile() const {
    // A file that is there is not opened here: closing it would drop the locks that this process
    // may hold on it.
    if (isThere(m_file))
        return;
    makeFolder(QFileInfo(m_file).path());
    const int file =
        ::open(QFile::encodeName(m_file).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0)
        ::close(file);
    else if (errno != EEXIST)
        throwUnreachable(errno);
}

bool ModelContainer::hasTables(Database& database) const {
    const qint64 version = database.number("PRAGMA user_version");
    if (version > m_version)
        throw StoreError(Reason::LaterVersion, "written by a later version");
    if (version == 0 && database.number("SELECT count(*) FROM sqlite_schema") == 0)
        return false;
    for (const RecordType& type : m_types) {
        Statement table(database,
                        "SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND sql = ?");
        const QByteArray definition = tableDefinition(type);
        table.bind(definition).step();
        if (table.number(0) != 1)
            throw StoreError(Reason::Foreign, "tables of another layout");
    }
    return true;
}

void ModelContainer::makeTables(Database& database) const {
    for (const RecordType& type : m_types)
        database.execute(tableDefinition(type).constData());
    database.execute(("PRAGMA user_version=" + QByteArray::number(m_version)).constData());
}

QString userDataFile(const QString& relativePath) {
    const QString configured = qEnvironmentVariable("XDG_DATA_HOME");
    const QString folder =
        QDir::isAbsolutePath(configured) ? configured : QDir::homePath() + u"/.local/share"_s;
    return QDir::cleanPath(folder + u'/' + relativePath);
}

} // namespace platform
