#pragma once

namespace olvex {

class CommandHandlers;
class CalCheckRunner;

// The service's side of the calibration start control:
// - ChangeCalStartSettings: applies the twelve items to the parameter's record (CalStartTime is
//   kept as CalStartTimeUser, CalStartTimePLC follows it), every other element untouched;
// - WriteToChannel (Q1IOCOMMAND / Q2IOCOMMAND): sets the channel's bit; a manual start or abort
//   channel of a calibration parameter starts or aborts its check, and the bit is cleared;
// - WriteMsgToAutoCalLog: appends the line to the site's auto-cal log.
// Each runs inside the record's transaction and changes the store only through it. The runner
// must outlive the handlers.
void addCalStartHandlers(CommandHandlers &handlers, CalCheckRunner &runner);

} // namespace olvex
