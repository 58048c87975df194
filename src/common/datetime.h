#pragma once

#include "common/olvexexport.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace olvex {

// Date-time values are local, zone-less calendar values. The host system counts them as a day
// number from the zero date 1899-12-30 with the time of day as the fraction.
OLVEX_CORE_EXPORT QDateTime zeroDate();
OLVEX_CORE_EXPORT bool isZeroDate(const QDateTime &value); // the zero date at midnight: "no date"
OLVEX_CORE_EXPORT double toDayNumber(const QDateTime &value);
OLVEX_CORE_EXPORT QDateTime fromDayNumber(double dayNumber);

// The locale's named formats, in Qt pattern syntax, read from QLocale() each call so that a test
// can pin a locale. Qt's long time carries a time zone; these never do.
enum class NamedFormat { LongTime, MediumTime, ShortTime, ShortDate };
OLVEX_CORE_EXPORT QString namedFormatPattern(NamedFormat format);
OLVEX_CORE_EXPORT QString formatNamed(const QDateTime &value, NamedFormat format);
// True when the locale writes times with an AM/PM designator.
OLVEX_CORE_EXPORT bool localeUses12Hour();

// Reads what an operator types or a file holds as a date, a time, or both: ISO forms with "-" or
// "/", the locale's short and long forms, 12-hour times with AM/PM. A time alone lands on the
// zero date; a date alone at midnight. Impossible dates (2024-13-45) give nullopt.
OLVEX_CORE_EXPORT std::optional<QDateTime> parseDateText(const QString &text);

// The present local date and time.
OLVEX_CORE_EXPORT QDateTime Now();

// The date-and-time text used wherever a time of day is shown; style numbers as the host system
// defines them (-3, -2, -1, 1, 2, 10, 11, 12, 13, other = automatic).
OLVEX_CORE_EXPORT QString DateTimeText(const QDateTime &value, int style);

// Calendar addition ("yyyy", "q", "m", "y", "d", "w", "ww", "h", "n", "s"); for "s", "n" and "h"
// the result's time of day is rebuilt from whole seconds so repeated additions never drift.
// An unknown interval throws olvex::Error.
OLVEX_CORE_EXPORT QDateTime DateAddWhole(const QString &interval, int number,
                                         const QDateTime &value);

} // namespace olvex
