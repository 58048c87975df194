// The parameter side of the site store: batched reads of definitions and live states, and the
// writes of attributes and values with their audit rows.
#include "host/sitestore.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/idlist.h"
#include "host/rowreader.h"
#include "settings/settingvaluecheck.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QSqlQuery>

#include <optional>

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

void readLiveRow(const RowReader &rows, int first, LiveState &state, DateTimeTexts &times)
{
    if (!rows.isNull(first)) {
        state.current.Value = decodeValue(int(rows.integer(first)), rows.utf8(first + 1), times);
        state.current.Status = int(rows.integer(first + 2));
        state.current.Time = times.fromUtf8(rows.utf8(first + 3));
    }
}

// The columns every definition query begins with, read into record (attributes apart).
const QString kHeadColumns
    = QStringLiteral("p.pid, p.name, p.ptype, p.plant_unit, u.name, p.units_text, p.in_error");
struct HeadTexts
{
    RowReader::Repeated unitName;
    RowReader::Repeated unitsText;
};
void readHead(const RowReader &rows, ParameterRecord &record, HeadTexts &texts)
{
    record.pid = qint32(rows.integer(0));
    record.name = rows.text(1);
    record.type = int(rows.integer(2));
    record.plantUnit = int(rows.integer(3));
    record.unitName = rows.text(4, texts.unitName);
    record.unitsText = rows.text(5, texts.unitsText);
    record.inError = rows.integer(6) != 0;
}

void bindValue(QSqlQuery &query, const Value &value)
{
    const StoredValue stored = encodeValue(value);
    query.addBindValue(stored.kind);
    query.addBindValue(stored.text);
}

