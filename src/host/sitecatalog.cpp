// The parameter side of the site store: batched reads of definitions and live states, and the
// writes of attributes and values with their audit rows.
#include "host/sitestore.h"

#include "common/error.h"
#include "common/pid.h"
#include "host/settingvalue.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"
#include "settings/settingattributes.h"

#include <QSqlQuery>

#include <charconv>

namespace olvex {

namespace {

// "(4, 5)": the types go into the statement text as numbers, so that each combination of
// types is one cached prepared statement.
QString typeList(const QList<int> &types)
{
    QStringList parts;
    for (const int type : types) {
        parts.append(QString::number(type));
    }
    return u'(' + (parts.isEmpty() ? QStringLiteral("NULL") : parts.join(u", ")) + u')';
}

[[noreturn]] void unknownPid(qint32 pid)
{
    const QString shown = FormatPid(pid).isEmpty() ? QString::number(pid) : FormatPid(pid);
    throw Error(StoreError::UnknownPid, u"PID " + shown + u" is not defined");
}

void readLiveRow(const QSqlQuery &query, int first, LiveState &state)
{
    const QVariant kind = query.value(first);
    if (!kind.isNull()) {
        state.current.Value = decodeValue(kind.toInt(), query.value(first + 1).toString());
        state.current.Status = query.value(first + 2).toInt();
        state.current.Time = dateTimeFromText(query.value(first + 3).toString());
    }
}

void bindValue(QSqlQuery &query, const Value &value)
{
    const StoredValue stored = encodeValue(value);
    query.addBindValue(stored.kind);
    query.addBindValue(stored.text);
}

// Runs statement once for a list of PIDs and hands every row to onRow. In the statement,
// "column %IN_PIDS%" is the condition that column is one of the PIDs, and "%PIDS%" a table of
// them (column pid) to join, which reads them as they come instead of first sorting them into an
// index; either appears once. One bound text carries the whole list (SQLite reads it as a JSON
// array, PostgreSQL as an integer array): one statement text for any length, which stays
// prepared, and no backend's limit on bound values is reached.
template<class OnRow>
void forPidList(SqlConnection &sql, const QString &statement, const QList<qint32> &pids,
                OnRow &&onRow)
{
    if (pids.isEmpty()) {
        return;
    }
    const bool sqlite = sql.isSqlite();
    // "[1,2]" or "{1,2}": at most eleven characters and a separator per PID.
    QByteArray list(pids.size() * 12 + 2, Qt::Uninitialized);
    char *out = list.data();
    *out++ = sqlite ? '[' : '{';
    for (qsizetype i = 0; i < pids.size(); ++i) {
        if (i > 0) {
            *out++ = ',';
        }
        out = std::to_chars(out, list.data() + list.size(), pids[i]).ptr;
    }
    *out++ = sqlite ? ']' : '}';
    list.truncate(out - list.data());
    QString text = statement;
    text.replace(QStringLiteral("%IN_PIDS%"),
                 sqlite ? QStringLiteral("IN (SELECT value FROM json_each(?))")
                        : QStringLiteral("= ANY (CAST(? AS integer[]))"));
    text.replace(QStringLiteral("%PIDS%"),
                 sqlite ? QStringLiteral("(SELECT value AS pid FROM json_each(?))")
                        : QStringLiteral("(SELECT unnest(CAST(? AS integer[])) AS pid)"));
    QSqlQuery &query = sql.prepared(text);
    QueryScope scope(query);
    query.addBindValue(QString::fromLatin1(list));
    sql.exec(query);
    while (query.next()) {
        onRow(query);
    }
}

} // namespace

QList<ParameterRecord> SiteStore::parametersOfTypes(const QList<int> &types)
{
    const QString in = typeList(types);
    QList<ParameterRecord> records;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    {
        QSqlQuery &query = m_sql->prepared(
            u"SELECT p.pid, p.name, p.ptype, p.plant_unit, u.name, p.units_text, p.in_error"
            u" FROM parameters p LEFT JOIN plant_units u ON u.unit_number = p.plant_unit"
            u" WHERE p.ptype IN "
            + in + u" ORDER BY p.pid");
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            ParameterRecord &record = records.emplace_back();
            record.pid = query.value(0).toInt();
            record.name = query.value(1).toString();
            record.type = query.value(2).toInt();
            record.plantUnit = query.value(3).toInt();
            record.unitName = query.value(4).toString();
            record.unitsText = query.value(5).toString();
            record.inError = query.value(6).toInt() != 0;
        }
    }
    {
        QSqlQuery &query
            = m_sql->prepared(u"SELECT a.pid, a.number, a.vkind, a.val FROM attributes a"
                              u" JOIN parameters p ON p.pid = a.pid WHERE p.ptype IN "
                              + in + u" ORDER BY a.pid, a.number");
        QueryScope scope(query);
        m_sql->exec(query);
        qsizetype at = 0;
        while (query.next()) {
            const qint32 pid = query.value(0).toInt();
            while (at < records.size() && records[at].pid < pid) {
                ++at;
            }
            if (at == records.size() || records[at].pid != pid) {
                continue; // a parameter added between the two queries
            }
            records[at].attributes.emplace_back(
                query.value(1).toInt(),
                decodeValue(query.value(2).toInt(), query.value(3).toString()));
        }
    }
    transaction.commit();
    return records;
}

