#pragma once

#include "common/olvexexport.h"

#include <QList>
#include <QString>
#include <QTime>

#include <memory>
#include <optional>

namespace olvex {

class Parameter;
struct CalStartRecord;

// What the calibration start control decides, as plain functions so that every rule is the same
// on screen, on the command line and in the tests.

// Hours and minutes of a text that reads as a time ("06:50", "6:50 AM", a date and time);
// nullopt when it does not.
OLVEX_CORE_EXPORT std::optional<QTime> readTimeOfDay(const QString &text);

// The daily time as the field should show it after the operator leaves it: nullopt when the
// text is no time (the field keeps the focus). A time from 00:00 through 00:04 becomes 00:05:
// the daily check is never scheduled in the first minutes after midnight.
OLVEX_CORE_EXPORT std::optional<QTime> acceptCalStartTime(const QString &text);
// The time in the locale's short time format ("6:50 AM", "06:50").
OLVEX_CORE_EXPORT QString calStartTimeText(const QTime &time);

// A minutes text: numeric or not.
OLVEX_CORE_EXPORT bool isMinutesText(const QString &text);
// The confirmation timeout after leaving the field: nullopt when not numeric, "1" below 1,
// "480" above 480, otherwise the text as typed.
OLVEX_CORE_EXPORT std::optional<QString> clampConfirmTimeout(const QString &text);

// What the operator has ticked, for the enabling rules.
struct CalStartTicks
{
    bool disableAutoCal = false;
    bool calAfterStartup = false;
    bool calAfterEnterNormalOps = false;
    bool calConfirmEnabled = false;
};

// Which items are enabled, from the record's capabilities and the ticks.
struct CalStartEnabling
{
    bool disableBox = false;   // only with a usable CalEnabled channel
    bool dailyItems = false;   // time label, field, button, both skip boxes
    bool startupFrame = false; // the frame, the startup trigger and the skip-startup box
    bool startupDelay = false; // field and up-down of the startup trigger
    bool normalOpsTrigger = false;
    bool normalOpsDelay = false;
    bool every26Box = false;
    bool confirmFrame = false;
    bool confirmWaitBox = false;
    bool confirmDetails = false; // timeout label, field, up-down and both timeout options
    bool startButton = false;
    bool abortButton = false;
};

OLVEX_CORE_EXPORT CalStartEnabling calStartEnabling(const CalStartRecord &record,
                                                    const CalStartTicks &ticks);

// Whether the parameters belong to more than one plant unit (the unit each PID encodes).
OLVEX_CORE_EXPORT bool belongToSeveralUnits(const QList<std::shared_ptr<Parameter>> &parameters);
// The caption of a parameter's row: with several units "(" + unit name + ") " + name unless the
// name holds the unit's name already; "[ERROR] " in front when the data interface flags the
// parameter in error.
OLVEX_CORE_EXPORT QString calParameterCaption(const Parameter &parameter, bool severalUnits);

} // namespace olvex