// One row of the audit trail: a change of attribute (none: of the current value) from old to
// value.
void audit(SqlConnection &sql, qint32 pid, std::optional<int> attribute, const Value &old,
           const Value &value, const Actor &who, const QString &source)
{
    QSqlQuery &query = sql.prepared(
        QStringLiteral("INSERT INTO audit_trail (changed_ms, user_name, client_name,"
                       " client_address, pid, attribute, old_vkind, old_val, new_vkind, new_val,"
                       " source) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientName));
    query.addBindValue(notNull(who.clientAddress));
    query.addBindValue(pid);
    query.addBindValue(attribute ? QVariant(*attribute) : QVariant(QMetaType::fromType<int>()));
    bindValue(query, old);
    bindValue(query, value);
    query.addBindValue(notNull(source));
    sql.exec(query);
}

// Runs statement once for a list of PIDs (see withIdList) and hands every row to onRow.
template<class OnRow>
void forPidList(SqlConnection &sql, const QString &statement, const QList<qint32> &pids,
                OnRow &&onRow)
{
    if (pids.isEmpty()) {
        return;
    }
    RowReader rows(sql, withIdList(statement, sql.isSqlite()));
    rows.bind(idListText(sql.isSqlite(), pids));
    rows.exec();
    while (rows.next()) {
        onRow(rows);
    }
}

} // namespace

QList<ParameterRecord> SiteStore::parametersOfTypes(const QList<int> &types)
{
    QList<ParameterRecord> records;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    {
        RowReader rows(*m_sql, u"SELECT " + kHeadColumns
                                   + u" FROM parameters p LEFT JOIN plant_units u"
                                     u" ON u.unit_number = p.plant_unit WHERE p.ptype IN "
                                   + typeList(types) + u" ORDER BY p.pid");
        rows.exec();
        HeadTexts texts;
        while (rows.next()) {
            readHead(rows, records.emplace_back(), texts);
        }
    }
    {
        RowReader rows(*m_sql, u"SELECT a.pid, a.number, a.vkind, a.val FROM attributes a"
                               u" JOIN parameters p ON p.pid = a.pid WHERE p.ptype IN "
                                   + typeList(types) + u" ORDER BY a.pid, a.number");
        rows.exec();
        DateTimeTexts times;
        qsizetype at = 0;
        while (rows.next()) {
            const qint32 pid = qint32(rows.integer(0));
            while (at < records.size() && records[at].pid < pid) {
                ++at;
            }
            if (at == records.size() || records[at].pid != pid) {
                continue; // a parameter added between the two queries
            }
            records[at].attributes.emplace_back(
                int(rows.integer(1)), decodeValue(int(rows.integer(2)), rows.utf8(3), times));
        }
    }
    transaction.commit();
    return records;
}

std::map<int, SiteStore::AttributeColumn>
SiteStore::attributeColumns(const std::vector<qint32> &pids, const QList<int> &numbers)
{
    // The walk compares PIDs of a compact list and fills each column front to back: records
    // are too large to stride through once per number.
    std::map<int, AttributeColumn> columns;
    // One statement reads one snapshot by itself; several share a transaction.
    std::optional<Transaction> transaction;
    if (numbers.size() > 1) {
        transaction.emplace(*m_sql, SqlConnection::TransactionKind::Read);
    }
    DateTimeTexts times;
    for (const int number : numbers) {
        if (columns.count(number) != 0) {
            continue;
        }
        AttributeColumn &column = columns[number];
        column.reserve(pids.size());
        RowReader rows(*m_sql, QStringLiteral("SELECT pid, vkind, val FROM attributes"
                                              " WHERE number = ? ORDER BY pid"));
        rows.bind(number);
        rows.exec();
        while (column.size() < pids.size() && rows.next()) {
            const qint32 pid = qint32(rows.integer(0));
            while (column.size() < pids.size() && pids[column.size()] < pid) {
                column.emplace_back();
            }
            if (column.size() < pids.size() && pids[column.size()] == pid) {
                column.emplace_back(decodeValue(int(rows.integer(1)), rows.utf8(2), times));
            }
        }
        column.resize(pids.size());
    }
    if (transaction) {
        transaction->commit();
    }
    return columns;
}

SiteStore::ListRead SiteStore::readList(const QList<int> &types, const QList<int> &numbers)
{
    ListRead read;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    // The plant units' names come apart (a site has a handful): no lookup per parameter, and
    // each name is shared by its parameters.
    QHash<int, QString> unitNames;
    qsizetype expected = 0;
    {
        RowReader rows(*m_sql, QStringLiteral("SELECT unit_number, name FROM plant_units"));
        rows.exec();
        while (rows.next()) {
            unitNames.insert(int(rows.integer(0)), rows.text(1));
        }
    }
    {
        RowReader rows(*m_sql,
                       u"SELECT count(*) FROM parameters WHERE ptype IN " + typeList(types));
        rows.exec();
        expected = rows.next() ? qsizetype(rows.integer(0)) : 0;
    }
    DateTimeTexts times;
    std::vector<qint32> pids; // of the records
    {
        // A list read this way is most of the site: one pass over the parameters in PID order
        // costs less than finding each through the type index ("+" keeps the index out).
        RowReader rows(*m_sql, u"SELECT p.pid, p.name, p.ptype, p.plant_unit, NULL, p.units_text,"
                               u" p.in_error, c.vkind, c.val, c.status, c.time FROM parameters p"
                               u" LEFT JOIN current_values c ON c.pid = p.pid WHERE +p.ptype IN "
                                   + typeList(types) + u" ORDER BY p.pid");
        rows.exec();
        HeadTexts texts;
        read.records.reserve(expected);
        read.live.reserve(expected);
        pids.reserve(size_t(expected));
        while (rows.next()) {
            ParameterRecord &record = read.records.emplace_back();
            readHead(rows, record, texts);
            pids.push_back(record.pid);
            if (!rows.isNull(3)) {
                record.unitName = unitNames.value(record.plantUnit);
            }
            readLiveRow(rows, 7, read.live.emplace_back(record.pid, LiveState()).second, times);
        }
    }
    read.columns = attributeColumns(pids, numbers);
    {
        QSqlQuery &query = m_sql->prepared(
            u"SELECT DISTINCT w.pid FROM pending_writes w CROSS JOIN parameters p"
            u" WHERE p.pid = w.pid AND w.state IN ('queued', 'claimed') AND p.ptype IN "
            + typeList(types));
        QueryScope scope(query);
        m_sql->exec(query);
        while (query.next()) {
            const qint32 pid = query.value(0).toInt();
            const auto at = std::lower_bound(
                read.records.cbegin(), read.records.cend(), pid,
                [](const ParameterRecord &record, qint32 p) { return record.pid < p; });
            if (at != read.records.cend() && at->pid == pid) {
                read.live[at - read.records.cbegin()].second.changePending = true;
            }
        }
    }
    transaction.commit();
    return read;
}

std::optional<ParameterRecord> SiteStore::parameter(qint32 pid)
{
    RowReader rows(*m_sql, u"SELECT " + kHeadColumns
                               + u", a.number, a.vkind, a.val FROM parameters p"
                                 u" LEFT JOIN plant_units u ON u.unit_number = p.plant_unit"
                                 u" LEFT JOIN attributes a ON a.pid = p.pid WHERE p.pid = ?"
                                 u" ORDER BY a.number");
    rows.bind(pid);
    rows.exec();
    std::optional<ParameterRecord> record;
    HeadTexts texts;
    while (rows.next()) {
        if (!record) {
            readHead(rows, record.emplace(), texts);
        }
        if (!rows.isNull(7)) {
            record->attributes.emplace_back(int(rows.integer(7)),
                                            decodeValue(int(rows.integer(8)), rows.text(9)));
        }
    }
    return record;
}

QList<ParameterRecord> SiteStore::parameters(const QList<qint32> &pids)
{
    QList<ParameterRecord> records;
    DateTimeTexts times;
    HeadTexts texts;
    forPidList(*m_sql,
               u"SELECT " + kHeadColumns
                   + u", a.number, a.vkind, a.val FROM parameters p"
                     u" LEFT JOIN plant_units u ON u.unit_number = p.plant_unit"
                     u" LEFT JOIN attributes a ON a.pid = p.pid WHERE p.pid %IN_PIDS%"
                     u" ORDER BY p.pid, a.number",
               pids, [&](const RowReader &rows) {
                   const qint32 pid = qint32(rows.integer(0));
                   if (records.isEmpty() || records.last().pid != pid) {
                       readHead(rows, records.emplace_back(), texts);
                   }
                   if (!rows.isNull(7)) {
                       records.last().attributes.emplace_back(
                           int(rows.integer(7)),
                           decodeValue(int(rows.integer(8)), rows.utf8(9), times));
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

QList<std::pair<qint32, LiveState>> SiteStore::liveStatesOfTypes(const QList<int> &types)
{
    const QString in = typeList(types);
    QList<std::pair<qint32, LiveState>> states;
    Transaction transaction(*m_sql, SqlConnection::TransactionKind::Read);
    {
        // The type index gives the parameters in PID order (for one type; more are sorted).
        RowReader rows(*m_sql, u"SELECT c.pid, c.vkind, c.val, c.status, c.time FROM parameters p"
                               u" CROSS JOIN current_values c WHERE c.pid = p.pid AND p.ptype IN "
                                   + in + u" ORDER BY p.pid");
        rows.exec();
        DateTimeTexts times;
        while (rows.next()) {
            auto &[pid, state] = states.emplace_back();
            pid = qint32(rows.integer(0));
            readLiveRow(rows, 1, state, times);
        }
    }
    QList<qint32> waiting;
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
            waiting.append(query.value(0).toInt());
        }
    }
    transaction.commit();
    if (!waiting.isEmpty()) {
        const auto byPid = [](const std::pair<qint32, LiveState> &entry, qint32 pid) {
            return entry.first < pid;
        };
        for (const qint32 pid : std::as_const(waiting)) {
            auto at = std::lower_bound(states.begin(), states.end(), pid, byPid);
            if (at == states.end() || at->first != pid) {
                at = states.insert(at, {pid, LiveState{}}); // no current value yet
            }
            at->second.changePending = true;
        }
    }
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
    DateTimeTexts times;
    forPidList(*m_sql,
               QStringLiteral("SELECT c.pid, c.vkind, c.val, c.status, c.time FROM %PIDS% j"
                              " JOIN current_values c ON c.pid = j.pid"),
               pids, [&](const RowReader &rows) {
                   readLiveRow(rows, 1, states[qint32(rows.integer(0))], times);
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
    RowReader rows(*m_sql,
                   QStringLiteral("SELECT c.vkind, c.val, c.status, c.time,"
                                  " (SELECT count(*) FROM pending_writes w"
                                  "  WHERE w.pid = p.pid AND w.state IN ('queued', 'claimed'))"
                                  " FROM parameters p LEFT JOIN current_values c ON c.pid = p.pid"
                                  " WHERE p.pid = ?"));
    rows.bind(pid);
    rows.exec();
    LiveState state;
    if (rows.next()) {
        DateTimeTexts times;
        readLiveRow(rows, 0, state, times);
        state.changePending = rows.integer(4) > 0;
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
    audit(*m_sql, pid, number, old, value, who, source);
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
    audit(*m_sql, pid, std::nullopt, old, value, who, source);
    transaction.commit();
}

} // namespace olvex