std::optional<ParameterRecord> SiteStore::parameter(qint32 pid)
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "SELECT p.name, p.ptype, p.plant_unit, u.name, p.units_text, p.in_error,"
        " a.number, a.vkind, a.val FROM parameters p"
        " LEFT JOIN plant_units u ON u.unit_number = p.plant_unit"
        " LEFT JOIN attributes a ON a.pid = p.pid WHERE p.pid = ? ORDER BY a.number"));
    QueryScope scope(query);
    query.addBindValue(pid);
    m_sql->exec(query);
    std::optional<ParameterRecord> record;
    while (query.next()) {
        if (!record) {
            record.emplace();
            record->pid = pid;
            record->name = query.value(0).toString();
            record->type = query.value(1).toInt();
            record->plantUnit = query.value(2).toInt();
            record->unitName = query.value(3).toString();
            record->unitsText = query.value(4).toString();
            record->inError = query.value(5).toInt() != 0;
        }
        if (!query.value(6).isNull()) {
            record->attributes.emplace_back(
                query.value(6).toInt(),
                decodeValue(query.value(7).toInt(), query.value(8).toString()));
        }
    }
    return record;
}

QList<ParameterRecord> SiteStore::parameters(const QList<qint32> &pids)
{
    QList<ParameterRecord> records;
    forPidList(*m_sql,
               QStringLiteral(
                   "SELECT p.pid, p.name, p.ptype, p.plant_unit, u.name, p.units_text, p.in_error,"
                   " a.number, a.vkind, a.val FROM parameters p"
                   " LEFT JOIN plant_units u ON u.unit_number = p.plant_unit"
                   " LEFT JOIN attributes a ON a.pid = p.pid WHERE p.pid %IN_PIDS%"
                   " ORDER BY p.pid, a.number"),
               pids, [&](const QSqlQuery &query) {
                   const qint32 pid = query.value(0).toInt();
                   if (records.isEmpty() || records.last().pid != pid) {
                       ParameterRecord &record = records.emplace_back();
                       record.pid = pid;
                       record.name = query.value(1).toString();
                       record.type = query.value(2).toInt();
                       record.plantUnit = query.value(3).toInt();
                       record.unitName = query.value(4).toString();
                       record.unitsText = query.value(5).toString();
                       record.inError = query.value(6).toInt() != 0;
                   }
                   if (!query.value(7).isNull()) {
                       records.last().attributes.emplace_back(
                           query.value(7).toInt(),
                           decodeValue(query.value(8).toInt(), query.value(9).toString()));
                   }
               });
    return records;
}

bool SiteStore::parameterExists(qint32 pid)
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral("SELECT 1 FROM parameters WHERE pid = ?"));
    QueryScope scope(query);
    query.addBindValue(pid);
    m_sql->exec(query);
    return query.next();
}

QHash<qint32, LiveState> SiteStore::liveStatesOfTypes(const QList<int> &types)
{
    const QString in = typeList(types);
    QHash<qint32, LiveState> states;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    {
        QSqlQuery &query = m_sql->prepared(
            u"SELECT c.pid, c.vkind, c.val, c.status, c.time FROM current_values c"
            u" JOIN parameters p ON p.pid = c.pid WHERE p.ptype IN "
            + in);
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            readLiveRow(query, 1, states[query.value(0).toInt()]);
        }
    }
    {
        // Few writes wait at a time: the queue, through its state index, drives the join (SQLite
        // keeps the order of a CROSS JOIN) instead of a look into it for every parameter.
        QSqlQuery &query = m_sql->prepared(
            u"SELECT DISTINCT w.pid FROM pending_writes w CROSS JOIN parameters p"
            u" WHERE p.pid = w.pid AND w.state IN ('queued', 'claimed') AND p.ptype IN "
            + in);
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            states[query.value(0).toInt()].changePending = true;
        }
    }
    transaction.commit();
    return states;
}

