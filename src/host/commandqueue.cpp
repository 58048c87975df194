#include "host/commandqueue.h"

#include "common/error.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QSqlQuery>

namespace olvex {

namespace {

constexpr auto kCommonColumns = "id, state, user_name, client_name, client_address, posted_ms,"
                                " claimed_by, claimed_until_ms, attempts, done_ms, result";
constexpr auto kCommandColumns = ", site_id, record_type, text, source_code";
constexpr auto kWriteColumns = ", pid, vkind, val";

// Claimable: queued, or claimed by a worker whose lease ran out. A value write waits while an
// older write of the same parameter is unfinished, so writes land in the order they were made.
// The unary plus keeps the lease time out of index choice: SQLite would otherwise prepare the
// statement again for every new time bound to it (its planner weighs bound values).
const QString &claimableCommand()
{
    static const QString where
        = QStringLiteral("(state = 'queued' OR (state = 'claimed' AND +claimed_until_ms < ?))");
    return where;
}
const QString &claimableWrite()
{
    static const QString where = QStringLiteral(
        "(state = 'queued' OR (state = 'claimed' AND +claimed_until_ms < ?))"
        " AND NOT EXISTS (SELECT 1 FROM pending_writes e WHERE e.pid = pending_writes.pid"
        " AND e.id < pending_writes.id AND e.state IN ('queued', 'claimed'))");
    return where;
}

QueueItem::State stateFromName(const QString &name)
{
    if (name == u"claimed") {
        return QueueItem::State::Claimed;
    }
    if (name == u"done") {
        return QueueItem::State::Done;
    }
    if (name == u"failed") {
        return QueueItem::State::Failed;
    }
    return QueueItem::State::Queued;
}

void readCommon(const QSqlQuery &query, QueueItem &item)
{
    item.id = query.value(0).toLongLong();
    item.state = stateFromName(query.value(1).toString());
    item.userName = query.value(2).toString();
    item.clientName = query.value(3).toString();
    item.clientAddress = query.value(4).toString();
    item.postedAt = fromStoreTime(query.value(5));
    item.claimedBy = query.value(6).toString();
    item.claimedUntil = fromStoreTime(query.value(7));
    item.attempts = query.value(8).toInt();
    item.doneAt = fromStoreTime(query.value(9));
    item.result = query.value(10).toString();
}

CommandRecord readCommand(const QSqlQuery &query)
{
    CommandRecord record;
    readCommon(query, record);
    record.siteId = query.value(11).toString();
    record.recordType = query.value(12).toString();
    record.text = query.value(13).toString();
    record.sourceCode = query.value(14).toString();
    return record;
}

PendingWrite readWrite(const QSqlQuery &query)
{
    PendingWrite write;
    readCommon(query, write);
    write.pid = query.value(11).toInt();
    write.value = decodeValue(query.value(12).toInt(), query.value(13).toString());
    return write;
}

// Claims the oldest claimable row of table and reads it with read.
template<class Item, class Read>
std::optional<Item> claim(SiteStore &store, const QString &table, const QString &columns,
                          const QString &claimable, const QString &worker,
                          std::chrono::milliseconds lease, Read read)
{
    SqlConnection &sql = store.sql();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 until = now + lease.count();
    if (!store.isSqlite()) {
        QSqlQuery &query
            = sql.prepared(u"UPDATE " + table
                           + u" SET state = 'claimed', claimed_by = ?, claimed_until_ms = ?,"
                             u" attempts = attempts + 1 WHERE id = (SELECT id FROM "
                           + table + u" WHERE " + claimable
                           + u" ORDER BY id LIMIT 1 FOR UPDATE SKIP LOCKED) RETURNING " + columns);
        QueryScope scope(query);
        query.addBindValue(notNull(worker));
        query.addBindValue(until);
        query.addBindValue(now);
        sql.exec(query);
        if (!query.next()) {
            return std::nullopt;
        }
        return read(query);
    }
    Transaction transaction(sql, SqlConnection::TransactionKind::Write);
    qint64 id = 0;
    {
        QSqlQuery &query = sql.prepared(u"SELECT id FROM " + table + u" WHERE " + claimable
                                        + u" ORDER BY id LIMIT 1");
        QueryScope scope(query);
        query.addBindValue(now);
        sql.exec(query);
        if (!query.next()) {
            return std::nullopt;
        }
        id = query.value(0).toLongLong();
    }
    {
        QSqlQuery &query = sql.prepared(u"UPDATE " + table
                                        + u" SET state = 'claimed', claimed_by = ?,"
                                          u" claimed_until_ms = ?, attempts = attempts + 1"
                                          u" WHERE id = ?");
        query.addBindValue(notNull(worker));
        query.addBindValue(until);
        query.addBindValue(id);
        sql.exec(query);
    }
    std::optional<Item> item;
    {
        QSqlQuery &query
            = sql.prepared(u"SELECT " + columns + u" FROM " + table + u" WHERE id = ?");
        QueryScope scope(query);
        query.addBindValue(id);
        sql.exec(query);
        if (query.next()) {
            item = read(query);
        }
    }
    transaction.commit();
    return item;
}

bool finish(SiteStore &store, const QString &table, qint64 id, const QString &worker,
            bool succeeded, const QString &result)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(u"UPDATE " + table
                                    + u" SET state = ?, done_ms = ?, result = ?"
                                      u" WHERE id = ? AND state = 'claimed' AND claimed_by = ?");
    query.addBindValue(succeeded ? QStringLiteral("done") : QStringLiteral("failed"));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    query.addBindValue(notNull(result));
    query.addBindValue(id);
    query.addBindValue(notNull(worker));
    sql.exec(query);
    const bool changed = query.numRowsAffected() == 1;
    query.finish();
    return changed;
}

template<class Item, class Read>
QList<Item> list(SiteStore &store, const QString &table, const QString &columns,
                 std::optional<QueueItem::State> state, Read read)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(u"SELECT " + columns + u" FROM " + table
                                    + u" WHERE (? = '' OR state = ?) ORDER BY id");
    QueryScope scope(query);
    const QString name = state ? stateName(*state) : QStringLiteral("");
    query.addBindValue(name);
    query.addBindValue(name);
    sql.exec(query);
    QList<Item> items;
    while (query.next()) {
        items.append(read(query));
    }
    return items;
}

