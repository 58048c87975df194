#pragma once

// Rules about a setting definition that the export and the import share.

#include "common/value.h"

namespace olvex::settingrules {

// Attributes of a setting definition.
inline constexpr int kAttrChangeable = -10;
inline constexpr int kAttrDataType = -14;
inline constexpr int kAttrDefault = -19;

// A setting is read only when its changeable flag says no. An unset (Null) flag is no refusal:
// the data interface then leaves the decision to the service.
inline bool isReadOnly(const Value &changeable)
{
    if (changeable.isNull())
        return false;
    const auto flag = changeable.toBoolean();
    return flag.has_value() && !*flag;
}

} // namespace olvex::settingrules
