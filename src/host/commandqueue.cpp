#include "host/commandqueue.h"

#include "common/error.h"
#include "host/idlist.h"
#include "host/rowreader.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QSqlQuery>

#include <algorithm>
#include <optional>

namespace olvex {

namespace {

constexpr auto kCommonColumns = "id, state, user_name, client_name, client_address, posted_ms,"
                                " claimed_by, claimed_until_ms, attempts, done_ms, result";
constexpr auto kCommandColumns = ", site_id, record_type, text, source_code";
constexpr auto kWriteColumns = ", pid, vkind, val";

// Claimable: queued, or claimed by a worker whose lease ran out; each looked for on its own, so
// that both walk the index of unfinished items, (state, id), in id order and stop at the group's
// size instead of sorting every unfinished item. That index is partial: SQLite uses it only for
// a query that names its very condition, hence the state named twice. A value write waits while
// an older write of the same parameter is unfinished, so writes land in the order they were
// made. The unary plus keeps the lease time out of index choice: SQLite would otherwise prepare
// the statement again for every new time bound to it (its planner weighs bound values).
const QString &leaseRanOut()
{
    static const QString where = QStringLiteral(
        "state IN ('queued', 'claimed') AND state = 'claimed' AND +claimed_until_ms < ?");
    return where;
}
const QString &queued()
{
    static const QString where
        = QStringLiteral("state IN ('queued', 'claimed') AND state = 'queued'");
    return where;
}
const QString &writeWaitsForNone()
{
    static const QString where = QStringLiteral(
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

// A row of a QSqlQuery read like a RowReader's, so that one reader serves both.
struct QueryRow
{
    const QSqlQuery &query;
    bool isNull(int column) const { return query.isNull(column); }
    qint64 integer(int column) const { return query.value(column).toLongLong(); }
    QString text(int column) const { return query.value(column).toString(); }
};

// In UTC: a local time costs a look at the system's zone rules per value, and the service reads
// thousands of items a second.
template<class Row>
QDateTime utcTime(const Row &row, int column)
{
    return row.isNull(column) ? QDateTime()
                              : QDateTime::fromMSecsSinceEpoch(row.integer(column), Qt::UTC);
}

template<class Row>
void readCommon(const Row &row, QueueItem &item)
{
    item.id = row.integer(0);
    item.state = stateFromName(row.text(1));
    item.userName = row.text(2);
    item.clientName = row.text(3);
    item.clientAddress = row.text(4);
    item.postedAt = utcTime(row, 5);
    item.claimedBy = row.text(6);
    item.claimedUntil = utcTime(row, 7);
    item.attempts = int(row.integer(8));
    item.doneAt = utcTime(row, 9);
    item.result = row.text(10);
}

struct ReadCommand
{
    template<class Row>
    CommandRecord operator()(const Row &row) const
    {
        CommandRecord record;
        readCommon(row, record);
        record.siteId = row.text(11);
        record.recordType = row.text(12);
        record.text = row.text(13);
        record.sourceCode = row.text(14);
        return record;
    }
};

struct ReadWrite
{
    template<class Row>
    PendingWrite operator()(const Row &row) const
    {
        PendingWrite write;
        readCommon(row, write);
        write.pid = qint32(row.integer(11));
        write.value = decodeValue(int(row.integer(12)), row.text(13));
        return write;
    }
};

// Marks the rows of ids claimed by worker until the given time, each one more attempt.
void take(SiteStore &store, const QString &table, const QList<qint64> &ids, const QString &worker,
          qint64 until)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(
        withIdList(u"UPDATE " + table
                       + u" SET state = 'claimed', claimed_by = ?, claimed_until_ms = ?,"
                         u" attempts = attempts + 1 WHERE id %IN_IDS%",
                   store.isSqlite(), ids.size()));
    query.addBindValue(notNull(worker));
    query.addBindValue(until);
    query.addBindValue(idListValue(store.isSqlite(), ids));
    sql.exec(query);
    query.finish();
}

// Claims up to max of the oldest claimable rows of table (two looks: the claims whose lease ran
// out, then the queued rows) and reads them with read, oldest first.
// With worker empty, only reads them (SQLite, in the caller's write transaction).
template<class Item, class Read>
QList<Item> claim(SiteStore &store, const QString &table, const QString &columns,
                  const QString &condition, const QString &worker, std::chrono::milliseconds lease,
                  int max, Read read)
{
    SqlConnection &sql = store.sql();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 until = now + lease.count();
    const bool sqlite = store.isSqlite();
    // SQLite: the write transaction makes the read and the claim one; the claim then names its
    // rows by id, so that a look at an empty queue is a plain read (the service looks often).
    std::optional<Transaction> claiming;
    if (sqlite && !worker.isEmpty()) {
        claiming.emplace(sql, SqlConnection::TransactionKind::Write);
    }
    QList<Item> items;
    for (const bool expired : {true, false}) {
        if (items.size() >= max) {
            break;
        }
        const QString select = u" FROM " + table + u" WHERE " + (expired ? leaseRanOut() : queued())
                               + condition + u" ORDER BY id LIMIT ?";
        const qint64 limit = std::max(max - int(items.size()), 1);
        if (sqlite) {
            // Many rows, read without a QVariant per column.
            RowReader rows(sql, u"SELECT " + columns + select);
            if (expired) {
                rows.bind(now);
            }
            rows.bind(limit);
            rows.exec();
            while (rows.next()) {
                items.append(read(rows));
            }
            continue;
        }
        const QString update = u"UPDATE " + table
                               + u" SET state = 'claimed', claimed_by = ?, claimed_until_ms = ?,"
                                 u" attempts = attempts + 1 WHERE id IN (SELECT id"
                               + select + u" FOR UPDATE SKIP LOCKED) RETURNING " + columns;
        // PostgreSQL plans a statement kept prepared once for any LIMIT, and that plan sorts the
        // whole queue: prepared anew, each claim gets a plan for its own group size.
        QSqlQuery query = sql.prepare(update);
        query.addBindValue(notNull(worker));
        query.addBindValue(until);
        if (expired) {
            query.addBindValue(now);
        }
        query.addBindValue(limit);
        sql.exec(query);
        while (query.next()) {
            items.append(read(QueryRow{query}));
        }
    }
    std::ranges::sort(items, {}, &QueueItem::id);
    if (claiming && !items.isEmpty()) {
        QList<qint64> ids;
        for (Item &item : items) {
            ids.append(item.id);
            item.state = QueueItem::State::Claimed;
            item.claimedBy = worker;
            item.claimedUntil = QDateTime::fromMSecsSinceEpoch(until, Qt::UTC);
            ++item.attempts;
        }
        take(store, table, ids, worker, until);
    }
    if (claiming) {
        claiming->commit();
    }
    return items;
}

QList<qint64> held(SiteStore &store, const QString &table, const QList<qint64> &ids,
                   const QString &worker)
{
    QList<qint64> held;
    if (ids.isEmpty()) {
        return held;
    }
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(
        withIdList(u"SELECT id FROM " + table
                       + u" WHERE id %IN_IDS% AND state = 'claimed' AND claimed_by = ? ORDER BY id"
                       + (store.isSqlite() ? u"" : u" FOR UPDATE"),
                   store.isSqlite()));
    QueryScope scope(query);
    query.addBindValue(idListText(store.isSqlite(), ids));
    query.addBindValue(notNull(worker));
    sql.exec(query);
    while (query.next()) {
        held.append(query.value(0).toLongLong());
    }
    return held;
}

void release(SiteStore &store, const QString &table, const QList<qint64> &ids,
             const QString &worker)
{
    if (ids.isEmpty()) {
        return;
    }
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(
        withIdList(u"UPDATE " + table
                       + u" SET state = 'queued', claimed_by = NULL, claimed_until_ms = NULL"
                         u" WHERE id %IN_IDS% AND state = 'claimed' AND claimed_by = ?",
                   store.isSqlite()));
    query.addBindValue(idListText(store.isSqlite(), ids));
    query.addBindValue(notNull(worker));
    sql.exec(query);
    query.finish();
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
        items.append(read(QueryRow{query}));
    }
    return items;
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
    const QList<CommandRecord> records = claimCommands(worker, lease, 1);
    return records.isEmpty() ? std::nullopt : std::optional(records.first());
}

QList<CommandRecord> CommandQueue::claimCommands(const QString &worker,
                                                 std::chrono::milliseconds lease, int max)
{
    return claim<CommandRecord>(m_store, QStringLiteral("command_records"), commandColumns(),
                                QString(), worker, lease, max, ReadCommand());
}

std::optional<PendingWrite> CommandQueue::claimPendingWrite(const QString &worker,
                                                            std::chrono::milliseconds lease)
{
    const QList<PendingWrite> writes = claimPendingWrites(worker, lease, 1);
    return writes.isEmpty() ? std::nullopt : std::optional(writes.first());
}

QList<PendingWrite> CommandQueue::claimPendingWrites(const QString &worker,
                                                     std::chrono::milliseconds lease, int max)
{
    return claim<PendingWrite>(m_store, QStringLiteral("pending_writes"), writeColumns(),
                               writeWaitsForNone(), worker, lease, max, ReadWrite());
}

QList<PendingWrite> CommandQueue::nextPendingWrites(int max)
{
    Q_ASSERT(m_store.isSqlite() && m_store.sql().inTransaction());
    return claim<PendingWrite>(m_store, QStringLiteral("pending_writes"), writeColumns(),
                               writeWaitsForNone(), QString(), std::chrono::milliseconds(0), max,
                               ReadWrite());
}

void CommandQueue::takePendingWrites(const QList<qint64> &ids, const QString &worker)
{
    if (!ids.isEmpty()) {
        take(m_store, QStringLiteral("pending_writes"), ids, worker,
             QDateTime::currentMSecsSinceEpoch());
    }
}

QList<qint64> CommandQueue::heldCommands(const QList<qint64> &ids, const QString &worker)
{
    return held(m_store, QStringLiteral("command_records"), ids, worker);
}

QList<qint64> CommandQueue::heldPendingWrites(const QList<qint64> &ids, const QString &worker)
{
    return held(m_store, QStringLiteral("pending_writes"), ids, worker);
}

void CommandQueue::releaseCommands(const QList<qint64> &ids, const QString &worker)
{
    release(m_store, QStringLiteral("command_records"), ids, worker);
}

void CommandQueue::releasePendingWrites(const QList<qint64> &ids, const QString &worker)
{
    release(m_store, QStringLiteral("pending_writes"), ids, worker);
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
    if (heldPendingWrites({write.id}, worker).isEmpty()) {
        return false;
    }
    const QString reason = applyPendingWrites({write}, worker).constFirst();
    if (!reason.isEmpty()) {
        throw Error(StoreError::UnknownPid, reason);
    }
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
                               ReadCommand());
}

QList<PendingWrite> CommandQueue::pendingWrites(std::optional<QueueItem::State> state)
{
    return list<PendingWrite>(m_store, QStringLiteral("pending_writes"), writeColumns(), state,
                              ReadWrite());
}

} // namespace olvex
