#pragma once

#include "host/sitestore.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace olvex {

class ClockLibrary;

// A calibration check that has started and not ended.
struct CalCheckState
{
    qint64 id = 0;
    qint32 calPid = 0;
    qint32 cylinderPid = 0; // 0: no cylinder known for the parameter
    QDateTime started;
    QDateTime due; // started + the site's check duration
    QString startedBy;
    QString clientAddress;
    bool manual = false;
    bool online = true;
};

// How a finished check ended, as its calibration-check record says.
namespace CalCheckResult {
inline const QString Running = QStringLiteral("in progress");
inline const QString Passed = QStringLiteral("passed");
inline const QString Aborted = QStringLiteral("aborted");
} // namespace CalCheckResult

// Plays the analysers' calibration sequence for the service: a check starts, runs for the
// site's check duration (site.cal_check_seconds) and ends with a calibration-check record.
//
// The runner keeps nothing of its own: a running check is a row of cal_checks without an end,
// so it survives a restart of the service and is seen by every service of the site. Every call
// works through the store it is given, inside the caller's transaction where there is one (a
// command handler's), else in its own. Time comes only from the clock given at construction, so
// tests move it by hand and a demonstration may run it faster.
//
// While a check runs, the parameter's record says so in UserFriendlyStatus (who started it and
// when); when it ends the status goes back to the idle text, and an online check that passed
// resets the operating-hour count (OpHoursSinceOnlineCal, OpHoursStatusString).
//
//     CalCheckRunner runner(clock);
//     runner.start(store, pid, {user, client, address}, /*manual=*/true);
//     ...
//     runner.advance(store);          // ends the checks whose time is up
class CalCheckRunner
{
public:
    explicit CalCheckRunner(std::shared_ptr<ClockLibrary> clock);

    QDateTime now() const;

    // Starts a check of calPid. Throws olvex::Error when calPid is no calibration parameter,
    // has no record, or a check of it is running already (the running one goes on).
    CalCheckState start(SiteStore &store, qint32 calPid, const Actor &who, bool manual,
                        bool online = true);
    // Ends calPid's running check with the result "aborted"; false when none was running.
    bool abort(SiteStore &store, qint32 calPid, const Actor &who);
    // Ends every running check whose time is up, with the result "passed"; returns how many.
    int advance(SiteStore &store);

    std::optional<CalCheckState> running(SiteStore &store, qint32 calPid);
    QList<CalCheckState> runningChecks(SiteStore &store);
    // How long a check takes on the site.
    std::chrono::seconds duration(SiteStore &store);

    // The status texts the runner writes into UserFriendlyStatus.
    static QString runningStatus(const CalCheckState &check);
    // From the record's CalEnabled and CalStartTimeUser: "Idle; next daily cal check at 06:50".
    static QString idleStatus(const QString &record);

private:
    void finish(SiteStore &store, const CalCheckState &check, const QString &result,
                const Actor &who);
    QList<CalCheckState> open(SiteStore &store, qint32 calPid);

    std::shared_ptr<ClockLibrary> m_clock;
};

} // namespace olvex
