#include "das/calscheduler.h"

#include "common/error.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/xml.h"
#include "das/calcheckrunner.h"
#include "das/calrecord.h"
#include "host/plantstate.h"

#include <QSqlQuery>
#include <QVariant>

namespace olvex {

namespace {

const Actor &schedulerActor()
{
    static const Actor actor{QStringLiteral("olvex-das"), QString(), QString()};
    return actor;
}

const QString kSource = QStringLiteral("calibration scheduler");
const QString kStampFormat = QStringLiteral("yyyy/MM/dd hh:mm AP");

// The latest moment at or before now whose time of day is time.
QDateTime lastAt(const QDateTime &now, const QTime &time)
{
    QDateTime at(now.date(), time);
    return at > now ? at.addDays(-1) : at;
}

QString hoursText(double hours)
{
    return QString::number(hours, 'f', 1);
}

} // namespace

CalSchedule CalSchedule::fromRecord(const QString &record)
{
    CalSchedule s;
    const XmlDocument doc = LoadXmlDocument(nullptr, record);
    const XmlNode cal = doc ? doc.selectSingleNode(QStringLiteral("//CalStart")) : XmlNode();
    if (!cal) {
        return s;
    }
    const auto flag = [&](const char *name) {
        return GetNodeBool(cal, QString::fromLatin1(name)).value_or(false);
    };
    const auto text = [&](const char *name) {
        return GetNodeText(cal, QString::fromLatin1(name));
    };
    s.enabled = flag("CalEnabled");
    s.dailyTime = QTime::fromString(text("CalStartTimeUser"), QStringLiteral("HH:mm"));
    if (!s.dailyTime.isValid()) {
        s.dailyTime = GetNodeDate(cal, QStringLiteral("CalStartTimeUser")).time();
    }
    s.skipIfOffline = flag("SkipIfOffline");
    s.skipDailyIfOnlineCalExists = flag("SkipDailyCalIfOnlineCalExists");
    s.delayMinutes = qMax(0, text("CalDelayMinutes").toInt());
    s.afterStartup = flag("CalAfterStartup");
    s.afterNormalOps = flag("CalAfterEnterNormalOps");
    s.normalOpSupported = flag("NormalOpSupported");
    s.skipStartupIfOnlineCalExists = flag("SkipStartupCalIfOnlineCalExists");
    s.every26OpHours = flag("CalEvery26OpHours");
    s.canDetermineOpHours = flag("CanDetermineOpHours");
    s.confirmEnabled = flag("CalConfirmEnabled") && flag("CalConfirmSupported");
    bool ok = false;
    const int timeout = text("CalConfirmTimeout").toInt(&ok);
    s.confirmTimeoutMinutes = ok && timeout >= 0 ? timeout : 30;
    s.defaultConfirm = flag("CalConfirmDefaultConfirm");
    s.opHoursSinceOnlineCal = text("OpHoursSinceOnlineCal").toDouble();
    s.pending = flag("CalConfirmPending");
    s.pendingCalType = text("CalConfirmPendingCalType");
    s.expiration = QDateTime::fromString(text("CalConfirmExpirationTime"), kStampFormat);
    return s;
}

CalScheduler::CalScheduler(std::shared_ptr<ClockLibrary> clock, CalCheckRunner &runner)
    : m_clock(std::move(clock))
    , m_runner(runner)
{}

QDateTime CalScheduler::now() const
{
    return m_clock->Now();
}

QString CalScheduler::stamp(const QDateTime &time)
{
    return time.toString(kStampFormat);
}

QString CalScheduler::pendingStatus(const CalSchedule &s)
{
    return s.pendingCalType + u" waiting for operator confirmation until " + stamp(s.expiration)
           + (s.defaultConfirm ? QStringLiteral(" (then it starts)")
                               : QStringLiteral(" (then it is canceled)"));
}

QString CalScheduler::idleStatus(const QString &record, const CalSchedule &s, bool online,
                                 qint32 pid) const
{
    // The runner's idle line, with what else is due.
    QString status = CalCheckRunner::idleStatus(record);
    if (!s.enabled) {
        return status;
    }
    if (!online && s.skipIfOffline) {
        status += QStringLiteral(" (skipped while the unit is offline)");
    }
    if (const auto due = m_due.constFind(pid); due != m_due.constEnd()) {
        status += u"; " + due->reason + u" at " + stamp(due->at);
    }
    return status;
}

bool CalScheduler::onlineCalOn(SiteStore &store, qint32 pid, const QDate &day)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(QStringLiteral(
        "SELECT count(*) FROM cal_checks WHERE cal_pid = ? AND online = 1 AND started >= ?"
        " AND started < ?"));
    query.addBindValue(pid);
    query.addBindValue(day.toString(Qt::ISODate));
    query.addBindValue(day.addDays(1).toString(Qt::ISODate));
    sql.exec(query);
    QueryScope scope(query);
    return query.next() && query.value(0).toInt() > 0;
}

