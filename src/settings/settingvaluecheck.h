#pragma once

#include "common/value.h"

#include <QString>

namespace olvex {

// Error numbers of a value that does not fit its setting, the host system's own.
namespace ValueCheckError {
inline constexpr int Overflow = 6;
inline constexpr int TypeMismatch = 13;
} // namespace ValueCheckError

// Brings a value written to a setting to the setting's data type (attribute -14), the way the
// data interface stores it: number text becomes a number (whole numbers integers; a number a
// double cannot hold exactly stays text), date and time text a date-time, yes/no and on/off
// text ("True", "Yes", "On", "-1", "0", ...) a Boolean, anything for a text setting its text.
// Null and Empty pass unchanged, and so does any value of an unknown data type. A one-element
// array (how the import hands its value over) stands for its element.
// Throws olvex::Error TypeMismatch when the value does not fit the data type, Overflow when a
// number lies beyond the absolute limits no setting may pass; the description says why in the
// operator's words.
Value coerceToDataType(int dataType, const Value &value);

// Why coerceToDataType would refuse the value (its error's description), or empty text.
QString valueRefusal(int dataType, const Value &value);

} // namespace olvex
