#pragma once

#include "das/commandhandlers.h"

namespace olvex {

// FixOldCalCylinderInfo: the cylinder edit dialog's "effective on an earlier date". Every
// calibration-check record of the cylinder (pid) that started from `start` to `end` gets the
// new cylinder ID, expiration date, vendor ID and gas list, with one audit row each, inside the
// item's transaction. The result names the count. `end` is written to the minute, so the
// window runs to the end of that minute: a check made in the minute the fix was posted counts.
CommandOutcome FixOldCalCylinderInfo(CommandContext &context);

// Adds the handlers of the gas cylinder commands.
void addCylinderHandlers(CommandHandlers &handlers);

} // namespace olvex
