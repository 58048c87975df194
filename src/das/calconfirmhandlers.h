#pragma once

namespace olvex {

class CommandHandlers;
class CalScheduler;

// The service's side of the confirmation panel:
// - RaiseMsg: stores the line in the site's system messages (type, PID, text, user, client,
//   time of the service's clock);
// - CalPendingPromptAction: the operator's answer to a held calibration: CalConfirm "1" starts
//   the check through the runner, CalCancel "1" skips it; an answer that comes after the hold
//   ended changes nothing.
// The scheduler must outlive the handlers.
void addCalConfirmHandlers(CommandHandlers &handlers, CalScheduler &scheduler);

} // namespace olvex
