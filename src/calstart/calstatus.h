#pragma once

#include "common/olvexexport.h"

#include <QString>

namespace olvex {

class DataInterface;
class MessageLog;
struct CalStartRecord;

// The two read-only status lines of the calibration start control. The service keeps both in
// the parameter's record; these read it fresh (every ten seconds, and after load, Save, Cancel
// and selection) and say what the line shows. Failures are logged (severity 4) when log is
// given and leave the line empty.
struct StatusLine
{
    enum class Colour { Highlight, Red };

    QString text;
    Colour colour = Colour::Highlight;
};

// The 26-operating-hour line: OpHoursStatusString while CalEnabled, CanDetermineOpHours and
// CalEvery26OpHours are all true; red from 26 hours since the last online check.
OLVEX_CORE_EXPORT StatusLine UpdateOnlineCalStatus(DataInterface &dataInterface, MessageLog *log,
                                                   qint32 pid);
// The automatic calibration line: UserFriendlyStatus as it stands.
OLVEX_CORE_EXPORT StatusLine UpdateAutoCalStatus(DataInterface &dataInterface, MessageLog *log,
                                                 qint32 pid);

// The same two lines from a record already loaded (a control that has just read the value
// need not read it again).
OLVEX_CORE_EXPORT StatusLine onlineCalStatusOf(const CalStartRecord &record);
OLVEX_CORE_EXPORT StatusLine autoCalStatusOf(const CalStartRecord &record);

// The texts of the two help buttons, lines joined by CR LF, a blank line between paragraphs.
OLVEX_CORE_EXPORT QString OpHoursHelpText();
OLVEX_CORE_EXPORT QString ConfirmationHelpText();

} // namespace olvex
