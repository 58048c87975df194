#pragma once

// The data interface's vocabulary: parameter types, attribute numbers, data type codes,
// privileges and statuses, as the data interface numbers them. One list, shared by the
// components, the reference host, the service and the demo site, so that none of them keeps a
// number of its own.

namespace olvex {

// Parameter types.
namespace ParameterTypes {
inline constexpr int Alarm = 2;
inline constexpr int Setting = 4;
inline constexpr int SettingGroup = 5;
inline constexpr int Calibration = 62;
inline constexpr int GasCylinder = 79;
} // namespace ParameterTypes

// Message log severities.
namespace Severity {
inline constexpr int Note = 1;
inline constexpr int Error = 4;
} // namespace Severity

// Privileges asked for by number.
namespace Privileges {
// May change setting values and calibration settings (the security object's CanChangeSetting).
inline constexpr int ChangeSettings = 210;
inline constexpr int ImportSettings = 250;
} // namespace Privileges

// Current-data statuses.
inline constexpr int kStatusExpired = 71;

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

// A calibration parameter.
namespace CalibrationAttr {
// True when the parameter's calibrations may wait for the operator's confirmation.
inline constexpr int SupportsConfirmation = -159;
} // namespace CalibrationAttr

// A gas cylinder parameter.
namespace CylinderAttr {
inline constexpr int CylinderId = -306;
inline constexpr int Expiration = -307;
inline constexpr int VendorId = -308;
inline constexpr int GasCodes = -309;
inline constexpr int Pressure = -310;
inline constexpr int PressureUnit = -311;
inline constexpr int ComponentGases = -312;
// The PIDs of the cylinder's component gas parameters, in the order of ComponentGases.
inline constexpr int GasPids = -46;
} // namespace CylinderAttr

// How Parameter::SetValues writes a value: mode 3 posts it for the data acquisition service
// (the only mode the components use).
namespace WriteMode {
inline constexpr int Queued = 3;
} // namespace WriteMode

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
