#include "das/dasservice.h"

#include "common/error.h"
#include "common/pid.h"
#include "das/calconfirmhandlers.h"
#include "das/calstarthandlers.h"
#include "das/cylinderhandlers.h"
#include "das/workerid.h"
#include "host/siteclock.h"
#include "host/sqlconnection.h"
#include "host/storeerrors.h"

#include <QElapsedTimer>
#include <QSysInfo>

#include <optional>

namespace olvex {

namespace {

// Beyond this a record is refused before it reaches the parser: no command of this system comes
// near it, and a hostile one should cost nothing.
constexpr qsizetype kMaxCommandText = 1 << 20;
// How often a store failure may hit one item before the item is marked failed with it.
constexpr int kStoreFailureTries = 3;
// Remembered failures of items that others may have finished meanwhile are let go past this.
constexpr qsizetype kMaxRememberedFailures = 10000;
// Failed steps in a row after which a service that may reopen its site does so.
constexpr int kReopenAfterFailedSteps = 3;
// How many turns in a row a kind of item found empty gives away to the other kind.
constexpr int kSkippedTurns = 7;

// A failure of the store itself (statement, connection) may pass; anything else belongs to the
// item and will happen again however often it is tried.
bool isStoreFailure(int number)
{
    return number == StoreError::SqlFailed || number == StoreError::CannotConnect;
}

// Thrown by carryOut when a handler failed, so that the step rolls the handler's changes back
// before it records the failure.
struct HandlerFailure
{
    QString reason;
    bool storeFailure = false;
};

QString valueText(const Value &value)
{
    if (value.isNull()) {
        return QStringLiteral("<Null>");
    }
    if (value.isEmpty()) {
        return QStringLiteral("(empty)");
    }
    return TruncateText(value.toText(), 200);
}

QString byWhom(const QueueItem &item)
{
    QString who = item.userName.isEmpty() ? QStringLiteral("unknown user") : item.userName;
    if (!item.clientName.isEmpty()) {
        who += u" at " + item.clientName;
    }
    return u" (by " + who + u')';
}

} // namespace

DasService::DasService(std::shared_ptr<SiteStore> store, DasOptions options)
    : m_store(std::move(store))
    , m_options(std::move(options))
    , m_workerId(m_options.workerId.isEmpty() ? makeWorkerId() : m_options.workerId)
    , m_actor{QStringLiteral("olvex-das"), QSysInfo::machineHostName(), QString()}
{
    if (m_options.lease.count() < 1) {
        m_options.lease = std::chrono::milliseconds(1);
    }
    if (!m_options.clock) {
        m_options.clock = std::make_shared<SiteClock>();
    }
    m_calChecks = std::make_unique<CalCheckRunner>(m_options.clock);
    addCalStartHandlers(m_handlers, *m_calChecks);
    addCylinderHandlers(m_handlers);
    m_calScheduler = std::make_unique<CalScheduler>(m_options.clock, *m_calChecks);
    addCalConfirmHandlers(m_handlers, *m_calScheduler);
}

DasService::~DasService() = default;

void DasService::setResultObserver(std::function<void(const DasResult &)> observer)
{
    m_observer = std::move(observer);
}

int DasService::outstanding()
{
    const SiteCounts counts = m_store->counts();
    return counts.queuedCommands + counts.queuedWrites;
}

int DasService::runOnce() noexcept
{
    advanceCalChecks();
    int result = -1;
    guarded([&] { result = step(true); },
            [&](const CaughtError &error) {
                m_lastError = error.description;
                writeLogLine(4, u"DAS: a service step failed: " + error.errorText());
                result = -1;
            });
    m_failedSteps = result < 0 ? m_failedSteps + 1 : 0;
    if (m_options.reopenStore && m_failedSteps >= kReopenAfterFailedSteps) {
        reopenStore();
    }
    return result;
}

void DasService::advanceCalChecks()
{
    // A look at the running checks costs a query: once a second of service time is enough.
    const QDateTime now = m_calChecks->now();
    if (m_nextCalCheckLook.isValid() && now < m_nextCalCheckLook) {
        return;
    }
    m_nextCalCheckLook = now.addSecs(1);
    guarded(
        [&] {
            const int ended = m_calChecks->advance(*m_store);
            if (ended > 0) {
                echo(1, u"DAS: " + QString::number(ended) + u" calibration check(s) ended");
            }
            for (const QString &line : m_calScheduler->step(*m_store)) {
                writeLogLine(1, u"DAS: " + line);
            }
        },
        [&](const CaughtError &error) {
            writeLogLine(4, u"DAS: cannot end the calibration checks that are due: "
                                + error.errorText());
        });
}

void DasService::reopenStore() noexcept
{
    guarded(
        [&] {
            const QString text = m_store->connectionText();
            std::shared_ptr<SiteStore> fresh = SiteStore::open(text);
            m_store = std::move(fresh);
            m_failedSteps = 0;
            writeLogLine(1, u"DAS: reopened the site " + m_store->target().displayText()
                                + u" after " + QString::number(kReopenAfterFailedSteps)
                                + u" failed steps");
        },
        [&](const CaughtError &error) {
            echo(4, u"DAS: cannot reopen the site: " + error.description);
        });
}

// One step's items, and what becomes of them, committed together.
struct DasService::Group
{
    QList<PendingWrite> writes;
    QList<CommandRecord> records;
    QList<DasResult> results;
    // The group's message-log lines, in order: its results and its items' failed attempts.
    QList<std::pair<int, QString>> lines;
    int claimed = 0;
    int triedAgain = 0; // items back in the queue for another try
};

int DasService::step(bool mayRetry)
{
    SqlConnection &sql = m_store->sql();
    Group group;
    std::optional<Transaction> whole;
    if (m_store->isSqlite()) {
        whole.emplace(sql, SqlConnection::TransactionKind::Write);
    }
    claim(group);
    if (group.claimed == 0) {
        m_groupLimit = 1;
        return 0;
    }
    try {
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        if (!m_store->isSqlite()) {
            keepHeld(group);
        }
        applyWrites(group);
        carryOutCommands(group);
        m_store->logMessages(group.lines, m_actor);
        transaction.commit();
        if (whole) {
            whole->commit();
        }
    } catch (...) {
        const CaughtError error = currentError();
        whole.reset();
        return groupFailed(group, error, mayRetry);
    }

    // The queue was at least as long as the group: the next one may be larger.
    m_groupLimit = group.claimed >= m_groupLimit ? std::min(m_groupLimit * 16, kMaxGroup) : 1;
    for (const auto &[severity, line] : std::as_const(group.lines)) {
        echo(severity, line);
    }
    for (const DasResult &result : std::as_const(group.results)) {
        m_failures.remove(ItemKey{result.kind, result.id});
        if (m_observer) {
            m_observer(result);
        }
    }
    // A group whose items all went back to the queue for another try is a failed step; one
    // whose claims were all lost to another service found nothing to do.
    if (group.results.isEmpty()) {
        return group.triedAgain > 0 ? -1 : 0;
    }
    return int(group.results.size());
}

void DasService::claim(Group &group)
{
    // Writes and commands take turns at being claimed first, so a long run of either never
    // starves the other: an item of the other kind waits one group at most. While items come
    // one at a time, a kind found empty last time gives its turn away, a few times in a row at
    // most: a burst of the other kind then costs no empty look per item. A step that finds
    // nothing has always looked at both.
    bool writes = m_writesFirst;
    m_writesFirst = !m_writesFirst;
    int &skipped = m_skippedTurns[writes ? 0 : 1];
    if (m_groupLimit == 1 && m_foundEmpty[writes ? 0 : 1] && skipped < kSkippedTurns) {
        ++skipped;
        writes = !writes;
    } else {
        skipped = 0;
    }
    for (int i = 0; i < 2 && group.claimed < m_groupLimit; ++i, writes = !writes) {
        const int room = m_groupLimit - group.claimed;
        if (writes) {
            // SQLite: this transaction is the claim.
            group.writes = m_store->isSqlite()
                               ? queue().nextPendingWrites(room)
                               : queue().claimPendingWrites(m_workerId, m_options.lease, room);
            group.claimed += int(group.writes.size());
            m_foundEmpty[0] = group.writes.isEmpty();
        } else {
            group.records = queue().claimCommands(m_workerId, m_options.lease, room);
            group.claimed += int(group.records.size());
            m_foundEmpty[1] = group.records.isEmpty();
        }
    }
}

void DasService::keepHeld(Group &group)
{
    const auto keep = [this](auto &items, const QList<qint64> &held) {
        items.removeIf([&](const auto &item) {
            if (held.contains(item.id)) {
                return false;
            }
            echo(1, describe(item) + u" was taken over by another service");
            return true;
        });
    };
    QList<qint64> ids;
    for (const PendingWrite &write : std::as_const(group.writes)) {
        ids.append(write.id);
    }
    keep(group.writes, queue().heldPendingWrites(ids, m_workerId));
    ids.clear();
    for (const CommandRecord &record : std::as_const(group.records)) {
        ids.append(record.id);
    }
    keep(group.records, queue().heldCommands(ids, m_workerId));
}

void DasService::result(Group &group, DasResult result)
{
    const int severity = result.succeeded ? 1 : 4;
    group.lines.append({severity, result.line});
    group.results.append(std::move(result));
}

void DasService::applyWrites(Group &group)
{
    QList<PendingWrite> toApply;
    toApply.reserve(group.writes.size());
    const auto failed = [&](const PendingWrite &write, const QString &reason) {
        if (m_store->isSqlite()) {
            queue().takePendingWrites({write.id}, m_workerId);
        }
        queue().failPendingWrite(write.id, m_workerId, reason);
        result(group, {DasResult::Kind::ValueWrite, write.id, false, reason,
                       describe(write) + u" failed: " + reason});
    };
    for (const PendingWrite &write : std::as_const(group.writes)) {
        const auto known = m_failures.constFind(ItemKey{DasResult::Kind::ValueWrite, write.id});
        if (known != m_failures.cend() && known->final) {
            failed(write, known->reason);
        } else {
            toApply.append(write);
        }
    }
    if (toApply.isEmpty()) {
        return;
    }
    const QStringList reasons = queue().applyPendingWrites(toApply, m_workerId);
    for (qsizetype i = 0; i < toApply.size(); ++i) {
        const PendingWrite &write = toApply[i];
        if (reasons[i].isEmpty()) {
            result(group, {DasResult::Kind::ValueWrite, write.id, true, QStringLiteral("applied"),
                           describe(write) + u" applied"});
        } else {
            failed(write, reasons[i]);
        }
    }
}

void DasService::carryOutCommands(Group &group)
{
    SqlConnection &sql = m_store->sql();
    for (const CommandRecord &record : std::as_const(group.records)) {
        const ItemKey key{DasResult::Kind::Command, record.id};
        const QString what = describe(record);
        CommandOutcome outcome;
        if (const auto known = m_failures.constFind(key);
            known != m_failures.cend() && known->final) {
            outcome = CommandOutcome::failed(known->reason);
        } else {
            QString reason;
            bool storeFailure = true;
            Savepoint savepoint(sql);
            try {
                outcome = carryOut(record);
                savepoint.release();
            } catch (const HandlerFailure &failure) {
                reason = failure.reason;
                storeFailure = failure.storeFailure;
            } catch (...) {
                const CaughtError error = currentError();
                reason = error.errorText();
                storeFailure = isStoreFailure(error.number);
            }
            if (!reason.isNull()) {
                savepoint.rollback();
                if (tryAgain(group, key, what, reason, storeFailure)) {
                    queue().releaseCommands({record.id}, m_workerId);
                    ++group.triedAgain;
                    continue;
                }
                outcome = CommandOutcome::failed(m_failures.value(key).reason);
            }
        }
        queue().completeCommand(record.id, m_workerId, outcome.succeeded, outcome.message);
        result(group, {DasResult::Kind::Command, record.id, outcome.succeeded, outcome.message,
                       what + (outcome.succeeded ? u" done: " : u" failed: ") + outcome.message});
    }
}

bool DasService::tryAgain(Group &group, const ItemKey &key, const QString &what,
                          const QString &reason, bool storeFailure)
{
    if (m_failures.size() > kMaxRememberedFailures) {
        m_failures.clear();
    }
    Failure &failure = m_failures[key];
    ++failure.count;
    m_lastError = what + u": " + reason;
    if (storeFailure && failure.count < kStoreFailureTries) {
        group.lines.append({4, what + u" could not be carried out (attempt "
                                   + QString::number(failure.count) + u" of "
                                   + QString::number(kStoreFailureTries) + u"): " + reason});
        return true;
    }
    failure.final = true;
    failure.reason = storeFailure ? u"the store failed " + QString::number(failure.count)
                                        + u" times: " + reason
                                  : reason;
    return false;
}

int DasService::groupFailed(const Group &group, const CaughtError &error, bool mayRetry)
{
    const QString reason = error.errorText();
    if (!m_store->isSqlite()) {
        // The claims outlived the rollback: give them back, for another try at once.
        guarded(
            [&] {
                QList<qint64> writes;
                QList<qint64> records;
                for (const PendingWrite &write : group.writes) {
                    writes.append(write.id);
                }
                for (const CommandRecord &record : group.records) {
                    records.append(record.id);
                }
                Transaction transaction(m_store->sql(), SqlConnection::TransactionKind::Write);
                queue().releasePendingWrites(writes, m_workerId);
                queue().releaseCommands(records, m_workerId);
                transaction.commit();
            },
            [](const CaughtError &) {
                // The store is what failed; the claims run out with their lease.
            });
    }
    if (group.claimed > 1) {
        // Which item failed is unknown: one at a time, the next steps find it.
        m_groupLimit = 1;
        m_lastError = reason;
        writeLogLine(4, u"DAS: a group of " + QString::number(group.claimed)
                            + u" items could not be carried out, they are tried again one at a"
                              u" time: "
                            + reason);
        return -1;
    }
    const bool isWrite = !group.writes.isEmpty();
    const ItemKey key{isWrite ? DasResult::Kind::ValueWrite : DasResult::Kind::Command,
                      isWrite ? group.writes.constFirst().id : group.records.constFirst().id};
    const QString what
        = isWrite ? describe(group.writes.constFirst()) : describe(group.records.constFirst());
    Group attempt;
    if (tryAgain(attempt, key, what, reason, isStoreFailure(error.number))) {
        writeLogLine(attempt.lines.constFirst().first, attempt.lines.constFirst().second);
        return -1;
    }
    // The item is still the oldest: the next claim finds it among the failures and marks it
    // failed without carrying it out again.
    return mayRetry ? step(false) : -1;
}

CommandOutcome DasService::carryOut(const CommandRecord &record)
{
    const QString &text = record.text;
    if (text.size() > kMaxCommandText) {
        return CommandOutcome::failed(u"malformed command record: " + QString::number(text.size())
                                      + u" characters, more than a command may have ("
                                      + QString::number(kMaxCommandText) + u')');
    }
    if (text.trimmed().isEmpty()) {
        return CommandOutcome::failed(
            QStringLiteral("malformed command record: the text is empty"));
    }
    XmlDocument document = NewXmlDocument();
    if (!document.loadXml(text)) {
        return CommandOutcome::failed(
            text.contains(u"<!DOCTYPE", Qt::CaseInsensitive)
                ? QStringLiteral("malformed command record: a DOCTYPE is not accepted")
                : QStringLiteral("malformed command record: the text is not well-formed XML"));
    }
    const XmlNode element = document.documentElement();
    const QString action
        = element.isNull() ? QString() : element.attribute(QStringLiteral("action"));
    if (action.trimmed().isEmpty()) {
        return CommandOutcome::failed(
            QStringLiteral("malformed command record: the element has no action"));
    }
    const QString shownAction = TruncateText(action, 100);
    const CommandHandler *handler = m_handlers.find(action);
    if (handler == nullptr) {
        return CommandOutcome::failed(u"no handler for action '" + shownAction + u'\'');
    }

    QElapsedTimer sinceRenewal;
    sinceRenewal.start();
    CommandContext context{*m_store, record, element, action, [&]() {
                               if (sinceRenewal.elapsed() < m_options.lease.count() / 3) {
                                   return true;
                               }
                               sinceRenewal.restart();
                               return queue().renewCommandLease(record.id, m_workerId,
                                                                m_options.lease);
                           }};
    try {
        CommandOutcome outcome = (*handler)(context);
        if (outcome.message.isEmpty()) {
            outcome.message = outcome.succeeded ? QStringLiteral("done") : QStringLiteral("failed");
        }
        return outcome;
    } catch (...) {
        const CaughtError error = currentError();
        throw HandlerFailure{u"action '" + shownAction + u"' failed: " + error.errorText(),
                             isStoreFailure(error.number)};
    }
}

void DasService::writeLogLine(int severity, const QString &line)
{
    echo(severity, line);
    guarded(
        [&] {
            Transaction transaction(m_store->sql(), SqlConnection::TransactionKind::Write);
            m_store->logMessage(severity, line, m_actor);
            transaction.commit();
        },
        [](const CaughtError &) {
            // The store is what failed; the sink has the line.
        });
}

void DasService::echo(int severity, const QString &line) const
{
    if (m_options.logSink) {
        m_options.logSink(severity, line);
    }
}

QString DasService::describe(const PendingWrite &write) const
{
    return u"DAS: value write " + QString::number(write.id) + u" of PID " + FormatPid(write.pid)
           + u" = " + valueText(write.value) + byWhom(write);
}

QString DasService::describe(const CommandRecord &record) const
{
    return u"DAS: command record " + QString::number(record.id) + u" (" + record.recordType
           + (record.sourceCode.isEmpty() ? QString() : u", " + record.sourceCode) + u')'
           + byWhom(record);
}

} // namespace olvex
