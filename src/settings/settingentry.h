#pragma once

#include "common/decimal.h"
#include "common/olvexexport.h"
#include "common/value.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace olvex {

// How a new value of a setting is entered, by its data type.
enum class EntryKind {
    Number,   // number dialog, numeric checks
    FreeText, // number dialog, no checks
    DateTime, // general input dialog, must read as a date or a time
    YesNo,    // yes/no dialog, "No" / "Yes"
    OnOff,    // yes/no dialog, "Off" / "On"
    None,     // a data type that cannot be entered
};
OLVEX_CORE_EXPORT EntryKind entryKindFor(int dataType);
// The false and true captions of the yes/no dialog for a YesNo or OnOff entry.
OLVEX_CORE_EXPORT std::pair<QString, QString> yesNoCaptions(EntryKind kind);

// The decimal separator of the current locale, as 3.45 shows it: "." or ",".
OLVEX_CORE_EXPORT QString localeDecimalSeparator();
// The absolute limits of a number setting: twelve nines, the separator, seven nines; and its
// negation. Held in decimal: a double cannot tell the largest from one above it.
OLVEX_CORE_EXPORT Decimal absoluteMaximum();
OLVEX_CORE_EXPORT Decimal absoluteMinimum();
OLVEX_CORE_EXPORT QString absoluteMaximumText();
OLVEX_CORE_EXPORT QString absoluteMinimumText();

// The verdict on a typed entry of a number setting, before anything is written.
struct OLVEX_CORE_EXPORT NumberEntryCheck
{
    enum class Refusal { None, NotNumeric, AboveMaximum, BelowMinimum };
    Refusal refusal = Refusal::None;
    // The message to show (exclamation, OK) for AboveMaximum and BelowMinimum; the entry that
    // is not numeric is refused with a beep and no message.
    QString message;
    // Yes/No questions for an entry outside the recommended range, in the order to ask them;
    // a No to any of them ends the change.
    QStringList questions;

    bool refused() const { return refusal != Refusal::None; }
};

// The checks of a number entry, in order: numeric, absolute maximum, absolute minimum, then the
// recommended lower and upper limits (each skipped when Null or not numeric). Strict: a value
// equal to a limit passes.
OLVEX_CORE_EXPORT NumberEntryCheck checkNumberEntry(const QString &entry,
                                                    const Value &recommendedLow,
                                                    const Value &recommendedHigh);

// "$NewLine$" as the message boxes want it.
OLVEX_CORE_EXPORT QString withLineBreaks(QString text);

// True when a DateTime entry reads as a date or a time.
OLVEX_CORE_EXPORT bool isDateEntry(const QString &entry);

// The value to write for an accepted typed entry of a Number, FreeText or DateTime setting:
// whole numbers as integers, other numbers as doubles where a double holds them exactly and as
// the entered text where it cannot; dates as date-time values; free text as it stands.
// nullopt when the entry does not fit its kind.
OLVEX_CORE_EXPORT std::optional<Value> valueToWrite(EntryKind kind, const QString &entry);

// How a typed entry of a setting of the given data type reads, shown under the field while the
// operator types so that nothing is thrown away in silence: "reads as 25", "reads as 5 March
// 2024 14:30:00", or why it does not ("not a number", "not a date", "not a time", "greater than
// the maximum value (...)"). Dates name the month, so that 3/4 and 4/3 cannot be confused. Empty
// for an empty entry and for kinds without a reading (text, yes/no). Data type 0 reads a date
// or a time, showing the parts the entry holds.
struct EntryReading
{
    bool fits = true;
    QString text;
};
OLVEX_CORE_EXPORT EntryReading readEntry(int dataType, const QString &entry);

// The answer of the access check shown to the operator.
OLVEX_CORE_EXPORT QString accessDeniedText(const QString &userName);
// "SED-012: Account 'x' does not have privileges." and its SED-013/014 siblings.
OLVEX_CORE_EXPORT QString accessDeniedProblem(const QString &code, const QString &userName);

} // namespace olvex
