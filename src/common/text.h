#pragma once

#include "common/olvexexport.h"

#include <QString>
#include <QStringList>

namespace olvex {

// The text between startMarker and endMarker, searching from startAt (1-based). An empty
// endMarker means startMarker ends the content too. foundAt receives the start marker's position
// (0 when absent); nextAt the position after the end marker, or 0 when the end marker is missing
// (the result is then the rest of the text).
OLVEX_CORE_EXPORT QString TextBetween(const QString &text, const QString &startMarker,
                                      const QString &endMarker, int startAt,
                                      Qt::CaseSensitivity compare, int &foundAt, int &nextAt);

// Ascending shell sort by character codes (upper case before lower case).
OLVEX_CORE_EXPORT void SortTexts(QStringList &texts);

// Drops empty entries in place, keeping order; a list with no non-empty entry becomes one "".
OLVEX_CORE_EXPORT void RemoveEmptyTexts(QStringList &texts);

// Decimal text of |n| without sign or separators (AbsText(-32768) is "32768").
OLVEX_CORE_EXPORT QString AbsText(qint16 n);

// Replaces every "$name$" placeholder of a message text; "$newline$" style names are the
// caller's business (pass them in pairs like any other).
OLVEX_CORE_EXPORT QString
fillPlaceholders(QString text, std::initializer_list<std::pair<QString, QString>> pairs);

} // namespace olvex