// A cylinder's component gases are listed, with their certified values, in its attribute -312
// ("SO2,450.5,ppm;NO,250,ppm"), in the order of its gas PIDs (-46). When a gas's value changes,
// the list follows, in the same transaction, so the cylinder list never shows an old value.
void refreshCylinderGases(SiteStore &store, qint32 gasPid, const Value &value, const Actor &who)
{
    // Most writes are of no cylinder's gas: one indexed look at the cylinders' gas lists (whose
    // stored form holds each PID as "pid") settles that.
    QList<qint32> cylinders;
    {
        SqlConnection &sql = store.sql();
        QSqlQuery &query = sql.prepared(
            u"SELECT p.pid FROM parameters p JOIN attributes a ON a.pid = p.pid AND a.number = "
            + QString::number(CylinderAttr::GasPids) + u" WHERE p.ptype = "
            + QString::number(ParameterTypes::GasCylinder) + u" AND a.val LIKE ?");
        QueryScope scope(query);
        query.addBindValue(QString(u"%\"" + QString::number(gasPid) + u"\"%"));
        sql.exec(query);
        while (query.next()) {
            cylinders.append(query.value(0).toInt());
        }
    }
    for (const qint32 cylinderPid : cylinders) {
        const std::optional<ParameterRecord> found = store.parameter(cylinderPid);
        if (!found) {
            continue;
        }
        const ParameterRecord &cylinder = *found;
        const Value *members = cylinder.attribute(CylinderAttr::GasPids);
        const Value *listed = cylinder.attribute(CylinderAttr::ComponentGases);
        if (!members || !listed) {
            continue;
        }
        const QList<Value> pids = members->toArray();
        QStringList entries = listed->toText().split(u';');
        bool changed = false;
        for (qsizetype i = 0; i < pids.size() && i < entries.size(); ++i) {
            if (pids[i].toInteger() != gasPid) {
                continue;
            }
            QStringList parts = entries[i].split(u',');
            if (parts.size() < 2) {
                continue;
            }
            const StoredValue stored = encodeValue(value);
            parts[1]
                = value.isNumeric() && !value.isText() ? stored.text.toString() : value.toText();
            entries[i] = parts.join(u',');
            changed = true;
        }
        if (changed) {
            store.setAttribute(cylinder.pid, CylinderAttr::ComponentGases, Value(entries.join(u';')), who,
                               QStringLiteral("component gas value"));
        }
    }
}

