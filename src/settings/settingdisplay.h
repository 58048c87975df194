#pragma once

#include "common/decimal.h"
#include "common/host.h"
#include "common/olvexexport.h"
#include "common/value.h"

#include <QString>

#include <optional>

namespace olvex {

// What FormatSettingValue made of a value.
struct OLVEX_CORE_EXPORT FormattedValue
{
    QString text;
    // The value does not fit a number setting (it was logged and is shown empty).
    bool badValue = false;
    // The coded line of an error caught while formatting ("SED-007/UI-025: ..."); empty when
    // none. The editor raises it through its Problem event, the command line prints it.
    QString problem;
};

// The text of one setting value for its data type. Values that do not fit the type are logged
// to messageLog (which may be null) with their DM- line and shown empty. With applyFormat and a
// non-empty displayFormat a number is first rounded as the display format would show it.
OLVEX_CORE_EXPORT FormattedValue FormatSettingValue(const QString &pidText, int dataType,
                                                    const Value &value,
                                                    const QString &displayFormat,
                                                    MessageLog *messageLog, bool applyFormat);

// Numbers: their plain text, or "Yes"/"No" with asYesNo. Anything else: empty text.
OLVEX_CORE_EXPORT QString YesNoText(const Value &value, bool asYesNo);

// The Value Range cell: "low ... high", "low ... ", " ... high", or empty without limits.
OLVEX_CORE_EXPORT QString ValueRangeText(const Value &lower, const Value &upper);

// A number rounded the way a display format ("0.00", "#,##0.0", "0.0E+00", "Fixed") shows it.
// A format without digit placeholders leaves the number as it is.
OLVEX_CORE_EXPORT Decimal roundToDisplayFormat(const Decimal &value, const QString &displayFormat);

// Small icons of the settings and alarm lists.
namespace SettingIcon {
inline constexpr int Unchanged = 0; // leave the row's icon as it was
inline constexpr int Undefined = 1;
inline constexpr int ReadOnly = 2;
inline constexpr int ReadOnlyHighLevel = 3;
inline constexpr int Changeable = 4;
inline constexpr int ChangeableHighLevel = 5;
inline constexpr int WriteOnly = 6;
inline constexpr int WriteOnlyHighLevel = 7;
// The settings whose level is above this get the high-level variant of their icon.
inline constexpr int kHighLevel = 50;

inline bool isChangeable(int icon)
{
    return icon >= Changeable && icon <= WriteOnlyHighLevel;
}
inline bool isReadWrite(int icon)
{
    return icon == Changeable || icon == ChangeableHighLevel;
}
inline bool isWriteOnly(int icon)
{
    return icon == WriteOnly || icon == WriteOnlyHighLevel;
}
} // namespace SettingIcon

// The Value cell and icon of one settings row, from the definition's flags and current value.
struct OLVEX_CORE_EXPORT SettingRowState
{
    int icon = SettingIcon::Unchanged;
    QString valueText;
    // The coded line of a formatting error, to raise; empty when formatting went well.
    QString formatProblem;
    // The current value shown in valueText; Empty when the row shows none (pending, write-only).
    Value shownValue;
};

// Reads each attribute it needs once. Errors of the data interface propagate (the editor
// reports them with the row fill's code); formatting errors come back in formatProblem.
OLVEX_CORE_EXPORT SettingRowState settingRowState(const Parameter &definition,
                                                  bool alternativeState, MessageLog *messageLog);

// FormatSettingValue of one value of a definition, with the definition's data type and display
// format (used for the Default Value cell and by the command line).
OLVEX_CORE_EXPORT FormattedValue formatDefinitionValue(const Parameter &definition,
                                                       const Value &value, MessageLog *messageLog);

} // namespace olvex
