// SPDX-License-Identifier: MIT
#include "Platform/Store/ModelContext.h"

#include "Platform/Store/StoreError.h"

#include <QCoreApplication>

namespace platform {

namespace {

QByteArray columnList(const RecordType& type) {
    QByteArrayList columns;
    for (const QString& attribute : type.attributes)
        columns.append(quoted(attribute));
    return columns.join(", ");
}

/// The condition that finds a record's row, if it is still as it was when it was last read or
/// written. Its values: the identifier, then the saved state.
QByteArray unchangedRow(const PersistentModel& record) {
    QByteArray condition = " WHERE rowid = ?";
    for (const Attribute* attribute : record.attributes())
        if (attribute->tellsState())
            condition += " AND " + quoted(attribute->name()) + " = ?";
    return condition;
}

void insertRow(Database& database, const RecordType& type, const QByteArrayList& values) {
    QByteArrayList places;
    places.fill("?", values.size());
    Statement statement(database, "INSERT INTO " + quoted(type.name) + " (" + columnList(type) +
                                      ") VALUES (" + places.join(", ") + ")");
    for (const QByteArray& value : values)
        statement.bind(value);
    statement.run();
}

} // namespace

/// What a record is in the store once the transaction is durable.
struct ModelContext::Written {
    Record record;
    PersistentIdentifier identifier;
    QByteArrayList state;
};

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
    for (const auto& [identifier, known] : m_known)
        if (const Record record = known.lock())
            record->m_context = nullptr;
    for (const Record& record : m_inserted)
        record->m_context = nullptr;
}

QList<ModelContext::Record> ModelContext::fetchAll(const QString& typeName) {
    const RecordType& type = m_container.type(typeName);
    QList<Record> records;
    if (auto database = m_container.openForReading()) {
        Statement rows(*database, "SELECT rowid, " + columnList(type) + " FROM " +
                                      quoted(type.name) + " ORDER BY rowid");
        while (rows.step()) {
            const PersistentIdentifier identifier = rows.number(0);
            const bool isDeleted =
                std::any_of(m_deleted.begin(), m_deleted.end(), [&](const Record& record) {
                    return record->m_type == typeName && record->m_identifier == identifier;
                });
            if (!isDeleted)
                records.append(materialize(type, rows));
        }
    }
    for (const Record& record : m_inserted)
        if (record->m_type == typeName)
            records.append(record);
    return records;
}

ModelContext::Record ModelContext::materialize(const RecordType& type, const Statement& row) {
    const PersistentIdentifier identifier = row.number(0);
    auto& known = m_known[{type.name, identifier}];
    Record record = known.lock();
    if (record && record->m_hasChanges)
        return record;
    if (!record)
        record = type.make();
    int column = 0;
    for (Attribute* attribute : record->m_attributes)
        if (!attribute->restore(row.text(++column)))
            throw StoreError(StoreError::Reason::Malformed, "a value that cannot be read");
    known = record;
    record->m_type = type.name;
    record->m_identifier = identifier;
    record->m_context = this;
    // As the store has it, which need not be the text that this program would write.
    record->m_savedState.clear();
    column = 0;
    for (const Attribute* attribute : record->m_attributes) {
        ++column;
        if (attribute->tellsState())
            record->m_savedState.append(row.text(column));
    }
    return record;
}

void ModelContext::insertRecord(const QString& type, const Record& record) {
    if (record->m_context)
        return;
    record->m_type = m_container.type(type).name;
    record->m_context = this;
    record->m_hasChanges = true;
    m_inserted.push_back(record);
    m_autosaveTimer.start(m_nextDelay);
}

void ModelContext::deleteRecord(const Record& record) {
    if (record->m_context != this)
        return;
    record->m_context = nullptr;
    record->m_hasChanges = false;
    std::erase(m_inserted, record);
    std::erase(m_changed, record);
    if (!record->m_identifier)
        return;
    m_known.erase({record->m_type, *record->m_identifier});
    m_deleted.push_back(record);
    if (!m_autosaveTimer.isActive())
        m_autosaveTimer.start(m_nextDelay);
}

bool ModelContext::hasChanges() const {
    return !m_inserted.empty() || !m_changed.empty() || !m_deleted.empty();
}

void ModelContext::recordChanged(PersistentModel& record) {
    m_changed.push_back(record.shared_from_this());
    if (!m_autosaveTimer.isActive())
        m_autosaveTimer.start(m_nextDelay);
}

void ModelContext::save() {
    if (!hasChanges())
        return;
    try {
        take(writeChanges());
    } catch (...) {
        m_nextDelay = std::min(m_nextDelay * 2, longestAutosaveDelay);
        m_autosaveTimer.start(m_nextDelay);
        throw;
    }
    m_nextDelay = m_autosaveDelay;
    m_autosaveTimer.stop();
}

std::vector<ModelContext::Written> ModelContext::writeChanges() const {
    std::vector<Written> written;
    Database database = m_container.openForWriting();

    for (const Record& record : m_deleted) {
        Statement statement(database,
                            "DELETE FROM " + quoted(record->m_type) + unchangedRow(*record));
        statement.bind(*record->m_identifier);
        for (const QByteArray& value : record->m_savedState)
            statement.bind(value);
        statement.run();
    }

    for (const Record& record : m_changed) {
        const RecordType& type = m_container.type(record->m_type);
        QByteArrayList values;
        QByteArrayList assignments;
        for (const Attribute* attribute : record->m_attributes) {
            values.append(attribute->encoded());
            assignments.append(quoted(attribute->name()) + " = ?");
        }
        Statement statement(database, "UPDATE " + quoted(type.name) + " SET " +
                                          assignments.join(", ") + unchangedRow(*record));
        for (const QByteArray& value : values)
            statement.bind(value);
        statement.bind(*record->m_identifier);
        for (const QByteArray& value : record->m_savedState)
            statement.bind(value);
        statement.run();
        PersistentIdentifier identifier = *record->m_identifier;
        if (database.changedRows() == 0) {
            insertRow(database, type, values);
            identifier = database.insertedRow();
        }
        written.push_back({record, identifier, record->state()});
    }

    for (const Record& record : m_inserted) {
        QByteArrayList values;
        for (const Attribute* attribute : record->m_attributes)
            values.append(attribute->encoded());
        insertRow(database, m_container.type(record->m_type), values);
        written.push_back({record, database.insertedRow(), record->state()});
    }

    database.execute("COMMIT");
    return written;
}

void ModelContext::take(const std::vector<Written>& written) {
    for (const auto& [record, identifier, state] : written) {
        if (record->m_identifier)
            m_known.erase({record->m_type, *record->m_identifier});
        record->m_identifier = identifier;
        record->m_savedState = state;
        record->m_hasChanges = false;
        m_known[{record->m_type, identifier}] = record;
    }
    m_inserted.clear();
    m_changed.clear();
    m_deleted.clear();
}

void ModelContext::autosave() {
    try {
        save();
    } catch (const std::exception&) {
        // The changes stay pending: save() has arranged for another attempt.
    }
}

} // namespace platform