void CalScheduler::startCheck(SiteStore &store, qint32 pid, const Actor &who, bool online)
{
    if (!m_runner.running(store, pid)) {
        m_runner.start(store, pid, who, false, online);
    }
}

void CalScheduler::clearPending(SiteStore &store, qint32 pid, const QString &status,
                                const Actor &who)
{
    QList<CalRecordEdit> edits{{QStringLiteral("CalConfirmPending"), QStringLiteral("0")},
                               {QStringLiteral("CalConfirmPendingCalType"), QString()},
                               {QStringLiteral("CalConfirmScheduledStartTime"), QString()},
                               {QStringLiteral("CalConfirmExpirationTime"), QString()}};
    if (!status.isEmpty()) {
        edits.append({QStringLiteral("UserFriendlyStatus"), status});
    }
    editCalRecord(store, pid, edits, who, kSource);
}

void CalScheduler::schedule(SiteStore &store, const ParameterRecord &cal, const QString &reason,
                            const CalSchedule &s, bool online, QStringList &lines)
{
    const QString who = FormatPid(cal.pid) + u' ' + cal.name + u": ";
    if (m_runner.running(store, cal.pid)) {
        lines << who + reason + u" not started: a check is already running";
        return;
    }
    const QDateTime now = m_clock->Now();
    if (s.confirmEnabled) {
        CalSchedule held = s;
        held.pendingCalType = reason;
        held.expiration = now.addSecs(qint64(s.confirmTimeoutMinutes) * 60);
        editCalRecord(store, cal.pid,
                      {{QStringLiteral("CalConfirmPending"), QStringLiteral("1")},
                       {QStringLiteral("CalConfirmPendingCalType"), reason},
                       {QStringLiteral("CalConfirmScheduledStartTime"), stamp(now)},
                       {QStringLiteral("CalConfirmExpirationTime"), stamp(held.expiration)},
                       {QStringLiteral("UserFriendlyStatus"), pendingStatus(held)}},
                      schedulerActor(), kSource);
        lines << who + reason + u" waits for confirmation until " + stamp(held.expiration);
        return;
    }
    startCheck(store, cal.pid, schedulerActor(), online);
    lines << who + reason + u" started";
}

