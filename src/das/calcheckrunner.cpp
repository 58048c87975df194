#include "das/calcheckrunner.h"

#include "common/error.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "das/calrecord.h"
#include "host/storedvalue.h"
#include "host/storeerrors.h"

#include <QSqlQuery>

namespace olvex {

namespace {

// What the service writes where the record shows a point in time to the operator.
QString stamp(const QDateTime &time)
{
    return time.toString(QStringLiteral("yyyy/MM/dd hh:mm AP"));
}

const QString &runnerSource()
{
    static const QString source = QStringLiteral("calibration check");
    return source;
}

const Actor &serviceActor()
{
    static const Actor actor{QStringLiteral("olvex-das"), QString(), QString()};
    return actor;
}

// The cylinder last used with the parameter: the analyser's gas connection does not change
// between checks.
qint32 lastCylinder(SiteStore &store, qint32 calPid)
{
    QSqlQuery &query = store.sql().prepared(
        QStringLiteral("SELECT cylinder_pid FROM cal_checks WHERE cal_pid = ?"
                       " AND cylinder_pid IS NOT NULL ORDER BY started DESC, id DESC LIMIT 1"));
    QueryScope scope(query);
    query.addBindValue(calPid);
    store.sql().exec(query);
    return query.next() ? query.value(0).toInt() : 0;
}

} // namespace

CalCheckRunner::CalCheckRunner(std::shared_ptr<ClockLibrary> clock)
    : m_clock(std::move(clock))
{
    Q_ASSERT(m_clock);
}

QDateTime CalCheckRunner::now() const
{
    return m_clock->Now();
}

std::chrono::seconds CalCheckRunner::duration(SiteStore &store)
{
    const QVariant seconds
        = store.sql().scalar(QStringLiteral("SELECT cal_check_seconds FROM site"));
    return std::chrono::seconds(std::max<qint64>(1, seconds.toLongLong()));
}

QList<CalCheckState> CalCheckRunner::open(SiteStore &store, qint32 calPid)
{
    const std::chrono::seconds length = duration(store);
    QSqlQuery &query = store.sql().prepared(
        calPid == 0 ? QStringLiteral("SELECT id, cal_pid, cylinder_pid, started, started_by,"
                                     " client_address, manual, online FROM cal_checks"
                                     " WHERE ended IS NULL ORDER BY id")
                    : QStringLiteral("SELECT id, cal_pid, cylinder_pid, started, started_by,"
                                     " client_address, manual, online FROM cal_checks"
                                     " WHERE ended IS NULL AND cal_pid = ? ORDER BY id"));
    QueryScope scope(query);
    if (calPid != 0) {
        query.addBindValue(calPid);
    }
    store.sql().exec(query);
    QList<CalCheckState> checks;
    while (query.next()) {
        CalCheckState check;
        check.id = query.value(0).toLongLong();
        check.calPid = query.value(1).toInt();
        check.cylinderPid = query.value(2).toInt();
        check.started = dateTimeFromText(query.value(3).toString());
        check.due = check.started.addSecs(length.count());
        check.startedBy = query.value(4).toString();
        check.clientAddress = query.value(5).toString();
        check.manual = query.value(6).toInt() != 0;
        check.online = query.value(7).toInt() != 0;
        checks.append(check);
    }
    return checks;
}

std::optional<CalCheckState> CalCheckRunner::running(SiteStore &store, qint32 calPid)
{
    const QList<CalCheckState> checks = open(store, calPid);
    if (checks.isEmpty()) {
        return std::nullopt;
    }
    return checks.first();
}

QList<CalCheckState> CalCheckRunner::runningChecks(SiteStore &store)
{
    return open(store, 0);
}

CalCheckState CalCheckRunner::start(SiteStore &store, qint32 calPid, const Actor &who, bool manual,
                                    bool online)
{
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    const QString record = readCalRecord(store, calPid);
    if (record.isEmpty()) {
        throw Error(StoreError::InvalidRequest,
                    u"PID " + FormatPid(calPid) + u" has no calibration start record");
    }
    if (const std::optional<CalCheckState> busy = running(store, calPid)) {
        throw Error(StoreError::InvalidRequest, u"a calibration check of PID " + FormatPid(calPid)
                                                    + u" is running already (started "
                                                    + stamp(busy->started) + u')');
    }

    CalCheckState check;
    check.calPid = calPid;
    check.cylinderPid = lastCylinder(store, calPid);
    check.started = now();
    check.due = check.started.addSecs(duration(store).count());
    check.startedBy = who.userName;
    check.clientAddress = who.clientAddress;
    check.manual = manual;
    check.online = online;

    // The cylinder's data as it is now goes with the record, as for every check.
    QString cylinderId;
    QString vendorId;
    QString gasCodes;
    QVariant expiration; // NULL unless the cylinder has a date
    if (check.cylinderPid != 0) {
        if (const std::optional<ParameterRecord> cylinder = store.parameter(check.cylinderPid)) {
            const auto text = [&](int number) {
                const Value *value = cylinder->attribute(number);
                return value ? value->toText() : QString();
            };
            cylinderId = text(CylinderAttr::CylinderId);
            vendorId = text(CylinderAttr::VendorId);
            gasCodes = text(CylinderAttr::GasCodes);
            if (const Value *date = cylinder->attribute(CylinderAttr::Expiration)) {
                if (const std::optional<QDateTime> when = date->toDateTime()) {
                    expiration = dateTimeText(*when);
                }
            }
        }
    }

    const QString insert = QStringLiteral(
        "INSERT INTO cal_checks (cal_pid, cylinder_pid, started, result, cylinder_id,"
        " expiration_date, vendor_id, gas_codes, started_by, client_address, manual, online)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    QSqlQuery &query = store.sql().prepared(store.isSqlite() ? insert : insert + u" RETURNING id");
    query.addBindValue(calPid);
    query.addBindValue(check.cylinderPid == 0 ? QVariant(QMetaType(QMetaType::Int))
                                              : QVariant(check.cylinderPid));
    query.addBindValue(dateTimeText(check.started));
    query.addBindValue(CalCheckResult::Running);
    query.addBindValue(notNull(cylinderId));
    query.addBindValue(expiration.isValid() ? expiration : QVariant(QMetaType(QMetaType::QString)));
    query.addBindValue(notNull(vendorId));
    query.addBindValue(notNull(gasCodes));
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientAddress));
    query.addBindValue(manual ? 1 : 0);
    query.addBindValue(online ? 1 : 0);
    store.sql().exec(query);
    if (store.isSqlite()) {
        check.id = query.lastInsertId().toLongLong();
    } else if (query.next()) {
        check.id = query.value(0).toLongLong();
    }
    query.finish();

