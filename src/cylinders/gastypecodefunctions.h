#pragma once

#include "common/olvexexport.h"

// The EPA gas type codes of a calibration gas cylinder: the vocabulary, the help text shown
// beside the gas-code field, the check of a typed list and the conversion of the older
// single-token combination codes. Pure functions; no state, no data interface.

#include <QString>
#include <QStringList>

namespace olvex {

// The help text: 26 lines joined with CR LF.
OLVEX_CORE_EXPORT QString GetGasTypeCodeHelpText();

// Empty when the comma-separated list is acceptable, else the first complaint. Codes are
// trimmed and upper-cased before they are checked, and named so in the complaint; an empty list
// needs a balance gas like any other.
OLVEX_CORE_EXPORT QString ValidateGasTypeCodeList(const QString &list);

// Every complaint of the rules, in the rules' order (each unknown or repeated code once): what
// an editor shows while the list is typed. The first is ValidateGasTypeCodeList's answer.
OLVEX_CORE_EXPORT QStringList GasTypeCodeListProblems(const QString &list);

// The list that replaces an old combination token ("SNX" -> "NO,NO2,SO2,BALN"); any other token
// comes back unchanged. The token is matched exactly as given.
OLVEX_CORE_EXPORT QString ConvertLegacyGasTypeCode(const QString &token);

} // namespace olvex
