#include "host/rowreader.h"

#include <QVariant>

#ifdef OLVEX_HAVE_SQLITE3
#include <sqlite3.h>
#endif

namespace olvex {

RowReader::RowReader(SqlConnection &sql, const QString &statement)
    : m_sql(sql)
    , m_statement(statement)
{
    m_sqlite = m_sql.sqliteStatement(statement);
    if (!m_sqlite) {
        m_query = &m_sql.prepared(statement);
    }
}

RowReader::~RowReader()
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        sqlite3_reset(m_sqlite);
        sqlite3_clear_bindings(m_sqlite);
    }
#endif
    if (m_query) {
        m_query->finish();
    }
}

void RowReader::bind(qint64 value)
{
    ++m_bound;
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        if (sqlite3_bind_int64(m_sqlite, m_bound, value) != SQLITE_OK) {
            m_sql.failSqlite(m_statement, QStringLiteral("bind a value for"));
        }
        return;
    }
#endif
    m_query->addBindValue(value);
}

void RowReader::bind(const QString &value)
{
    ++m_bound;
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const QByteArray utf8 = value.toUtf8();
        if (sqlite3_bind_text(m_sqlite, m_bound, utf8.constData(), int(utf8.size()),
                              SQLITE_TRANSIENT)
            != SQLITE_OK) {
            m_sql.failSqlite(m_statement, QStringLiteral("bind a value for"));
        }
        return;
    }
#endif
    m_query->addBindValue(value);
}

void RowReader::bind(const QVariant &value)
{
    switch (value.isNull() ? QMetaType::UnknownType : value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Bool:
        bind(value.toLongLong());
        return;
    case QMetaType::QString:
        bind(value.toString());
        return;
    default:
        break;
    }
    ++m_bound;
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const int rc = value.isNull() ? sqlite3_bind_null(m_sqlite, m_bound)
                       : value.typeId() == QMetaType::Double
                           ? sqlite3_bind_double(m_sqlite, m_bound, value.toDouble())
                           : SQLITE_MISMATCH;
        if (rc != SQLITE_OK) {
            m_sql.failSqlite(m_statement, QStringLiteral("bind a value for"));
        }
        return;
    }
#endif
    m_query->addBindValue(value);
}

void RowReader::run()
{
    exec();
    while (next()) {
    }
}

void RowReader::exec()
{
    if (m_sqlite) {
        m_sql.countStatement(); // the first step runs it
        return;
    }
    m_sql.exec(*m_query);
}

bool RowReader::next()
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const int rc = sqlite3_step(m_sqlite);
        if (rc == SQLITE_ROW) {
            return true;
        }
        if (rc == SQLITE_DONE) {
            return false;
        }
        m_sql.failSqlite(m_statement, QStringLiteral("run"));
    }
#endif
    return m_query->next();
}

bool RowReader::isNull(int column) const
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        return sqlite3_column_type(m_sqlite, column) == SQLITE_NULL;
    }
#endif
    return m_query->isNull(column);
}

qint64 RowReader::integer(int column) const
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        return sqlite3_column_int64(m_sqlite, column);
    }
#endif
    return m_query->value(column).toLongLong();
}

QString RowReader::text(int column) const
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const QByteArrayView bytes = utf8(column);
        return bytes.isNull() ? QString() : QString::fromUtf8(bytes);
    }
#endif
    return m_query->value(column).toString();
}

QByteArrayView RowReader::utf8(int column) const
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_sqlite, column));
        return data ? QByteArrayView(data, sqlite3_column_bytes(m_sqlite, column))
                    : QByteArrayView();
    }
#endif
    const QVariant value = m_query->value(column);
    if (value.isNull()) {
        return QByteArrayView();
    }
    m_utf8 = value.toString().toUtf8();
    return QByteArrayView(m_utf8.constData(), m_utf8.size()); // not null, even when empty
}

QString RowReader::text(int column, Repeated &previous) const
{
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqlite) {
        const QByteArrayView bytes = utf8(column);
        if (bytes.isNull()) {
            return QString();
        }
        if (!previous.set || previous.utf8 != bytes) {
            previous.utf8 = bytes.toByteArray();
            previous.text = QString::fromUtf8(bytes);
            previous.set = true;
        }
        return previous.text;
    }
#endif
    Q_UNUSED(previous);
    return text(column);
}

} // namespace olvex
