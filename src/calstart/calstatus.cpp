#include "calstart/calstatus.h"

#include "calstart/calstartrecord.h"

#include "common/error.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/value.h"
#include "common/xml.h"

#include <QStringList>

namespace olvex {

namespace {

void logError(MessageLog *log, const QString &text)
{
    if (log) {
        guarded([&] { log->LogMessage(Severity::Error, text); }, [](const CaughtError &) {});
    }
}

// The parameter's record loaded, or a null document with the failure logged: failedRead when
// the value cannot be had, notXml when it does not load.
XmlDocument loadRecord(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                       const QString &failedRead, const QString &notXml)
{
    const QString tail = u" (PID=" + FormatPid(pid) + u')';
    QString text;
    bool read = false;
    guarded(
        [&] {
            const std::shared_ptr<PidDirectory> directory = dataInterface.GetPidDirectory();
            const ParameterPtr parameter = directory ? directory->GetPid(pid, true) : nullptr;
            if (parameter) {
                text = parameter->GetCurrentValue().Value.toText();
                read = true;
            }
        },
        [](const CaughtError &) {});
    if (!read) {
        logError(log, failedRead + tail);
        return {};
    }
    XmlDocument document = LoadXmlDocument(log, text);
    if (document.isNull()) {
        logError(log, notXml + tail);
    }
    return document;
}

} // namespace

StatusLine onlineCalStatusOf(const CalStartRecord &record)
{
    StatusLine line;
    if (!record.calEnabled || !record.canDetermineOpHours || !record.calEvery26OpHours) {
        return line;
    }
    line.text = record.opHoursStatusString;
    const Value hours(record.opHoursSinceOnlineCal);
    if (hours.isNumeric()) {
        const std::optional<qint64> whole = hours.toInteger();
        if (whole && *whole >= 26) {
            line.colour = StatusLine::Colour::Red;
        }
    }
    return line;
}

StatusLine autoCalStatusOf(const CalStartRecord &record)
{
    return {record.userFriendlyStatus};
}

StatusLine UpdateOnlineCalStatus(DataInterface &dataInterface, MessageLog *log, qint32 pid)
{
    const XmlDocument record = loadRecord(
        dataInterface, log, pid, QStringLiteral("CSET-0088: Cannot update online cal status"),
        QStringLiteral("CSET-0089: Cannot update online cal status"));
    return record.isNull() ? StatusLine() : onlineCalStatusOf(CalStartRecord::read(record));
}

StatusLine UpdateAutoCalStatus(DataInterface &dataInterface, MessageLog *log, qint32 pid)
{
    const XmlDocument record = loadRecord(
        dataInterface, log, pid, QStringLiteral("CSET-0086: Cannot update auto cal status"),
        QStringLiteral("CSET-0087: Cannot update auto cal status"));
    return record.isNull() ? StatusLine() : autoCalStatusOf(CalStartRecord::read(record));
}

QString OpHoursHelpText()
{
    return QStringList{
        QStringLiteral("You must submit an \"off-line calibration demonstration\" to EPA before "
                       "you can use "),
        QStringLiteral("this option to validate 40CFR75 data. For further information, see the "
                       "ECMPS QA "),
        QStringLiteral("Reporting Instructions and 40CFR75 Appendix B section 2.1.1.2."),
        QString(),
        QStringLiteral("The number of unit operating hours since the last online cal check is "),
        QStringLiteral("checked once an hour, at approximately 15 minutes into the hour. If the "),
        QStringLiteral("number of hours exceeds 25 AND the unit is online, OlVEX will attempt to "),
        QStringLiteral("start a cal check."),
    }
        .join(u"\r\n");
}

QString ConfirmationHelpText()
{
    return QStringList{
        QStringLiteral("Enabling this option will pop up a confirmation window for the user to "
                       "confirm or cancel "),
        QStringLiteral("the calibration."),
        QString(),
        QStringLiteral("A prompt will be generated for all calibrations automatically scheduled "),
        QStringLiteral("by OlVEX (daily cals, startup/normal operations cals, 26 operating "),
        QStringLiteral("hour cals), but not calibrations manually triggered by the user."),
        QString(),
        QStringLiteral("The Data Monitor MUST be running to receive the prompts, otherwise the "
                       "default action "),
        QStringLiteral("will be taken when the prompt timeout expires."),
    }
        .join(u"\r\n");
}

} // namespace olvex
