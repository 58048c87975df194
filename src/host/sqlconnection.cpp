#include "host/sqlconnection.h"

#include "common/error.h"
#include "host/storeerrors.h"

#include <QAtomicInteger>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>

#ifdef OLVEX_HAVE_SQLITE3
#include <sqlite3.h>
#endif

namespace olvex {

namespace {

QString uniqueConnectionName()
{
    static QAtomicInteger<quint64> counter;
    return u"olvex-site-" + QString::number(++counter);
}

// The first line of a driver message: libpq's texts run over several lines.
QString firstLine(const QString &text)
{
    const QString trimmed = text.trimmed();
    const qsizetype nl = trimmed.indexOf(u'\n');
    return (nl < 0 ? trimmed : trimmed.left(nl)).trimmed();
}

QString errorText(const QSqlError &error)
{
    QString text = firstLine(error.databaseText());
    if (text.isEmpty()) {
        text = firstLine(error.driverText());
    }
    return text.isEmpty() ? QStringLiteral("unknown database error") : text;
}

} // namespace

SqlConnection::SqlConnection(const ConnectionTarget &target, bool mayCreate)
    : m_target(target)
    , m_name(uniqueConnectionName())
{
    if (target.isSqlite()) {
        if (!mayCreate && !QFileInfo::exists(target.filePath)) {
            throw Error(StoreError::NoSite, u"no site at '" + target.filePath + u"': no such file");
        }
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        m_db.setDatabaseName(target.filePath);
        // Writers queue for the lock instead of failing at once; ten seconds covers a bulk
        // write of another process.
        m_db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    } else {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_name);
        m_db.setHostName(target.host);
        if (target.port > 0) {
            m_db.setPort(target.port);
        }
        m_db.setDatabaseName(target.database);
        m_db.setUserName(target.user);
        m_db.setPassword(target.password);
        m_db.setConnectOptions(target.connectOptions);
    }
    if (!m_db.isValid()) {
        const QString driver
            = target.isSqlite() ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL");
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
        throw Error(StoreError::CannotConnect,
                    u"the Qt SQL driver " + driver + u" is not installed");
    }
    if (!m_db.open()) {
        const QString why = errorText(m_db.lastError());
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
        throw Error(StoreError::CannotConnect,
                    u"cannot open site '" + target.displayText() + u"': " + why);
    }
    if (!target.isSqlite()) {
        // Server notices ("relation exists, skipping") are no business of the operator.
        execute(QStringLiteral("SET client_min_messages = warning"));
    }
}

SqlConnection::~SqlConnection()
{
    if (m_depth > 0) {
        m_depth = 1;
        rollback();
    }
    m_statements.clear();
    m_sqliteStatements.clear();
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

QSqlQuery &SqlConnection::prepared(const QString &sql)
{
    auto it = m_statements.find(sql);
    if (it != m_statements.end()) {
        it->second->finish();
        return *it->second;
    }
    auto query = std::make_unique<QSqlQuery>(m_db);
    query->setForwardOnly(true);
    if (!query->prepare(sql)) {
        fail(*query, QStringLiteral("prepare"));
    }
    return *m_statements.emplace(sql, std::move(query)).first->second;
}

sqlite3_stmt *SqlConnection::sqliteStatement(const QString &sql)
{
#ifdef OLVEX_HAVE_SQLITE3
    if (!isSqlite()) {
        return nullptr;
    }
    if (!m_sqliteHandleChecked) {
        m_sqliteHandleChecked = true;
        const QVariant handle = m_db.driver() ? m_db.driver()->handle() : QVariant();
        // Only a driver built on the very library this program links hands out a handle of
        // this type name; anything else keeps to QSqlQuery.
        if (handle.isValid() && qstrcmp(handle.typeName(), "sqlite3*") == 0
            && sqlite3_libversion_number() == SQLITE_VERSION_NUMBER) {
            m_sqliteHandle = *static_cast<sqlite3 *const *>(handle.constData());
        }
    }
    if (!m_sqliteHandle) {
        return nullptr;
    }
    auto it = m_sqliteStatements.find(sql);
    if (it != m_sqliteStatements.end()) {
        sqlite3_reset(it->second.get());
        sqlite3_clear_bindings(it->second.get());
        return it->second.get();
    }
    auto *db = static_cast<sqlite3 *>(m_sqliteHandle);
    sqlite3_stmt *prepared = nullptr;
    const QByteArray text = sql.toUtf8();
    const int status = sqlite3_prepare_v3(db, text.constData(), int(text.size()),
                                          SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement(prepared);
    if (status != SQLITE_OK) {
        failSqlite(sql, QStringLiteral("prepare"));
    }
    return m_sqliteStatements.emplace(sql, std::move(statement)).first->second.get();
#else
    Q_UNUSED(sql);
    return nullptr;
#endif
}

void SqlConnection::FinalizeStatement::operator()(sqlite3_stmt *statement) const noexcept
{
#ifdef OLVEX_HAVE_SQLITE3
    sqlite3_finalize(statement);
#else
    Q_UNUSED(statement);
#endif
}

void SqlConnection::failSqlite(const QString &sql, const QString &what) const
{
    QString statement = sql.simplified();
    if (statement.size() > 80) {
        statement = statement.left(77) + u"...";
    }
    QString why = QStringLiteral("unknown database error");
#ifdef OLVEX_HAVE_SQLITE3
    if (m_sqliteHandle) {
        why = firstLine(QString::fromUtf8(sqlite3_errmsg(static_cast<sqlite3 *>(m_sqliteHandle))));
    }
#endif
    throw Error(StoreError::SqlFailed,
                u"site store: cannot " + what + u" \"" + statement + u"\": " + why);
}

QSqlQuery SqlConnection::prepare(const QString &sql)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.prepare(sql)) {
        fail(query, QStringLiteral("prepare"));
    }
    return query;
}

