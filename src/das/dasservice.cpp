#include "das/dasservice.h"

#include "common/error.h"
#include "common/pid.h"
#include "das/calconfirmhandlers.h"
#include "das/calstarthandlers.h"
#include "das/workerid.h"
#include "host/siteclock.h"
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
    guarded([&] { result = step(); },
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

int DasService::step()
{
    // Writes and commands take turns, so a long run of either never starves the other. A kind
    // found empty last time gives its turn away, a few times in a row at most: a burst of one
    // kind then costs no empty look at the other per item. A step that finds nothing has always
    // looked at both.
    bool writes = m_writesFirst;
    m_writesFirst = !m_writesFirst;
    int &skipped = m_skippedTurns[writes ? 0 : 1];
    if (m_foundEmpty[writes ? 0 : 1] && skipped < kSkippedTurns) {
        ++skipped;
        writes = !writes;
    } else {
        skipped = 0;
    }
    for (int i = 0; i < 2; ++i, writes = !writes) {
        const int result = writes ? stepWrite(true) : stepCommand(true);
        m_foundEmpty[writes ? 0 : 1] = result == 0;
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int DasService::finishItem(Transaction &transaction, std::optional<Transaction> &whole,
                           int severity, const DasResult &result)
{
    m_store->logMessage(severity, result.line, m_actor);
    transaction.commit();
    if (whole) {
        whole->commit();
    }
    m_failures.remove(ItemKey{result.kind, result.id});
    finished(result);
    return 1;
}

int DasService::takenOver(const QString &what) const
{
    echo(1, what + u" was taken over by another service");
    return 0;
}

int DasService::stepWrite(bool mayRetry)
{
    SqlConnection &sql = m_store->sql();
    std::optional<Transaction> whole;
    if (m_store->isSqlite()) {
        whole.emplace(sql, SqlConnection::TransactionKind::Write);
    }
    const std::optional<PendingWrite> write
        = queue().claimPendingWrite(m_workerId, m_options.lease);
    if (!write) {
        return 0;
    }
    const ItemKey key{DasResult::Kind::ValueWrite, write->id};
    const QString what = describe(*write);

    const auto markFailed = [&](const QString &reason) {
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        if (!queue().failPendingWrite(write->id, m_workerId, reason)) {
            return takenOver(what);
        }
        return finishItem(
            transaction, whole, 4,
            {DasResult::Kind::ValueWrite, write->id, false, reason, what + u" failed: " + reason});
    };
    if (const auto known = m_failures.constFind(key); known != m_failures.cend() && known->final) {
        return markFailed(known->reason);
    }

    QString reason;
    bool storeFailure = true;
    try {
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        // Checks the claim and locks the row before anything changes: a claim lost to another
        // service after the lease ran out leaves the write to that service.
        if (!queue().applyPendingWrite(*write, m_workerId)) {
            return takenOver(what);
        }
        return finishItem(transaction, whole, 1,
                          {DasResult::Kind::ValueWrite, write->id, true, QStringLiteral("applied"),
                           what + u" applied"});
    } catch (...) {
        const CaughtError error = currentError();
        reason = error.errorText();
        storeFailure = isStoreFailure(error.number);
    }
    whole.reset();
    return afterFailure(key, what, reason, storeFailure, markFailed,
                        mayRetry ? std::function<int()>([this] { return stepWrite(false); })
                                 : std::function<int()>());
}

int DasService::stepCommand(bool mayRetry)
{
    SqlConnection &sql = m_store->sql();
    std::optional<Transaction> whole;
    if (m_store->isSqlite()) {
        whole.emplace(sql, SqlConnection::TransactionKind::Write);
    }
    const std::optional<CommandRecord> record = queue().claimCommand(m_workerId, m_options.lease);
    if (!record) {
        return 0;
    }
    const ItemKey key{DasResult::Kind::Command, record->id};
    const QString what = describe(*record);

    const auto markFailed = [&](const QString &reason) {
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        if (!queue().completeCommand(record->id, m_workerId, false, reason)) {
            return takenOver(what);
        }
        return finishItem(
            transaction, whole, 4,
            {DasResult::Kind::Command, record->id, false, reason, what + u" failed: " + reason});
    };
    if (const auto known = m_failures.constFind(key); known != m_failures.cend() && known->final) {
        return markFailed(known->reason);
    }

    QString reason;
    bool storeFailure = true;
    try {
        Transaction transaction(sql, SqlConnection::TransactionKind::Write);
        // On PostgreSQL this also locks the record until the result commits, so nobody takes it
        // over while its handler works, however long that is.
        if (!m_store->isSqlite()
            && !queue().renewCommandLease(record->id, m_workerId, m_options.lease)) {
            return takenOver(what);
        }
        const CommandOutcome outcome = carryOut(*record);
        if (!queue().completeCommand(record->id, m_workerId, outcome.succeeded, outcome.message)) {
            return takenOver(what);
        }
        return finishItem(
            transaction, whole, outcome.succeeded ? 1 : 4,
            {DasResult::Kind::Command, record->id, outcome.succeeded, outcome.message,
             what + (outcome.succeeded ? u" done: " : u" failed: ") + outcome.message});
    } catch (const HandlerFailure &failure) {
        reason = failure.reason;
        storeFailure = failure.storeFailure;
    } catch (...) {
        const CaughtError error = currentError();
        reason = error.errorText();
        storeFailure = isStoreFailure(error.number);
    }
    whole.reset();
    return afterFailure(key, what, reason, storeFailure, markFailed,
                        mayRetry ? std::function<int()>([this] { return stepCommand(false); })
                                 : std::function<int()>());
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

int DasService::afterFailure(const ItemKey &key, const QString &what, const QString &reason,
                             bool storeFailure,
                             const std::function<int(const QString &)> &markFailedNow,
                             const std::function<int()> &retry)
{
    if (m_failures.size() > kMaxRememberedFailures) {
        m_failures.clear();
    }
    Failure &failure = m_failures[key];
    ++failure.count;
    m_lastError = what + u": " + reason;
    if (storeFailure && failure.count < kStoreFailureTries) {
        writeLogLine(4, what + u" could not be carried out (attempt "
                            + QString::number(failure.count) + u" of "
                            + QString::number(kStoreFailureTries) + u"): " + reason);
        return -1;
    }
    failure.final = true;
    failure.reason = storeFailure ? u"the store failed " + QString::number(failure.count)
                                        + u" times: " + reason
                                  : reason;
    if (!m_store->isSqlite()) {
        // The claim survived the rollback: mark the item at once.
        return markFailedNow(failure.reason);
    }
    // SQLite: the claim went with the rollback. The next claim (the item is still the oldest)
    // finds it among the failures and marks it failed.
    return retry ? retry() : -1;
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

void DasService::finished(const DasResult &result)
{
    echo(result.succeeded ? 1 : 4, result.line);
    if (m_observer) {
        m_observer(result);
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
