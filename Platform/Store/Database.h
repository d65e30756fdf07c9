// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <stdexcept>

struct sqlite3;
struct sqlite3_stmt;

namespace platform {

/// Why a store could not be read or written, in words for developers: never shown to users.
///
/// What was saved before is still there, and what was not saved is still pending in its context.
class StoreError final : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A connection to an SQLite file. An open transaction is rolled back when the connection ends.
///
/// Every failure throws a StoreError. One thread at a time.
class Database {
public:
    /// Opens a file that is there; it is read and written where that is allowed, else read.
    explicit Database(const QString& file);

    /// Runs statements that give no rows and take no values.
    void execute(const QByteArray& sql);

    /// The value of a statement that gives one number.
    qint64 number(const char* sql);

    /// How many rows the last statement has changed.
    qint64 changedRows() const;

    /// The row that the last insertion has made.
    qint64 insertedRow() const;

private:
    friend class Statement;
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    void check(int result) const;

    std::unique_ptr<sqlite3, Close> m_connection;
};

/// A prepared statement. It ends before its connection does.
class Statement {
public:
    Statement(Database& database, const QByteArray& sql);

    /// Give the next of the statement's values. The text is UTF-8 and must live until the statement
    /// has run.
    Statement& bind(const QByteArray& text);
    Statement& bind(qint64 number);

    /// Goes on to the next row; false at the end.
    bool step();

    /// Runs a statement that gives no rows.
    void run() { step(); }

    qint64 number(int column) const;
    /// A column's text; throws where it holds anything else.
    QByteArray text(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    Database& m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
    int m_bound = 0;
};

/// The name as it stands in a statement, whatever it holds.
QByteArray quoted(const QString& name);

} // namespace platform
