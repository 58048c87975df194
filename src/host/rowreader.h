#pragma once

#include "host/sqlconnection.h"

#include <QByteArray>
#include <QString>

class QVariant;

namespace olvex {

// Reads the rows of one statement forward only, with the cheapest access each backend offers:
// on SQLite the statement runs through SQLite's own interface on the connection Qt opened, so
// a row costs no QVariant per column; elsewhere through a cached QSqlQuery. For batch reads of
// many rows; the statement stays prepared on the connection.
//     RowReader rows(sql, QStringLiteral("SELECT pid, name FROM parameters WHERE ptype = ?"));
//     rows.bind(4);
//     rows.exec();
//     while (rows.next()) { use(rows.integer(0), rows.text(1)); }
// Failures throw olvex::Error like SqlConnection. The statement is released when the reader
// goes, so no read snapshot outlives it.
class RowReader
{
public:
    RowReader(SqlConnection &sql, const QString &statement);
    ~RowReader();
    RowReader(const RowReader &) = delete;
    RowReader &operator=(const RowReader &) = delete;

    // Values for the statement's "?" placeholders, in order, before exec().
    void bind(qint64 value);
    void bind(const QString &value);
    // A null QVariant binds SQL NULL; integers, doubles and texts bind as themselves.
    void bind(const QVariant &value);
    void exec();
    // Runs a statement that returns no rows (an INSERT) to its end.
    void run();

    bool next();
    bool isNull(int column) const;
    qint64 integer(int column) const;
    // A null QString for SQL NULL.
    QString text(int column) const;
    // The same for a column whose text often repeats from one row to the next (a unit's
    // name): the text of the previous row is shared instead of built again.
    struct Repeated
    {
        QByteArray utf8;
        QString text;
        bool set = false;
    };
    QString text(int column, Repeated &previous) const;
    // The column's text as UTF-8, valid until the next call of utf8() or next(); a null view
    // for SQL NULL.
    QByteArrayView utf8(int column) const;

private:
    SqlConnection &m_sql;
    QString m_statement;
    sqlite3_stmt *m_sqlite = nullptr;
    QSqlQuery *m_query = nullptr;
    int m_bound = 0;
    mutable QByteArray m_utf8; // what utf8() returned, off a QSqlQuery
};

} // namespace olvex
