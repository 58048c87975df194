#pragma once

// Attribute numbers and data type codes of setting and setting-group definitions, as the data
// interface numbers them. One list so that the editor, the command line and the import/export
// code read the same attributes.

namespace olvex {

namespace SettingAttr {
// A setting parameter.
inline constexpr int Readable = -9;
inline constexpr int Changeable = -10;
inline constexpr int DataType = -14;
// Display format of a number setting ("0.00", "#,##0.0", "Fixed"); empty when it has none.
inline constexpr int DisplayFormat = -15;
inline constexpr int DefaultValue = -19;
inline constexpr int RecommendedLow = -28;
inline constexpr int RecommendedHigh = -29;
inline constexpr int Level = -30;
inline constexpr int ChangePending = -91;
// Used instead of Readable/Changeable while the data interface reports its alternative state.
inline constexpr int AltReadable = -92;
inline constexpr int AltChangeable = -93;

// The four alarm setpoints of an alarm parameter, highest rank first.
inline constexpr int SetpointHH = -100;
inline constexpr int SetpointH = -102;
inline constexpr int SetpointL = -103;
inline constexpr int SetpointLL = -104;
} // namespace SettingAttr

namespace GroupAttr {
inline constexpr int Order = -44;
inline constexpr int Members = -46;
inline constexpr int HasParent = -47;
inline constexpr int AlarmGroup = -106;
inline constexpr int Instructions = -152;
inline constexpr int ParentPid = -161;
} // namespace GroupAttr

// Data type codes of a setting (its DataType attribute).
namespace SettingType {
inline constexpr int Number = 1;
inline constexpr int Date = 2;
inline constexpr int Time = 3;
inline constexpr int DateTime = 4;
inline constexpr int YesNo = 5;
inline constexpr int OnOff = 6;
inline constexpr int Text = 7;
} // namespace SettingType

} // namespace olvex