QHash<qint32, LiveState> SiteStore::liveStates(const QList<qint32> &pids)
{
    QHash<qint32, LiveState> states;
    if (pids.isEmpty()) {
        return states;
    }
    states.reserve(pids.size());
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    forPidList(*m_sql,
               QStringLiteral("SELECT c.pid, c.vkind, c.val, c.status, c.time FROM %PIDS% j"
                              " JOIN current_values c ON c.pid = j.pid"),
               pids, [&](const QSqlQuery &query) {
                   readLiveRow(query, 1, states[query.value(0).toInt()]);
               });
    // Few writes wait at a time: the waiting ones, found through the queue's state index, cost
    // less than a look into the queue for every PID.
    QList<qint32> waiting;
    {
        QSqlQuery &query = m_sql->prepared(QStringLiteral(
            "SELECT DISTINCT pid FROM pending_writes WHERE state IN ('queued', 'claimed')"));
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            waiting.append(query.value(0).toInt());
        }
    }
    transaction.commit();
    if (!waiting.isEmpty()) {
        const QSet<qint32> asked(pids.cbegin(), pids.cend());
        for (const qint32 pid : std::as_const(waiting)) {
            if (asked.contains(pid)) {
                states[pid].changePending = true;
            }
        }
    }
    return states;
}

LiveState SiteStore::liveState(qint32 pid)
{
    QSqlQuery &query = m_sql->prepared(QStringLiteral(
        "SELECT c.vkind, c.val, c.status, c.time,"
        " (SELECT count(*) FROM pending_writes w"
        "  WHERE w.pid = p.pid AND w.state IN ('queued', 'claimed'))"
        " FROM parameters p LEFT JOIN current_values c ON c.pid = p.pid WHERE p.pid = ?"));
    QueryScope scope(query);
    query.addBindValue(pid);
    m_sql->exec(query);
    LiveState state;
    if (query.next()) {
        readLiveRow(query, 0, state);
        state.changePending = query.value(4).toInt() > 0;
    }
    return state;
}

