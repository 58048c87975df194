#pragma once

#include "das/calcheckrunner.h"
#include "das/calscheduler.h"
#include "das/commandhandlers.h"
#include "host/commandqueue.h"
#include "host/sitestore.h"

#include <QHash>
#include <QMetaType>
#include <QString>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace olvex {

struct CaughtError;

struct DasOptions
{
    // Who owns the claims; empty: makeWorkerId().
    QString workerId;
    // How long a claim holds before another service may take the item again. A service that
    // dies leaves its claims behind for this long.
    std::chrono::milliseconds lease{30000};
    // Receives every line the service writes to the site's message log, and the lines it could
    // not write there (the program points it at stderr).
    std::function<void(int severity, const QString &line)> logSink;
    // After a few failed steps in a row, open the site again from its connection text (a
    // database server that restarted drops its connections for good). Only for a service that
    // has the store to itself: the window's service shares the window's.
    bool reopenStore = false;
    // The service's time (calibration checks, the auto-cal log); null: the wall clock. Tests
    // give a manual clock, a demonstration may give a faster one.
    std::shared_ptr<ClockLibrary> clock;
};

// What became of one item.
struct DasResult
{
    enum class Kind { ValueWrite, Command };

    Kind kind = Kind::ValueWrite;
    qint64 id = 0;
    bool succeeded = false;
    // The record's result text ("applied", a handler's message, the reason it failed).
    QString result;
    // The line written to the message log.
    QString line;
};

// The data acquisition service's side of the two queues: it claims pending value writes and
// command records in groups, carries each out against the store and records the results.
//
// A group is one item while the queue is short, so a single change lands at once; while the
// queue stays long it grows, sixteen times a step up to kMaxGroup (each step is a commit, and a
// commit's flush costs more than thousands of rows), and shrinks back to one as soon as a claim
// finds fewer items than it asked for. Within a group the value writes are
// applied first, with a few statements for all of them, then the command records one by one in
// queue order; an earlier write of the same setting is always finished before a later one is
// claimed.
//
// Every item is carried out exactly once:
// - SQLite: claims, effects, results and log lines of a group are one write transaction.
//   Whatever stops the service half way (a crash, SIGKILL, a full disk) rolls all of it back,
//   and the items are simply still queued.
// - PostgreSQL: the claims commit on their own (FOR UPDATE SKIP LOCKED, with a lease), so
//   several services share the queue without taking the same item. The effects and the results
//   commit together in a second transaction that first checks, and locks, the claims; an item
//   whose claim was lost meanwhile (the lease ran out and another service took it) is left to
//   that service. A claim of a service that died is taken again once its lease has run out.
//
// An item that cannot be carried out (no handler for its action, a malformed record, an error
// of its own) is marked failed with the reason, never dropped, and alone: a command record runs
// in a savepoint of its own, so its failure undoes only its own changes and the rest of the group
// commits. A store failure of a record's handler puts the record back in the queue for another
// try, and marks it failed once it has happened a few times for that record. A group that fails
// as a whole (the store went away) is rolled back and its items tried again one at a time.
//
// A service is one connection's worth of work: use it from the thread that opened the store.
class DasService
{
public:
    explicit DasService(std::shared_ptr<SiteStore> store, DasOptions options = DasOptions());
    ~DasService();
    DasService(const DasService &) = delete;
    DasService &operator=(const DasService &) = delete;

    // The most items one step claims.
    static constexpr int kMaxGroup = 8192;

    // One step: claims the next group (value writes and command records take turns at being
    // claimed first) and carries it out. The number of items finished (done or failed); 0:
    // nothing could be claimed; -1: the step failed (the error is logged and in lastError(); the
    // items are tried again later). Never throws.
    int runOnce() noexcept;
    // How many items the next step claims at most.
    int groupLimit() const { return m_groupLimit; }

    // Items queued or claimed by anyone, on this site: what a drain waits for. Throws
    // olvex::Error when the store cannot be read.
    int outstanding();

    CommandHandlers &handlers() { return m_handlers; }
    // Runs the calibration checks that the calibration commands start; each step first ends
    // those whose time is up.
    CalCheckRunner &calChecks() { return *m_calChecks; }
    // Starts the checks the records schedule, and holds them for confirmation where asked.
    CalScheduler &calScheduler() { return *m_calScheduler; }
    const QString &workerId() const { return m_workerId; }
    std::chrono::milliseconds lease() const { return m_options.lease; }
    // The store the service works on (another one after it reopened the site).
    SiteStore &store() { return *m_store; }
    QString lastError() const { return m_lastError; }

    // Called after each finished item, once its result is committed.
    void setResultObserver(std::function<void(const DasResult &)> observer);

private:
    struct ItemKey
    {
        DasResult::Kind kind;
        qint64 id;
        bool operator==(const ItemKey &other) const = default;
    };
    friend size_t qHash(const ItemKey &key, size_t seed) noexcept
    {
        return qHashMulti(seed, int(key.kind), key.id);
    }
    struct Failure
    {
        int count = 0;
        bool final = false;
        QString reason;
    };

    struct Group;

    int step(bool mayRetry);
    CommandQueue queue() { return CommandQueue(*m_store); }
    void reopenStore() noexcept;
    void claim(Group &group);
    // PostgreSQL: keeps the items whose claims are still this service's, locked.
    void keepHeld(Group &group);
    void applyWrites(Group &group);
    void carryOutCommands(Group &group);
    CommandOutcome carryOut(const CommandRecord &record);
    void result(Group &group, DasResult result);
    // After an item's own failure: true when it goes back to the queue for another try.
    bool tryAgain(Group &group, const ItemKey &key, const QString &what, const QString &reason,
                  bool storeFailure);
    // After the group was rolled back as a whole. Returns what the step returns.
    int groupFailed(const Group &group, const CaughtError &error, bool mayRetry);
    void writeLogLine(int severity, const QString &line);
    void advanceCalChecks();
    void echo(int severity, const QString &line) const;
    QString describe(const PendingWrite &write) const;
    QString describe(const CommandRecord &record) const;

    std::shared_ptr<SiteStore> m_store;
    DasOptions m_options;
    QString m_workerId;
    Actor m_actor;
    CommandHandlers m_handlers;
    std::unique_ptr<CalCheckRunner> m_calChecks;
    std::unique_ptr<CalScheduler> m_calScheduler;
    QDateTime m_nextCalCheckLook;
    QHash<ItemKey, Failure> m_failures;
    std::function<void(const DasResult &)> m_observer;
    QString m_lastError;
    int m_failedSteps = 0;
    int m_groupLimit = 1;
    bool m_writesFirst = true;
    // Per kind (0 value writes, 1 command records): found nothing last time; turns given away.
    std::array<bool, 2> m_foundEmpty{};
    std::array<int, 2> m_skippedTurns{};
};

} // namespace olvex

Q_DECLARE_METATYPE(olvex::DasResult)
