#pragma once

#include "common/olvexexport.h"
#include "common/value.h"

#include <QString>

namespace olvex {

// A PID is a 32-bit number of five digit groups A (0-19), B (0-999), C (0-9), D (0-99),
// E (0-99): A*100000000 + B*100000 + C*10000 + D*100 + E. Valid from 100000 to below
// 2000000000, with group C never 6 or 9.

OLVEX_CORE_EXPORT bool IsValidPid(qint64 value);
// Numbers (fractions converted to whole numbers first) and text that ParsePid reads.
OLVEX_CORE_EXPORT bool IsValidPid(const Value &value);

// "1-234-5-67-89"; empty for an invalid number.
OLVEX_CORE_EXPORT QString FormatPid(qint64 pid);
// FormatPid() written into text, which holds at least kFormattedPidSize units; returns the
// length (0 for an invalid number). For writers of many PIDs: no string each.
inline constexpr qsizetype kFormattedPidSize = 14;
OLVEX_CORE_EXPORT qsizetype formatPidInto(qint64 pid, char16_t *text);
// At least nine digits with leading zeros ("001234567"); empty for an invalid number.
OLVEX_CORE_EXPORT QString FormatPidPlain(qint64 pid);
// Always ten digits ("0001234567"); empty for an invalid number.
OLVEX_CORE_EXPORT QString FormatPidPadded(qint64 pid);

// 1: A, 2: B, 3: E, 4: D, 5: C, -5: C with 7 reported as 8; any other part gives 0.
OLVEX_CORE_EXPORT int GetPidPart(qint64 pid, int part);

// Reads the groups from the right; every non-digit separates. With bracketed set, the text must
// be "[...]" and "[@..." is refused. 0 when the text is no PID.
OLVEX_CORE_EXPORT qint32 ParsePid(QStringView text, bool bracketed = false);
inline qint32 ParsePid(const QString &text, bool bracketed = false)
{
    return ParsePid(QStringView(text), bracketed);
}

// 0 when a group is out of range or the result is no valid PID.
OLVEX_CORE_EXPORT qint32 BuildPid(int a, int b, int c, int d, int e);

} // namespace olvex
