#pragma once

// Rules about a setting definition that the export and the import share.

#include "common/value.h"

namespace olvex::settingrules {

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
