#include "calstart/calstartcommands.h"

#include "calstart/calstartrecord.h"
#include "calstart/calstartrules.h"
#include "common/command.h"
#include "common/datetime.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/value.h"
#include "common/xml.h"

#include <limits>

namespace olvex {

namespace {

// The PID as nine digits with leading zeros, whatever the number: the record's own form, which
// does not check the PID's groups.
QString nineDigits(qint32 pid)
{
    return QStringLiteral("%1").arg(qint64(pid), 9, 10, QChar(u'0'));
}

std::optional<qint32> wholeMinutes(const QString &text)
{
    const Value value(text.trimmed());
    if (text.trimmed().isEmpty() || !value.isNumeric()) {
        return std::nullopt;
    }
    const std::optional<qint64> number = value.toInteger();
    if (!number || *number < std::numeric_limits<qint32>::min()
        || *number > std::numeric_limits<qint32>::max()) {
        return std::nullopt;
    }
    return qint32(*number);
}

void logError(MessageLog *log, const QString &text)
{
    if (log) {
        log->LogMessage(Severity::Error, text);
    }
}

// The texts of one button: start, or abort in brackets.
struct ButtonTexts
{
    const char16_t *element;
    const char16_t *noValue;
    const char16_t *notSupported;
    const char16_t *noChannel;
    const char16_t *notNumeric;
    const QString &logText;
};

const ButtonTexts kStartTexts{u"ManualCalStartSupported",
                              u"CSET-0025: Can't start manual cal; no XValue available (",
                              u"CSET-0026: Can't start manual cal; not supported (",
                              u"CSET-0027: Can't start manual cal; no channel ID (",
                              u"CSET-0028: Can't start manual cal; channel ID '",
                              kManualStartLogText};
const ButtonTexts kAbortTexts{u"ManualCalAbortSupported",
                              u"CSET-0013: Can't abort cal; no XValue available (",
                              u"CSET-0014: Can't abort cal; not supported (",
                              u"CSET-0015: Can't abort cal; no channel ID (",
                              u"CSET-0016: Can't abort cal; channel ID '",
                              kAbortLogText};

bool buttonAction(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                  const ButtonTexts &texts)
{
    const QString pidText = FormatPid(pid);
    QString xml;
    if (const std::shared_ptr<PidDirectory> directory = dataInterface.GetPidDirectory()) {
        if (const ParameterPtr parameter = directory->GetPid(pid, true)) {
            xml = parameter->GetCurrentValue().Value.toText();
        }
    }
    if (xml.isEmpty()) {
        logError(log, texts.noValue + pidText + u')');
        return false;
    }
    const XmlDocument document = LoadXmlDocument(log, xml);
    const QString element = u"//CalStart/" + QStringView(texts.element);
    if (!GetNodeBool(document, element).value_or(false)) {
        logError(log, texts.notSupported + pidText + u')');
        return false;
    }
    const QString channel = channelIdText(GetNodeText(document, element + u"/@ioid"));
    if (channel.isEmpty()) {
        logError(log, texts.noChannel + pidText + u')');
        return false;
    }
    const Value number(channel);
    const std::optional<qint64> whole = number.isNumeric() ? number.toInteger() : std::nullopt;
    if (!whole || *whole < std::numeric_limits<int>::min()
        || *whole > std::numeric_limits<int>::max()) {
        logError(log, texts.notNumeric + channel + u"' is not numeric (" + pidText + u')');
        return false;
    }
    return WriteChannelBit(dataInterface, log, pid, int(*whole), texts.logText);
}

} // namespace

CalStartEntry CalStartEntryFromRecord(const CalStartRecord &r)
{
    CalStartEntry e;
    e.disableAutoCal = !r.calEnabled;
    e.startTime = r.calStartTimeUser ? calStartTimeText(*r.calStartTimeUser) : QString();
    e.skipIfOffline = r.skipIfOffline;
    e.skipDailyCalIfOnlineCalExists = r.skipDailyCalIfOnlineCalExists;
    e.startupDelay = r.calDelayMinutes;
    e.normalOpsDelay = r.calDelayMinutes;
    e.calAfterStartup = r.calAfterStartup;
    e.calAfterEnterNormalOps = !r.calAfterStartup && r.calAfterEnterNormalOps;
    e.skipStartupCalIfOnlineCalExists = r.skipStartupCalIfOnlineCalExists;
    e.calEvery26OpHours = r.calEvery26OpHours;
    if (r.calConfirmSupported) {
        e.calConfirmEnabled = r.calConfirmEnabled;
        e.confirmTimeout = r.calConfirmTimeout;
        e.runOnTimeout = r.calConfirmDefaultConfirm;
    }
    return e;
}

std::optional<QString> BuildCalStartCommand(qint32 pid, const QString &user,
                                            const QString &clientAddress,
                                            const CalStartEntry &entry)
{
    const std::optional<QDateTime> time = parseDateText(entry.startTime.trimmed());
    const std::optional<qint32> delay = wholeMinutes(entry.startupDelay);
    const std::optional<qint32> timeout = wholeMinutes(entry.confirmTimeout);
    if (entry.startTime.trimmed().isEmpty() || !time || !delay || !timeout
        || !wholeMinutes(entry.normalOpsDelay)) {
        return std::nullopt;
    }
    const bool startup = entry.calAfterStartup;
    const bool normalOps = !startup && entry.calAfterEnterNormalOps;
    const QList<CommandItem> items{
        CommandItem::flag(QStringLiteral("CalEnabled"), !entry.disableAutoCal),
        {QStringLiteral("CalStartTime"), time->time().toString(QStringLiteral("HH:mm"))},
        CommandItem::flag(QStringLiteral("SkipIfOffline"), entry.skipIfOffline),
        CommandItem::flag(QStringLiteral("SkipDailyCalIfOnlineCalExists"),
                          entry.skipDailyCalIfOnlineCalExists),
        {QStringLiteral("CalDelayMinutes"), QString::number(*delay)},
        CommandItem::flag(QStringLiteral("CalAfterStartup"), startup),
        CommandItem::flag(QStringLiteral("CalAfterEnterNormalOps"), normalOps),
        CommandItem::flag(QStringLiteral("SkipStartupCalIfOnlineCalExists"),
                          entry.skipStartupCalIfOnlineCalExists),
        CommandItem::flag(QStringLiteral("CalConfirmEnabled"), entry.calConfirmEnabled),
        {QStringLiteral("CalConfirmTimeout"), QString::number(*timeout)},
        CommandItem::flag(QStringLiteral("CalConfirmDefaultConfirm"), entry.runOnTimeout),
        CommandItem::flag(QStringLiteral("CalEvery26OpHours"), entry.calEvery26OpHours),
    };
    return CommandBuilder(QStringLiteral("ChangeCalStartSettings"))
        .addRaw(QStringLiteral("pid"), nineDigits(pid))
        .addText(QStringLiteral("user"), user)
        .addText(QStringLiteral("clientIP"), clientAddress)
        .withItems(items);
}

bool PostCalStartChange(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                        const CalStartEntry &entry)
{
    const std::optional<QString> text = BuildCalStartCommand(
        pid, CommandUserName(dataInterface), CommandClientAddress(dataInterface), entry);
    if (!text) {
        return false;
    }
    return PostCommand(dataInterface, log, RecordType::Calibration, *text,
                       QStringLiteral("CSET-0023"),
                       u"CSET-0024: Can't create msg record to change cal start settings ("
                           + FormatPid(pid) + u')');
}

bool StartCalCheck(DataInterface &dataInterface, MessageLog *log, qint32 pid)
{
    return buttonAction(dataInterface, log, pid, kStartTexts);
}

bool AbortCal(DataInterface &dataInterface, MessageLog *log, qint32 pid)
{
    return buttonAction(dataInterface, log, pid, kAbortTexts);
}

QString channelRefusal(int kind)
{
    switch (kind) {
    case 1:
    case 3:
        return {};
    case 2:
        return QStringLiteral("CSET-0079: Can't write to channel; writing to Q1 implicit channel "
                              "is not allowed ");
    case 4:
        return QStringLiteral("CSET-0080: Can't write to channel; writing to Q2 multivalue CSV "
                              "channel is not allowed ");
    case 5:
        return QStringLiteral("CSET-0081: Can't write to channel; writing to Q2 multivalue UDT "
                              "channel is not allowed ");
    default:
        return QStringLiteral("CSET-0082: Can't write to channel; channel is not defined ");
    }
}

QString channelRecordType(int kind)
{
    return kind == 1 ? RecordType::Q1Io : kind == 3 ? RecordType::Q2Io : QString();
}

QString WriteToChannelCommand(int channel)
{
    return CommandBuilder(QStringLiteral("WriteToChannel"))
        .addRaw(QStringLiteral("id"), u'C' + QString::number(channel))
        .addRaw(QStringLiteral("value"), QStringLiteral("1"))
        .addRaw(QStringLiteral("priority"), QStringLiteral("high"))
        .singleLine();
}

QString AutoCalLogCommand(qint32 pid, const QString &text, const QString &user,
                          const QString &clientAddress)
{
    return CommandBuilder(QStringLiteral("WriteMsgToAutoCalLog"),
                          QStringLiteral("WriteMsgToAutoCalLog"))
        .addRaw(QStringLiteral("pid"), nineDigits(pid))
        .addText(QStringLiteral("msg"), text)
        .addText(QStringLiteral("user"), user)
        .extraBlank()
        .addText(QStringLiteral("clientIP"), clientAddress)
        .singleLine();
}

bool WriteChannelBit(DataInterface &dataInterface, MessageLog *log, qint32 pid, int channel,
                     const QString &logText)
{
    const QString pidText = FormatPid(pid);
    const int kind = dataInterface.GetChannelKind(channel);
    const QString recordType = channelRecordType(kind);
    if (recordType.isEmpty()) {
        logError(log, channelRefusal(kind) + u"(ChannelID=" + QString::number(channel) + u", PID="
                          + pidText + u')');
        return false;
    }
    if (!PostCommand(dataInterface, log, recordType, WriteToChannelCommand(channel),
                     QStringLiteral("CSET-0031"),
                     u"CSET-0032: Can't start manual cal; can't create msg to set Cal Start bit ("
                         + pidText + u')')) {
        return false;
    }
    PostCommand(dataInterface, log, RecordType::Calibration,
                AutoCalLogCommand(pid, logText, CommandUserName(dataInterface),
                                  CommandClientAddress(dataInterface)),
                QStringLiteral("CSET-0033"),
                u"CSET-0034: Can't create Msg record to write msg to auto cal log (" + pidText
                    + u')');
    return true;
}

} // namespace olvex
