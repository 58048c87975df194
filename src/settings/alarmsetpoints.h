#pragma once

#include "common/olvexexport.h"
#include "common/value.h"

#include <QString>

#include <array>
#include <optional>

namespace olvex {

// The four setpoints of an alarm parameter in rank order, highest first.
struct OLVEX_CORE_EXPORT AlarmSetpoint
{
    int attribute;      // definition attribute holding the setpoint
    const char *column; // alarm list column header
    const char *name;   // name in messages
    const char *label;  // dialog label
};
inline constexpr std::array<AlarmSetpoint, 4> kAlarmSetpoints{{
    {-100, "High High", "high-high", "High high:"},
    {-102, "High", "high", "High:"},
    {-103, "Low", "low", "Low:"},
    {-104, "Low Low", "low-low", "Low low:"},
}};

using AlarmValues = std::array<Value, 4>;

// The message for the first pair (higher rank, lower rank) whose lower-ranked value exceeds the
// higher-ranked one, pairs taken in rank order; nullopt when the order holds. Values that are
// not numeric (an unused level) take no part; equal values pass.
OLVEX_CORE_EXPORT std::optional<QString> alarmOrderViolation(const AlarmValues &values);

// The value a typed setpoint stands for: Empty for blank text, a number for numeric text
// (whole numbers as integers), the text itself otherwise.
OLVEX_CORE_EXPORT Value setpointFromText(const QString &text);

} // namespace olvex