QStringList CalScheduler::step(SiteStore &store)
{
    QStringList lines;
    const QDateTime now = m_clock->Now();
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    const QList<PlantUnitState> units = readPlantUnits(store);
    QHash<int, PlantUnitState> unitOf;
    for (const PlantUnitState &unit : units) {
        unitOf.insert(unit.unit, unit);
    }
    // A first look, or a clock that jumped back or by days: note the state, schedule nothing.
    if (!m_last.isValid() || now < m_last || m_last.daysTo(now) > 2) {
        m_last = now;
        m_units.clear();
        for (const PlantUnitState &unit : units) {
            m_units.insert(unit.unit, {unit.online, unit.normalOps});
        }
        transaction.commit();
        return lines;
    }
    const double elapsedHours = double(m_last.msecsTo(now)) / 3600000.0;
    if (elapsedHours > 0) {
        countOperatingHours(store, elapsedHours);
    }

    for (const ParameterRecord &cal : store.parametersOfTypes({ParameterTypes::Calibration})) {
        const QString record = readCalRecord(store, cal.pid);
        if (record.isEmpty()) {
            continue;
        }
        const CalSchedule s = CalSchedule::fromRecord(record);
        const PlantUnitState unit = unitOf.value(cal.plantUnit, PlantUnitState{});
        const auto before = m_units.value(cal.plantUnit, {unit.online, unit.normalOps});
        const QString who = FormatPid(cal.pid) + u' ' + cal.name + u": ";
        QList<CalRecordEdit> edits;

        // Operating hours count while the unit is online.
        if (unit.online && s.canDetermineOpHours && elapsedHours > 0) {
            const double hours = s.opHoursSinceOnlineCal + elapsedHours;
            if (hoursText(hours) != hoursText(s.opHoursSinceOnlineCal)) {
                edits.append({QStringLiteral("OpHoursSinceOnlineCal"), hoursText(hours)});
            }
        }
        // A unit that came online, or entered normal operation, starts the delay.
        if (!unit.online) {
            m_due.remove(cal.pid);
        } else if (s.enabled && s.afterStartup && !before.first) {
            m_due.insert(cal.pid, {now.addSecs(qint64(s.delayMinutes) * 60),
                                   QStringLiteral("Unit startup calibration"), true});
        } else if (s.enabled && s.afterNormalOps && s.normalOpSupported && unit.normalOps
                   && !before.second) {
            m_due.insert(cal.pid, {now.addSecs(qint64(s.delayMinutes) * 60),
                                   QStringLiteral("Normal operation calibration"), true});
        }

        if (s.pending) {
            if (s.expiration.isValid() && now >= s.expiration) {
                if (s.defaultConfirm) {
                    clearPending(store, cal.pid, QString(), schedulerActor());
                    startCheck(store, cal.pid, schedulerActor(), unit.online);
                    lines << who + u"no answer by " + stamp(s.expiration) + u"; " + s.pendingCalType
                                 + u" confirmed by default and started";
                } else {
                    clearPending(store, cal.pid, idleStatus(record, s, unit.online, cal.pid),
                                 schedulerActor());
                    lines << who + u"no answer by " + stamp(s.expiration) + u"; " + s.pendingCalType
                                 + u" canceled by default";
                }
            }
        } else if (s.enabled) {
            const QDateTime daily = s.dailyTime.isValid() ? lastAt(now, s.dailyTime) : QDateTime();
            QDateTime quarterPast(now.date(), QTime(now.time().hour(), 15));
            if (quarterPast > now) {
                quarterPast = quarterPast.addSecs(-3600);
            }
            QString reason;
            if (daily.isValid() && daily > m_last) {
                if (!unit.online && s.skipIfOffline) {
                    lines << who + u"daily calibration skipped: the unit is offline";
                } else if (s.skipDailyIfOnlineCalExists
                           && onlineCalOn(store, cal.pid, now.date())) {
                    lines << who + u"daily calibration skipped: an online check ran today";
                } else {
                    reason = QStringLiteral("Daily calibration");
                }
            }
            if (const auto due = m_due.constFind(cal.pid);
                reason.isEmpty() && due != m_due.constEnd() && due->at <= now) {
                const Due fired = m_due.take(cal.pid);
                if (s.skipStartupIfOnlineCalExists && onlineCalOn(store, cal.pid, now.date())) {
                    lines << who + fired.reason + u" skipped: an online check ran today";
                } else {
                    reason = fired.reason;
                }
            }
            if (reason.isEmpty() && s.every26OpHours && s.canDetermineOpHours && unit.online
                && quarterPast > m_last && s.opHoursSinceOnlineCal + elapsedHours > 25.0) {
                reason = QStringLiteral("26 operating hour calibration");
            }
            if (!reason.isEmpty()) {
                if (!edits.isEmpty()) {
                    editCalRecord(store, cal.pid, edits, schedulerActor(), kSource);
                    edits.clear();
                }
                schedule(store, cal, reason, s, unit.online, lines);
                continue;
            }
        }
        // Say what comes next, unless a check or a prompt has the status line.
        if (!s.pending && !m_runner.running(store, cal.pid)) {
            const QString status = idleStatus(record, s, unit.online, cal.pid);
            if (calStartElement(record, QStringLiteral("UserFriendlyStatus")) != status) {
                edits.append({QStringLiteral("UserFriendlyStatus"), status});
            }
        }
        if (!edits.isEmpty()) {
            editCalRecord(store, cal.pid, edits, schedulerActor(), kSource);
        }
    }
    m_units.clear();
    for (const PlantUnitState &unit : units) {
        m_units.insert(unit.unit, {unit.online, unit.normalOps});
    }
    m_last = now;
    transaction.commit();
    return lines;
}

QString CalScheduler::answer(SiteStore &store, qint32 pid, bool confirm, const Actor &who)
{
    const QString record = readCalRecord(store, pid);
    const CalSchedule s = CalSchedule::fromRecord(record);
    if (!s.pending) {
        return QStringLiteral("no calibration waits for confirmation");
    }
    bool online = true;
    const std::optional<ParameterRecord> cal = store.parameter(pid);
    for (const PlantUnitState &unit : readPlantUnits(store)) {
        if (cal && unit.unit == cal->plantUnit) {
            online = unit.online;
        }
    }
    const QString by = who.userName.isEmpty() ? QStringLiteral("the operator") : who.userName;
    if (confirm) {
        clearPending(store, pid, QString(), who);
        startCheck(store, pid, who, online);
        return s.pendingCalType + u" confirmed by " + by + u" and started";
    }
    clearPending(store, pid,
                 s.pendingCalType + u" canceled by " + by + u" at " + stamp(m_clock->Now()), who);
    return s.pendingCalType + u" canceled by " + by + u"; the check is skipped";
}

} // namespace olvex
