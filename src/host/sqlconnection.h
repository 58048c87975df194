#pragma once

#include "host/connectiontext.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <map>
#include <memory>

struct sqlite3_stmt;

namespace olvex {

// One open Qt SQL connection with its own unique connection name, closed and removed from Qt's
// registry when the object goes. Every failure throws olvex::Error with one clear line.
//
// Statements run through prepared() are kept prepared for the connection's life; a query is
// always finished before it is handed out again, so no statement keeps an SQLite read snapshot
// (or a PostgreSQL portal) open between calls. Use QueryScope to finish it early.
class SqlConnection
{
public:
    // Opens the connection. SQLite: the file must exist unless mayCreate; WAL, synchronous FULL,
    // foreign keys and a busy timeout are set by the store, not here (they write to the file).
    SqlConnection(const ConnectionTarget &target, bool mayCreate);
    ~SqlConnection();
    SqlConnection(const SqlConnection &) = delete;
    SqlConnection &operator=(const SqlConnection &) = delete;

    const ConnectionTarget &target() const { return m_target; }
    bool isSqlite() const { return m_target.isSqlite(); }
    QSqlDatabase database() const { return m_db; }

    // A cached prepared statement for sql, finished and with no values bound yet.
    QSqlQuery &prepared(const QString &sql);
    // A new forward-only query, prepared; for statements run once.
    QSqlQuery prepare(const QString &sql);
    // Executes a prepared query; throws on failure, naming what failed.
    void exec(QSqlQuery &query);
    // Executes a statement without parameters.
    void execute(const QString &sql);
    // The first column of the first row of a query without parameters; invalid when no row.
    QVariant scalar(const QString &sql);

    // Transactions nest: only the outermost one talks to the database. A write transaction on
    // SQLite begins with BEGIN IMMEDIATE, so the writer waits for the lock (busy timeout) at
    // the start instead of failing when it first writes.
    enum class TransactionKind { Read, Write };
    void begin(TransactionKind kind);
    void commit();
    void rollback() noexcept;
    bool inTransaction() const { return m_depth > 0; }

    // SQLite only, and only when this program was built with SQLite's own interface: the
    // statement compiled on the handle Qt opened, kept for the connection's life and reset
    // before it is handed out; null otherwise. A batch read of many rows goes through it
    // instead of a QSqlQuery, which builds a QVariant for every column of every row.
    sqlite3_stmt *sqliteStatement(const QString &sql);
    void countStatement() { ++m_statementsRun; }

    // Statements sent to the database so far: lets a test (or a diagnosis) see that a list fill
    // costs a few round trips, not one per row or attribute.
    quint64 statementCount() const { return m_statementsRun; }

    // Rewrites the schema dialect: %ID% becomes the backend's auto-numbered primary key.
    QString dialect(QString sql) const;

    [[noreturn]] void fail(const QSqlQuery &query, const QString &what) const;
    // The same for a statement run through sqliteStatement().
    [[noreturn]] void failSqlite(const QString &sql, const QString &what) const;

private:
    friend class Savepoint;
    void finishAll() noexcept;
    // Runs a transaction or savepoint statement.
    void control(const QString &sql);

    ConnectionTarget m_target;
    QString m_name;
    QSqlDatabase m_db;
    std::map<QString, std::unique_ptr<QSqlQuery>> m_statements;
    struct FinalizeStatement
    {
        void operator()(sqlite3_stmt *statement) const noexcept;
    };
    // Finalized before the connection closes (the destructor clears them first).
    std::map<QString, std::unique_ptr<sqlite3_stmt, FinalizeStatement>> m_sqliteStatements;
    bool m_sqliteHandleChecked = false;
    void *m_sqliteHandle = nullptr; // sqlite3 *, owned by Qt's driver
    int m_depth = 0;
    bool m_rollbackOnly = false;
    quint64 m_statementsRun = 0;
};

// RAII transaction: rolls back unless commit() was called.
class Transaction
{
public:
    Transaction(SqlConnection &connection, SqlConnection::TransactionKind kind);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void commit();

private:
    SqlConnection &m_connection;
    bool m_open = true;
};

// A savepoint inside the open transaction: what happens after it can be undone alone, the rest of
// the transaction going on. Rolls back to it unless release() was called; an inner Transaction
// that failed meanwhile no longer dooms the outer one once its savepoint rolled it back.
class Savepoint
{
public:
    explicit Savepoint(SqlConnection &connection);
    ~Savepoint();
    Savepoint(const Savepoint &) = delete;
    Savepoint &operator=(const Savepoint &) = delete;
    void release();
    // Undoes everything since the savepoint; never throws (a failure dooms the transaction).
    void rollback() noexcept;

private:
    void rollbackTo() noexcept;

    SqlConnection &m_connection;
    int m_depth = 0;
    bool m_open = true;
};

// Finishes a query when the scope ends, so that its read snapshot is released.
class QueryScope
{
public:
    explicit QueryScope(QSqlQuery &query)
        : m_query(query)
    {}
    ~QueryScope() { m_query.finish(); }
    QueryScope(const QueryScope &) = delete;
    QueryScope &operator=(const QueryScope &) = delete;

private:
    QSqlQuery &m_query;
};

} // namespace olvex
