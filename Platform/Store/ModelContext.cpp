// SPDX-License-Identifier: MIT
#include "Platform/Store/ModelContext.h"

#include <QCoreApplication>

namespace platform {

namespace {

QByteArray columnList(const RecordType& type) {
    QByteArrayList columns;
    for (const QString& attribute : type.attributes)
        columns.append(quoted(attribute));
    return columns.join(", ");
}

/// The end of a statement that finds a row if it is still as it was when it was last read or
/// written. Its values are those of a StoredRow.
QByteArray unchangedRow(const RecordType& type) {
    return " WHERE rowid = ? AND " + quoted(type.attributes.first()) + " = ?";
}

Statement& bindAll(Statement& statement, const QByteArrayList& values) {
    for (const QByteArray& value : values)
        statement.bind(value);
    return statement;
}

/// False where the row is not there any more, or another program has written it.
bool updateRow(Database& database, const RecordType& type, const StoredRow& row,
               const QByteArrayList& values) {
    QByteArrayList assignments;
    for (const QString& attribute : type.attributes)
        assignments.append(quoted(attribute) + " = ?");
    Statement statement(database, "UPDATE " + quoted(type.name) + " SET " + assignments.join(", ") +
                                      unchangedRow(type));
    bindAll(statement, values).bind(row.identifier).bind(row.version).run();
    return database.changedRows() > 0;
}

qint64 insertRow(Database& database, const RecordType& type, const QByteArrayList& values) {
    Statement statement(database, "INSERT INTO " + quoted(type.name) + " (" + columnList(type) +
                                      ") VALUES (" + QByteArrayList(values.size(), "?").join(", ") +
                                      ")");
    bindAll(statement, values).run();
    return database.insertedRow();
}

} // namespace

ModelContext::ModelContext(const ModelContainer& container, std::chrono::milliseconds autosaveDelay)
    : m_container(container)
    , m_autosaveDelay(autosaveDelay)
    , m_nextDelay(autosaveDelay) {
    m_autosaveTimer.setSingleShot(true);
    QObject::connect(&m_autosaveTimer, &QTimer::timeout, &m_autosaveTimer, [this] { autosave(); });
    if (auto* application = QCoreApplication::instance())
        QObject::connect(application, &QCoreApplication::aboutToQuit, &m_autosaveTimer,
                         [this] { autosave(); });
}

ModelContext::~ModelContext() {
    autosave();
    for (const Record& record : m_records)
        record->m_context = nullptr;
}

QList<ModelContext::Record> ModelContext::fetchAll() {
    const RecordType& type = m_container.type();
    QList<Record> records;
    if (auto database = m_container.openForReading()) {
        Statement rows(*database, "SELECT rowid, " + columnList(type) + " FROM " +
                                      quoted(type.name) + " ORDER BY rowid");
        while (rows.step()) {
            const auto isThisRow = [&](const StoredRow& row) {
                return row.identifier == rows.number(0);
            };
            if (std::none_of(m_deleted.begin(), m_deleted.end(), isThisRow))
                records.append(materialize(rows));
        }
    }
    for (const Record& record : m_records)
        if (!record->m_stored)
            records.append(record);
    return records;
}

ModelContext::Record ModelContext::materialize(const Statement& row) {
    const qint64 identifier = row.number(0);
    const auto known = std::find_if(m_records.begin(), m_records.end(), [&](const Record& record) {
        return record->m_stored && record->m_stored->identifier == identifier;
    });
    if (known != m_records.end() && (*known)->m_hasChanges)
        return *known;
    const Record record = known != m_records.end() ? *known : m_container.type().make();
    int column = 0;
    for (Attribute* attribute : record->m_attributes)
        if (!attribute->restore(row.text(++column)))
            throw StoreError("a value that cannot be read");
    if (known == m_records.end())
        m_records.push_back(record);
    record->m_context = this;
    // The version as the store has it, which need not be the text that this program would write.
    record->m_stored = {identifier, row.text(1)};
    return record;
}

void ModelContext::insert(const Record& record) {
    if (record->m_context)
        return;
    record->m_context = this;
    m_records.push_back(record);
    markChanged(*record);
}

void ModelContext::deleteRecord(Record record) {
    if (record->m_context != this)
        return;
    record->m_context = nullptr;
    record->m_hasChanges = false;
    std::erase(m_records, record);
    if (const auto row = std::exchange(record->m_stored, std::nullopt)) {
        m_deleted.push_back(*row);
        scheduleAutosave();
    }
}

bool ModelContext::hasChanges() const {
    return !m_deleted.empty() || std::any_of(
                                     m_records.begin(), m_records.end(),
                                     [](const auto& record) { return record->m_hasChanges; });
}

void ModelContext::markChanged(PersistentModel& record) {
    record.m_hasChanges = true;
    scheduleAutosave();
}

void ModelContext::save() {
    if (!hasChanges())
        return;
    std::vector<StoredRow> written;
    try {
        written = writeChanges();
    } catch (...) {
        m_nextDelay = std::min(m_nextDelay * 2, longestAutosaveDelay);
        m_autosaveTimer.start(m_nextDelay);
        throw;
    }
    m_nextDelay = m_autosaveDelay;
    m_autosaveTimer.stop();
    m_deleted.clear();
    auto row = written.begin();
    for (const Record& record : m_records)
        if (std::exchange(record->m_hasChanges, false))
            record->m_stored = *row++;
}

/// Gives what the store has of each changed record once the transaction is durable.
std::vector<StoredRow> ModelContext::writeChanges() const {
    const RecordType& type = m_container.type();
    Database database = m_container.openForWriting();
    for (const StoredRow& row : m_deleted)
        Statement(database, "DELETE FROM " + quoted(type.name) + unchangedRow(type))
            .bind(row.identifier)
            .bind(row.version)
            .run();
    std::vector<StoredRow> written;
    for (const Record& record : m_records) {
        if (!record->m_hasChanges)
            continue;
        QByteArrayList values;
        for (const Attribute* attribute : record->m_attributes)
            values.append(attribute->encoded());
        const auto& stored = record->m_stored;
        const bool isUpdated = stored && updateRow(database, type, *stored, values);
        written.push_back(
            {isUpdated ? stored->identifier : insertRow(database, type, values), values.first()});
    }
    database.execute("COMMIT");
    return written;
}

void ModelContext::scheduleAutosave() {
    if (!m_autosaveTimer.isActive())
        m_autosaveTimer.start(m_nextDelay);
}

void ModelContext::autosave() {
    try {
        save();
    } catch (const std::exception&) {
        // The changes stay pending: save() has arranged for another attempt.
    }
}

} // namespace platform
