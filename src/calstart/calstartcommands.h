#pragma once

#include "common/olvexexport.h"

#include <QString>
#include <QTime>

#include <optional>

namespace olvex {

class DataInterface;
class MessageLog;
struct CalStartRecord;

// What the operator entered on the calibration start control, as the fields hold it (texts
// unchecked). The change command is built from it.
struct CalStartEntry
{
    bool disableAutoCal = false;
    QString startTime; // the daily time as typed ("6:50 AM", "13:30")
    bool skipIfOffline = false;
    bool skipDailyCalIfOnlineCalExists = false;
    QString startupDelay = QStringLiteral("0");
    QString normalOpsDelay = QStringLiteral("0");
    bool calAfterStartup = false;
    bool calAfterEnterNormalOps = false;
    bool skipStartupCalIfOnlineCalExists = false;
    bool calEvery26OpHours = false;
    bool calConfirmEnabled = false;
    QString confirmTimeout = QStringLiteral("30");
    bool runOnTimeout = true;
};

// The entry as the control shows a record when it loads it: the time in the locale's short
// time format, both delays from CalDelayMinutes, the triggers exclusive (startup first), the
// confirmation items only where the record supports them (their defaults otherwise).
OLVEX_CORE_EXPORT CalStartEntry CalStartEntryFromRecord(const CalStartRecord &record);

// The twelve items of a ChangeCalStartSettings command, in the order they are written; the
// service knows the same names.
inline constexpr const char16_t *kCalStartItems[] = {
    u"CalEnabled",
    u"CalStartTime",
    u"SkipIfOffline",
    u"SkipDailyCalIfOnlineCalExists",
    u"CalDelayMinutes",
    u"CalAfterStartup",
    u"CalAfterEnterNormalOps",
    u"SkipStartupCalIfOnlineCalExists",
    u"CalConfirmEnabled",
    u"CalConfirmTimeout",
    u"CalConfirmDefaultConfirm",
    u"CalEvery26OpHours",
};

// The change command text; nullopt when the time does not convert or a minutes text is not
// numeric (nothing may then be sent).
OLVEX_CORE_EXPORT std::optional<QString> BuildCalStartCommand(qint32 pid, const QString &user,
                                                              const QString &clientAddress,
                                                              const CalStartEntry &entry);

// Builds the change command with the data interface's user and address and posts it as
// "Q1DRCOMMAND-CAL" with source "CSET-0023". False when it was not built or not posted (the
// failure logged when log is given). Host errors propagate.
OLVEX_CORE_EXPORT bool PostCalStartChange(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                                          const CalStartEntry &entry);

// The log texts of the two buttons.
inline const QString kManualStartLogText
    = QStringLiteral("** user requested a manual cal start (CSET-0029)");
inline const QString kAbortLogText = QStringLiteral("** user requested a cal abort (CSET-0017)");

// "Start Cal Check" and "Abort Cal" for the parameter pid: read its record fresh, check the
// capability and its channel id, and write the channel bit. Every refusal is logged (severity
// 4) when log is given, never shown. True when the channel write was posted.
OLVEX_CORE_EXPORT bool StartCalCheck(DataInterface &dataInterface, MessageLog *log, qint32 pid);
OLVEX_CORE_EXPORT bool AbortCal(DataInterface &dataInterface, MessageLog *log, qint32 pid);

// Posts the channel write for channel (record type by the channel's kind) and then the auto-cal
// log line. True when the channel write was posted.
OLVEX_CORE_EXPORT bool WriteChannelBit(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                                       int channel, const QString &logText);

// Why a channel of the kind may not be written ("CSET-0079: Can't write to channel; ... "),
// ending in a blank; empty for kinds 1 and 3.
OLVEX_CORE_EXPORT QString channelRefusal(int kind);
// The record type that writes a channel of the kind; empty for a refused kind.
OLVEX_CORE_EXPORT QString channelRecordType(int kind);

// <Command action="WriteToChannel" id="C12" value="1" priority="high" />
OLVEX_CORE_EXPORT QString WriteToChannelCommand(int channel);
// <WriteMsgToAutoCalLog action="WriteMsgToAutoCalLog" pid=".." msg=".." user=".."  clientIP=".." />
OLVEX_CORE_EXPORT QString AutoCalLogCommand(qint32 pid, const QString &text, const QString &user,
                                            const QString &clientAddress);

} // namespace olvex
