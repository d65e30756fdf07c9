// SPDX-License-Identifier: MIT
#include "Platform/Store/Database.h"

#include <QFile>

#include <sqlite3.h>

#include <chrono>

namespace platform {

namespace {

// Long enough for another program's save to end, short enough for nobody to notice the wait.
constexpr std::chrono::milliseconds lockWait{250};

} // namespace

void Database::Close::operator()(sqlite3* connection) const {
    sqlite3_close(connection);
}

Database::Database(const QString& file) {
    sqlite3* raw = nullptr;
    const int result = sqlite3_open_v2(
        QFile::encodeName(file).constData(), &raw,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    m_connection.reset(raw);
    check(result);
    sqlite3_busy_timeout(raw, int(lockWait.count()));
    // Whatever somebody may have put into the file, it is data and nothing more.
    sqlite3_db_config(raw, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(raw, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(raw, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(raw, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
}

void Database::check(int result) const {
    if (result != SQLITE_OK)
        throw StoreError(sqlite3_errmsg(m_connection.get()));
}

void Database::execute(const QByteArray& sql) {
    check(sqlite3_exec(m_connection.get(), sql.constData(), nullptr, nullptr, nullptr));
}

qint64 Database::number(const char* sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.number(0) : 0;
}

qint64 Database::changedRows() const {
    return sqlite3_changes64(m_connection.get());
}

qint64 Database::insertedRow() const {
    return sqlite3_last_insert_rowid(m_connection.get());
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, const QByteArray& sql)
    : m_database(database) {
    sqlite3_stmt* raw = nullptr;
    const int result = sqlite3_prepare_v2(database.m_connection.get(), sql.constData(),
                                          int(sql.size()), &raw, nullptr);
    m_statement.reset(raw);
    database.check(result);
}

Statement& Statement::bind(const QByteArray& text) {
    m_database.check(sqlite3_bind_text64(m_statement.get(), ++m_bound, text.constData(),
                                         sqlite3_uint64(text.size()), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind(qint64 number) {
    m_database.check(sqlite3_bind_int64(m_statement.get(), ++m_bound, number));
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(m_statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        m_database.check(result);
    return result == SQLITE_ROW;
}

qint64 Statement::number(int column) const {
    return sqlite3_column_int64(m_statement.get(), column);
}

QByteArray Statement::text(int column) const {
    if (sqlite3_column_type(m_statement.get(), column) != SQLITE_TEXT)
        throw StoreError("a value that is no text");
    const auto* text = sqlite3_column_text(m_statement.get(), column);
    if (!text)
        throw StoreError("out of memory");
    return QByteArray(reinterpret_cast<const char*>(text),
                      sqlite3_column_bytes(m_statement.get(), column));
}

QByteArray quoted(const QString& name) {
    QByteArray quoted = name.toUtf8();
    quoted.replace('"', "\"\"");
    return '"' + quoted + '"';
}

} // namespace platform
