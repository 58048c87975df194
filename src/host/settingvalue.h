#pragma once

#include "common/value.h"

namespace olvex {

// Brings a value written to a setting to the setting's data type (attribute -14), the way the
// data interface stores it: number text becomes a number (whole numbers integers; a number a
// double cannot hold exactly stays text), date and time text a date-time, yes/no and on/off
// text ("True", "Yes", "On", "-1", "0", ...) a Boolean, anything for a text setting its text.
// Null and Empty pass unchanged, and so does any value of an unknown data type. A one-element
// array (how the import hands its value over) stands for its element.
// Throws olvex::Error 13 "Type mismatch" when the value does not fit.
Value coerceToDataType(int dataType, const Value &value);

} // namespace olvex