QString commandColumns()
{
    return QLatin1StringView(kCommonColumns) + QLatin1StringView(kCommandColumns);
}

QString writeColumns()
{
    return QLatin1StringView(kCommonColumns) + QLatin1StringView(kWriteColumns);
}

} // namespace

QString stateName(QueueItem::State state)
{
    switch (state) {
    case QueueItem::State::Queued:
        return QStringLiteral("queued");
    case QueueItem::State::Claimed:
        return QStringLiteral("claimed");
    case QueueItem::State::Done:
        return QStringLiteral("done");
    case QueueItem::State::Failed:
        return QStringLiteral("failed");
    }
    return QString();
}

qint64 CommandQueue::postCommand(const QString &siteId, const QString &recordType,
                                 const QString &text, const QString &sourceCode, const Actor &who)
{
    SqlConnection &sql = m_store.sql();
    Transaction transaction(sql, SqlConnection::TransactionKind::Write);
    const QString insert = QStringLiteral(
        "INSERT INTO command_records (site_id, record_type, text, source_code, user_name,"
        " client_name, client_address, posted_ms) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    QSqlQuery &query = sql.prepared(m_store.isSqlite() ? insert : insert + u" RETURNING id");
    query.addBindValue(notNull(siteId));
    query.addBindValue(notNull(recordType));
    query.addBindValue(notNull(text));
    query.addBindValue(notNull(sourceCode));
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientName));
    query.addBindValue(notNull(who.clientAddress));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    sql.exec(query);
    qint64 id = 0;
    if (m_store.isSqlite()) {
        id = query.lastInsertId().toLongLong();
    } else if (query.next()) {
        id = query.value(0).toLongLong();
    }
    query.finish();
    transaction.commit();
    return id;
}

std::optional<CommandRecord> CommandQueue::claimCommand(const QString &worker,
                                                        std::chrono::milliseconds lease)
{
    return claim<CommandRecord>(m_store, QStringLiteral("command_records"), commandColumns(),
                                claimableCommand(), worker, lease, readCommand);
}

std::optional<PendingWrite> CommandQueue::claimPendingWrite(const QString &worker,
                                                            std::chrono::milliseconds lease)
{
    return claim<PendingWrite>(m_store, QStringLiteral("pending_writes"), writeColumns(),
                               claimableWrite(), worker, lease, readWrite);
}

bool CommandQueue::renewCommandLease(qint64 id, const QString &worker,
                                     std::chrono::milliseconds lease)
{
    SqlConnection &sql = m_store.sql();
    QSqlQuery &query
        = sql.prepared(QStringLiteral("UPDATE command_records SET claimed_until_ms = ?"
                                      " WHERE id = ? AND state = 'claimed' AND claimed_by = ?"));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch() + lease.count());
    query.addBindValue(id);
    query.addBindValue(notNull(worker));
    sql.exec(query);
    const bool renewed = query.numRowsAffected() == 1;
    query.finish();
    return renewed;
}

bool CommandQueue::completeCommand(qint64 id, const QString &worker, bool succeeded,
                                   const QString &result)
{
    return finish(m_store, QStringLiteral("command_records"), id, worker, succeeded, result);
}

bool CommandQueue::applyPendingWrite(const PendingWrite &write, const QString &worker)
{
    Transaction transaction(m_store.sql(), SqlConnection::TransactionKind::Write);
    if (!finish(m_store, QStringLiteral("pending_writes"), write.id, worker, true,
                QStringLiteral("applied"))) {
        return false;
    }
    const Actor who{write.userName, write.clientName, write.clientAddress};
    m_store.setCurrentValue(write.pid, write.value, 0, who,
                            u"pending write " + QString::number(write.id));
    refreshCylinderGases(m_store, write.pid, write.value, who);
    transaction.commit();
    return true;
}

bool CommandQueue::failPendingWrite(qint64 id, const QString &worker, const QString &reason)
{
    return finish(m_store, QStringLiteral("pending_writes"), id, worker, false, reason);
}

QList<CommandRecord> CommandQueue::commands(std::optional<QueueItem::State> state)
{
    return list<CommandRecord>(m_store, QStringLiteral("command_records"), commandColumns(), state,
                               readCommand);
}

QList<PendingWrite> CommandQueue::pendingWrites(std::optional<QueueItem::State> state)
{
    return list<PendingWrite>(m_store, QStringLiteral("pending_writes"), writeColumns(), state,
                              readWrite);
}

} // namespace olvex