    editCalRecord(store, calPid, {{QStringLiteral("UserFriendlyStatus"), runningStatus(check)}},
                  who, runnerSource());
    transaction.commit();
    return check;
}

bool CalCheckRunner::abort(SiteStore &store, qint32 calPid, const Actor &who)
{
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    const QList<CalCheckState> checks = open(store, calPid);
    for (const CalCheckState &check : checks) {
        finish(store, check, CalCheckResult::Aborted, who);
    }
    transaction.commit();
    return !checks.isEmpty();
}

int CalCheckRunner::advance(SiteStore &store)
{
    const QDateTime time = now();
    QList<CalCheckState> due;
    // A look without a write transaction first: most of the time nothing is due.
    for (const CalCheckState &check : open(store, 0)) {
        if (check.due <= time) {
            due.append(check);
        }
    }
    if (due.isEmpty()) {
        return 0;
    }
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    int finished = 0;
    for (const CalCheckState &check : std::as_const(due)) {
        QSqlQuery &query = store.sql().prepared(
            QStringLiteral("SELECT count(*) FROM cal_checks WHERE id = ? AND ended IS NULL"));
        query.addBindValue(check.id);
        store.sql().exec(query);
        const bool stillOpen = query.next() && query.value(0).toInt() > 0;
        query.finish();
        // Another service of the site may have ended it meanwhile.
        if (stillOpen) {
            finish(store, check, CalCheckResult::Passed, serviceActor());
            ++finished;
        }
    }
    transaction.commit();
    return finished;
}

void CalCheckRunner::finish(SiteStore &store, const CalCheckState &check, const QString &result,
                            const Actor &who)
{
    const QDateTime ended = now();
    {
        QSqlQuery &query = store.sql().prepared(
            QStringLiteral("UPDATE cal_checks SET ended = ?, result = ? WHERE id = ?"));
        query.addBindValue(dateTimeText(ended));
        query.addBindValue(result);
        query.addBindValue(check.id);
        store.sql().exec(query);
    }
    const QString record = readCalRecord(store, check.calPid);
    if (record.isEmpty()) {
        return;
    }
    QList<CalRecordEdit> edits{{QStringLiteral("UserFriendlyStatus"), idleStatus(record)}};
    if (result == CalCheckResult::Passed) {
        edits.append({QStringLiteral("ClockHoursSinceCal"), QStringLiteral("0")});
        if (check.online) {
            edits.append({QStringLiteral("OpHoursSinceOnlineCal"), QStringLiteral("0")});
            edits.append({QStringLiteral("ClockHoursSinceOnlineCal"), QStringLiteral("0")});
            edits.append({QStringLiteral("OpHoursStatusString"),
                          u"0 unit operating hours have passed since the most recent online cal "
                          u"check at "
                              + stamp(ended) + u'.'});
        }
    }
    editCalRecord(store, check.calPid, edits, who, runnerSource());
}

QString CalCheckRunner::runningStatus(const CalCheckState &check)
{
    QString who = check.startedBy.isEmpty() ? QStringLiteral("the service") : check.startedBy;
    if (!check.clientAddress.isEmpty()) {
        who += u" (" + check.clientAddress + u')';
    }
    return (check.manual ? QStringLiteral("Manual cal check") : QStringLiteral("Cal check"))
           + u" in progress; started by " + who + u" at " + stamp(check.started);
}

QString CalCheckRunner::idleStatus(const QString &record)
{
    const std::optional<QString> enabled = calStartElement(record, QStringLiteral("CalEnabled"));
    if (!Value(enabled.value_or(QString())).isTrue()) {
        return QStringLiteral("Idle; automatic cal checks are disabled");
    }
    const QString time
        = calStartElement(record, QStringLiteral("CalStartTimeUser")).value_or(QString());
    return u"Idle; next daily cal check at " + time.trimmed();
}

} // namespace olvex