void SqlConnection::exec(QSqlQuery &query)
{
    ++m_statementsRun;
    if (!query.exec()) {
        fail(query, QStringLiteral("run"));
    }
}

void SqlConnection::execute(const QString &sql)
{
    ++m_statementsRun;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.exec(sql)) {
        fail(query, QStringLiteral("run"));
    }
}

void SqlConnection::control(const QString &sql)
{
    // A service step begins and commits a transaction for every item it carries out: SQLite
    // keeps these statements compiled; PostgreSQL cannot prepare them.
    if (!isSqlite()) {
        execute(sql);
        return;
    }
    QSqlQuery &query = prepared(sql);
    exec(query);
    query.finish();
}

QVariant SqlConnection::scalar(const QString &sql)
{
    ++m_statementsRun;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.exec(sql)) {
        fail(query, QStringLiteral("run"));
    }
    return query.next() ? query.value(0) : QVariant();
}

void SqlConnection::begin(TransactionKind kind)
{
    if (m_depth++ > 0) {
        return;
    }
    m_rollbackOnly = false;
    try {
        control(isSqlite() && kind == TransactionKind::Write ? QStringLiteral("BEGIN IMMEDIATE")
                                                             : QStringLiteral("BEGIN"));
    } catch (...) {
        m_depth = 0;
        throw;
    }
}

void SqlConnection::commit()
{
    if (m_depth <= 0) {
        return;
    }
    if (--m_depth > 0) {
        return;
    }
    if (m_rollbackOnly) {
        m_depth = 1;
        rollback();
        throw Error(StoreError::SqlFailed,
                    QStringLiteral("the transaction was rolled back after an inner failure"));
    }
    finishAll();
    try {
        control(QStringLiteral("COMMIT"));
    } catch (...) {
        m_depth = 1;
        rollback();
        throw;
    }
}

void SqlConnection::rollback() noexcept
{
    if (m_depth <= 0) {
        return;
    }
    if (--m_depth > 0) {
        // An inner scope failed: the outermost one may not commit what is left.
        m_rollbackOnly = true;
        return;
    }
    finishAll();
    QSqlQuery query(m_db);
    query.exec(QStringLiteral("ROLLBACK"));
    m_rollbackOnly = false;
}

void SqlConnection::finishAll() noexcept
{
    for (auto &[sql, query] : m_statements) {
        query->finish();
    }
#ifdef OLVEX_HAVE_SQLITE3
    for (auto &[sql, statement] : m_sqliteStatements) {
        sqlite3_reset(statement.get());
    }
#endif
}

QString SqlConnection::dialect(QString sql) const
{
    sql.replace(QStringLiteral("%ID%"),
                isSqlite() ? QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT")
                           : QStringLiteral("BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"));
    return sql;
}

void SqlConnection::fail(const QSqlQuery &query, const QString &what) const
{
    QString statement = query.lastQuery().simplified();
    if (statement.size() > 80) {
        statement = statement.left(77) + u"...";
    }
    throw Error(StoreError::SqlFailed, u"site store: cannot " + what + u" \"" + statement + u"\": "
                                           + errorText(query.lastError()));
}

Transaction::Transaction(SqlConnection &connection, SqlConnection::TransactionKind kind)
    : m_connection(connection)
{
    m_connection.begin(kind);
}

Transaction::~Transaction()
{
    if (m_open) {
        m_connection.rollback();
    }
}

void Transaction::commit()
{
    m_open = false;
    m_connection.commit();
}

Savepoint::Savepoint(SqlConnection &connection)
    : m_connection(connection)
    , m_depth(connection.m_depth)
{
    Q_ASSERT(m_depth > 0);
    m_connection.control(QStringLiteral("SAVEPOINT olvex_item"));
}

Savepoint::~Savepoint()
{
    rollback();
}

void Savepoint::release()
{
    if (!m_open) {
        return;
    }
    m_open = false;
    if (m_connection.m_rollbackOnly || m_connection.m_depth != m_depth) {
        rollbackTo();
        throw Error(StoreError::SqlFailed,
                    QStringLiteral("the item was rolled back after an inner failure"));
    }
    m_connection.finishAll();
    m_connection.control(QStringLiteral("RELEASE SAVEPOINT olvex_item"));
}

void Savepoint::rollback() noexcept
{
    if (m_open) {
        m_open = false;
        rollbackTo();
    }
}

void Savepoint::rollbackTo() noexcept
{
    m_connection.finishAll();
    QSqlQuery query(m_connection.m_db);
    if (query.exec(QStringLiteral("ROLLBACK TO SAVEPOINT olvex_item"))
        && query.exec(QStringLiteral("RELEASE SAVEPOINT olvex_item"))) {
        m_connection.m_depth = m_depth;
        m_connection.m_rollbackOnly = false;
    } else {
        // The transaction cannot go on without what was undone: it may only roll back.
        m_connection.m_rollbackOnly = true;
    }
}

} // namespace olvex
