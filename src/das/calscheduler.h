#pragma once

#include "host/sitestore.h"

#include <QDateTime>
#include <QHash>
#include <QString>

#include <memory>

namespace olvex {

class CalCheckRunner;
class ClockLibrary;

// What a calibration parameter's record asks of the scheduler (the fields it reads).
struct CalSchedule
{
    bool enabled = false;
    QTime dailyTime;
    bool skipIfOffline = false;
    bool skipDailyIfOnlineCalExists = false;
    int delayMinutes = 0;
    bool afterStartup = false;
    bool afterNormalOps = false;
    bool normalOpSupported = false;
    bool skipStartupIfOnlineCalExists = false;
    bool every26OpHours = false;
    bool canDetermineOpHours = false;
    bool confirmEnabled = false;
    int confirmTimeoutMinutes = 30;
    bool defaultConfirm = true;
    double opHoursSinceOnlineCal = 0;
    bool pending = false;
    QString pendingCalType;
    QDateTime expiration;

    static CalSchedule fromRecord(const QString &record);
};

// The service's calibration scheduler: the daily check, the check a delay after a unit starts
// or enters normal operation, the 26-operating-hour rule and the confirmation hold with its
// deadline. Checks start through the calibration check runner.
//
// Every step looks at what happened since the previous one (a daily time or an hour's quarter
// past that was crossed, a unit that came online), so a fast clock (--speed) loses nothing and
// a restarted service does not repeat a check: its first step only takes note of the time and
// of the units. A startup check that was waiting its delay when the service stopped is not
// made up for. The hold itself lives in the record (CalConfirmPending and its deadline), so it
// survives a restart and every workstation sees it.
class CalScheduler
{
public:
    CalScheduler(std::shared_ptr<ClockLibrary> clock, CalCheckRunner &runner);

    QDateTime now() const;

    // One look at the plant and the records; returns the lines for the message log.
    QStringList step(SiteStore &store);

    // The operator's answer to a prompt (CalPendingPromptAction). Returns the result text;
    // throws olvex::Error when pid is no calibration parameter.
    QString answer(SiteStore &store, qint32 pid, bool confirm, const Actor &who);

    // The texts the scheduler writes.
    static QString stamp(const QDateTime &time);
    static QString pendingStatus(const CalSchedule &schedule);

private:
    struct Due
    {
        QDateTime at;
        QString reason;
        bool skipIfOnlineCalToday = false;
    };
    void schedule(SiteStore &store, const ParameterRecord &cal, const QString &reason,
                  const CalSchedule &schedule, bool online, QStringList &lines);
    void startCheck(SiteStore &store, qint32 pid, const Actor &who, bool online);
    void clearPending(SiteStore &store, qint32 pid, const QString &status, const Actor &who);
    bool onlineCalOn(SiteStore &store, qint32 pid, const QDate &day);
    QString idleStatus(const QString &record, const CalSchedule &schedule, bool online,
                       qint32 pid) const;

    std::shared_ptr<ClockLibrary> m_clock;
    CalCheckRunner &m_runner;
    QDateTime m_last;
    QHash<int, std::pair<bool, bool>> m_units; // unit -> (online, normal operation)
    QHash<qint32, Due> m_due;                  // startup / normal-operation checks waiting
};

} // namespace olvex
