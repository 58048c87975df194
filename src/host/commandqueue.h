#pragma once

#include "common/value.h"
#include "host/sitestore.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace olvex {

// The two queues between the operator's programs and the data acquisition service, kept in the
// site store: command records (PostMessageRecord) and pending value writes (SetValues mode 3).
//
// Life of an item: queued -> claimed (by one worker, until its lease runs out) -> done or
// failed. A claim whose lease ran out (its service died) is claimed again by the next worker
// that asks; `attempts` counts the claims. Completing checks that the caller still holds the
// claim, so an item is carried out to the end by exactly one worker, and completing an item
// twice changes nothing.
//
// One item at a time, on either backend:
//     CommandQueue queue(*store);
//     while (auto write = queue.claimPendingWrite(workerId, 30s))
//         queue.applyPendingWrite(*write, workerId);       // value, audit, done: one transaction
//     while (auto record = queue.claimCommand(workerId, 30s)) {
//         Transaction t(store->sql(), SqlConnection::TransactionKind::Write);
//         ... carry the record out through the store ...
//         queue.completeCommand(record->id, workerId, true, QStringLiteral("done"));
//         t.commit();                                       // effects and state together
//     }
// The service works in groups instead (claimCommands, claimPendingWrites, held*, and
// applyPendingWrites in one transaction; see DasService). A claim is two statements; PostgreSQL's
// takes the rows FOR UPDATE SKIP LOCKED, so several services on one site never take the same
// item.
// Its times are in UTC.
struct QueueItem
{
    enum class State { Queued, Claimed, Done, Failed };

    qint64 id = 0;
    State state = State::Queued;
    QString userName;
    QString clientName;
    QString clientAddress;
    QDateTime postedAt;
    QString claimedBy;
    QDateTime claimedUntil;
    int attempts = 0;
    QDateTime doneAt;
    QString result;
};

struct CommandRecord : QueueItem
{
    QString siteId;
    QString recordType;
    QString text;
    QString sourceCode;
};

struct PendingWrite : QueueItem
{
    qint32 pid = 0;
    Value value;
};

QString stateName(QueueItem::State state);

class CommandQueue
{
public:
    explicit CommandQueue(SiteStore &store)
        : m_store(store)
    {}

    // Posts a command record for the service; returns its id.
    qint64 postCommand(const QString &siteId, const QString &recordType, const QString &text,
                       const QString &sourceCode, const Actor &who);

    // The oldest item that is queued or whose lease has run out, now claimed by worker until
    // now + lease; nullopt when there is none.
    std::optional<CommandRecord> claimCommand(const QString &worker,
                                              std::chrono::milliseconds lease);
    std::optional<PendingWrite> claimPendingWrite(const QString &worker,
                                                  std::chrono::milliseconds lease);

    // Up to max of the oldest claimable items, claimed at once; oldest first.
    QList<CommandRecord> claimCommands(const QString &worker, std::chrono::milliseconds lease,
                                       int max);
    QList<PendingWrite> claimPendingWrites(const QString &worker, std::chrono::milliseconds lease,
                                           int max);
    // SQLite only, inside the caller's write transaction: up to max of the oldest claimable writes,
    // left as they are. The transaction that applies them (applyPendingWrites) holds the only
    // claim there is: nobody else writes to the site until it ends. takePendingWrites marks the
    // ones it fails instead as claimed by worker, for failPendingWrite.
    QList<PendingWrite> nextPendingWrites(int max);
    void takePendingWrites(const QList<qint64> &ids, const QString &worker);
    // Of ids, the items worker still holds a claim on; to be asked in the write transaction that
    // finishes them: on PostgreSQL the rows stay locked until it ends, so no other service takes
    // them over meanwhile, however long the work takes.
    QList<qint64> heldCommands(const QList<qint64> &ids, const QString &worker);
    QList<qint64> heldPendingWrites(const QList<qint64> &ids, const QString &worker);
    // Puts the claims of worker on ids back in the queue, to be tried again at once rather than
    // after their lease.
    void releaseCommands(const QList<qint64> &ids, const QString &worker);
    void releasePendingWrites(const QList<qint64> &ids, const QString &worker);

    // Extends a claim still held by worker; false when it is no longer the worker's.
    bool renewCommandLease(qint64 id, const QString &worker, std::chrono::milliseconds lease);

    // Marks a claimed record done (succeeded) or failed with its result text. False, and
    // nothing changed, when worker no longer holds the claim (it expired and another worker
    // took it, or the record is finished already).
    bool completeCommand(qint64 id, const QString &worker, bool succeeded, const QString &result);

    // Applies a claimed write in one transaction: the current value, its audit row, the write
    // marked done (so the setting no longer reads change-pending), and, for a cylinder's
    // component gas, the cylinder's gas list (-312). False, and nothing changed, when worker no
    // longer holds the claim.
    bool applyPendingWrite(const PendingWrite &write, const QString &worker);
    // Applies held writes, of distinct PIDs, in the caller's transaction, a few statements for
    // all of them: the values, their audit rows, the writes marked done, the cylinders' gas
    // lists. Returns, parallel to writes, an empty text for a write applied, or why it could not
    // be (its parameter is gone): recording that failure is the caller's.
    QStringList applyPendingWrites(const QList<PendingWrite> &writes, const QString &worker);
    bool failPendingWrite(qint64 id, const QString &worker, const QString &reason);

    // Items, oldest first; all states when state is nullopt.
    QList<CommandRecord> commands(std::optional<QueueItem::State> state = std::nullopt);
    QList<PendingWrite> pendingWrites(std::optional<QueueItem::State> state = std::nullopt);

private:
    SiteStore &m_store;
};

} // namespace olvex
