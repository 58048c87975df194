#pragma once

#include "common/olvexexport.h"

#include "common/value.h"

namespace olvex {

// Whether writing wanted to a setting of dataType would leave current as it is: both brought to
// the data type first, so "25" and 25.0 are the same number. A value that does not fit the
// type is never the same.
OLVEX_CORE_EXPORT bool sameSettingValue(int dataType, const Value &current, const Value &wanted);

// Whether a number value lies outside its recommended range (either limit may be unset); values
// that are no numbers never do.
OLVEX_CORE_EXPORT bool outsideRecommendedRange(const Value &value, const Value &low,
                                               const Value &high);

} // namespace olvex