qint64 SiteStore::setAttribute(qint32 pid, int number, const Value &value, const Actor &who,
                               const QString &source)
{
    if (number == SettingAttr::ChangePending) {
        throw Error(StoreError::InvalidRequest,
                    QStringLiteral("attribute -91 (change pending) follows the queued value "
                                   "writes and cannot be set"));
    }
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Write);
    {
        // PostgreSQL: writers of one parameter take turns, so each audit row's old value is
        // the one it really replaced. SQLite's write lock already serialises them.
        QSqlQuery &query = m_sql->prepared(
            isSqlite() ? QStringLiteral("SELECT 1 FROM parameters WHERE pid = ?")
                       : QStringLiteral("SELECT 1 FROM parameters WHERE pid = ? FOR UPDATE"));
        QueryScope scope(query);
        query.addBindValue(pid);
        m_sql->exec(query);
        if (!query.next()) {
            unknownPid(pid);
        }
    }
    Value old = Value::null();
    {
        QSqlQuery &query = m_sql->prepared(
            QStringLiteral("SELECT vkind, val FROM attributes WHERE pid = ? AND number = ?"));
        QueryScope scope(query);
        query.addBindValue(pid);
        query.addBindValue(number);
        m_sql->exec(query);
        if (query.next()) {
            old = decodeValue(query.value(0).toInt(), query.value(1).toString());
        }
    }
    {
        QSqlQuery &query = m_sql->prepared(QStringLiteral(
            "INSERT INTO attributes (pid, number, vkind, val) VALUES (?, ?, ?, ?)"
            " ON CONFLICT (pid, number) DO UPDATE SET vkind = excluded.vkind, val = excluded.val"));
        query.addBindValue(pid);
        query.addBindValue(number);
        bindValue(query, value);
        m_sql->exec(query);
    }
    {
        QSqlQuery &query = m_sql->prepared(QStringLiteral(
            "INSERT INTO audit_trail (changed_ms, user_name, client_name, client_address, pid,"
            " attribute, old_vkind, old_val, new_vkind, new_val, source)"
            " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
        query.addBindValue(QDateTime::currentMSecsSinceEpoch());
        query.addBindValue(notNull(who.userName));
        query.addBindValue(notNull(who.clientName));
        query.addBindValue(notNull(who.clientAddress));
        query.addBindValue(pid);
        query.addBindValue(number);
        bindValue(query, old);
        bindValue(query, value);
        query.addBindValue(notNull(source));
        m_sql->exec(query);
    }
    const qint64 revision = bumpRevision();
    transaction.commit();
    return revision;
}

qint64 SiteStore::queueValueWrite(qint32 pid, const Value &value, const Actor &who)
{
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Write);
    Value toWrite = value;
    {
        QSqlQuery &query = m_sql->prepared(
            QStringLiteral("SELECT a.vkind, a.val FROM parameters p LEFT JOIN attributes a"
                           " ON a.pid = p.pid AND a.number = -14 WHERE p.pid = ?"));
        QueryScope scope(query);
        query.addBindValue(pid);
        m_sql->exec(query);
        if (!query.next()) {
            unknownPid(pid);
        }
        const int dataType
            = query.value(0).isNull()
                  ? 0
                  : int(decodeValue(query.value(0).toInt(), query.value(1).toString())
                            .toInteger()
                            .value_or(0));
        toWrite = coerceToDataType(dataType, value);
    }
    const QString insert = QStringLiteral(
        "INSERT INTO pending_writes (pid, vkind, val, user_name, client_name, client_address,"
        " posted_ms) VALUES (?, ?, ?, ?, ?, ?, ?)");
    QSqlQuery &query = m_sql->prepared(isSqlite() ? insert : insert + u" RETURNING id");
    query.addBindValue(pid);
    bindValue(query, toWrite);
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientName));
    query.addBindValue(notNull(who.clientAddress));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    m_sql->exec(query);
    qint64 id = 0;
    if (isSqlite()) {
        id = query.lastInsertId().toLongLong();
    } else if (query.next()) {
        id = query.value(0).toLongLong();
    }
    query.finish();
    transaction.commit();
    return id;
}

void SiteStore::setCurrentValue(qint32 pid, const Value &value, int status, const Actor &who,
                                const QString &source)
{
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Write);
    Value old;
    {
        QSqlQuery &query = m_sql->prepared(
            QStringLiteral("SELECT p.pid, c.vkind, c.val FROM parameters p"
                           " LEFT JOIN current_values c ON c.pid = p.pid WHERE p.pid = ?"));
        QueryScope scope(query);
        query.addBindValue(pid);
        m_sql->exec(query);
        if (!query.next()) {
            unknownPid(pid);
        }
        if (!query.value(1).isNull()) {
            old = decodeValue(query.value(1).toInt(), query.value(2).toString());
        }
    }
    {
        QSqlQuery &query = m_sql->prepared(QStringLiteral(
            "INSERT INTO current_values (pid, vkind, val, status, time) VALUES (?, ?, ?, ?, ?)"
            " ON CONFLICT (pid) DO UPDATE SET vkind = excluded.vkind, val = excluded.val,"
            " status = excluded.status, time = excluded.time"));
        query.addBindValue(pid);
        bindValue(query, value);
        query.addBindValue(status);
        query.addBindValue(dateTimeText(QDateTime::currentDateTime()));
        m_sql->exec(query);
    }
    {
        QSqlQuery &query = m_sql->prepared(QStringLiteral(
            "INSERT INTO audit_trail (changed_ms, user_name, client_name, client_address, pid,"
            " attribute, old_vkind, old_val, new_vkind, new_val, source)"
            " VALUES (?, ?, ?, ?, ?, NULL, ?, ?, ?, ?, ?)"));
        query.addBindValue(QDateTime::currentMSecsSinceEpoch());
        query.addBindValue(notNull(who.userName));
        query.addBindValue(notNull(who.clientName));
        query.addBindValue(notNull(who.clientAddress));
        query.addBindValue(pid);
        bindValue(query, old);
        bindValue(query, value);
        query.addBindValue(notNull(source));
        m_sql->exec(query);
    }
    transaction.commit();
}

} // namespace olvex
