#include "calconfirm/calconfirmfunctions.h"

#include "common/command.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/value.h"

namespace olvex {

namespace {

const QString kCalStart = QStringLiteral("//CalStart");

void logError(MessageLog *log, const QString &text)
{
    if (log) {
        log->LogMessage(Severity::Error, text);
    }
}

QString withoutLineBreaks(QString text)
{
    text.remove(u'\r');
    text.remove(u'\n');
    return text;
}

QString pendingCalMessage(const QString &prefix, const QString &pidText, const QString &name,
                          const PendingCalTexts &texts)
{
    return withoutLineBreaks(prefix + pidText + u' ' + name + u": Reason='" + texts.reason
                             + u"' StartTime='" + texts.startTime + u"' DefaultAction='"
                             + texts.defaultAction + u'\'');
}

} // namespace

std::optional<QString> GetCalConfirmText(MessageLog *log, CurrentDataReader &reader, qint32 pid)
{
    const std::shared_ptr<CurrentDataItem> item
        = reader.GetCurrentDataItem(pid, QStringLiteral("1m"));
    if (!item) {
        return std::nullopt;
    }
    QString text = item->Text().trimmed();
    if (text.isEmpty()) {
        if (item->Status() == kStatusExpired) {
            logError(log, u"CSET-0084: Realtime data expired; Cannot confirm/cancel cal ("
                              + FormatPid(pid) + u')');
        }
        return std::nullopt;
    }
    return text;
}

namespace {

// The document and its CalStart element; both null when either is missing.
std::pair<XmlDocument, XmlNode> loadCalStart(MessageLog *log, const QString &text, qint32 pid)
{
    XmlDocument document = LoadXmlDocument(log, text);
    if (!document) {
        return {};
    }
    XmlNode calStart = document.selectSingleNode(kCalStart);
    if (calStart.isNull()) {
        logError(log, u"CSET-0085: Cannot find CalStart node;  Cannot confirm/cancel cal ("
                          + FormatPid(pid) + u')');
        return {};
    }
    return {std::move(document), std::move(calStart)};
}

} // namespace

XmlNode CalConfirmNodeOfText(MessageLog *log, const QString &text, qint32 pid)
{
    return loadCalStart(log, text, pid).second;
}

XmlDocument GetCalConfirmDocument(MessageLog *log, CurrentDataReader &reader, qint32 pid)
{
    const std::optional<QString> text = GetCalConfirmText(log, reader, pid);
    return text ? loadCalStart(log, *text, pid).first : XmlDocument();
}

QString CalPendingPromptActionText(DataInterface &dataInterface, qint32 pid, bool confirm,
                                   bool cancel)
{
    CommandBuilder command(QStringLiteral("CalPendingPromptAction"));
    command.addPid(QStringLiteral("pid"), pid).addEnvelope(dataInterface);
    return command.withItems({CommandItem::flag(QStringLiteral("CalConfirm"), confirm),
                              CommandItem::flag(QStringLiteral("CalCancel"), cancel)});
}

bool SendCalPendingPromptAction(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                                bool confirm, bool cancel)
{
    return PostCommand(dataInterface, log, RecordType::Calibration,
                       CalPendingPromptActionText(dataInterface, pid, confirm, cancel),
                       QStringLiteral("CSET-0046"),
                       u"CSET-0046: Can't write msg record to confirm/cancel cal (" + FormatPid(pid)
                           + u')');
}

QString RaiseMsgCommandText(DataInterface &dataInterface, qint32 pid, quint32 msgTypeId,
                            const QString &text)
{
    CommandBuilder command(QStringLiteral("RaiseMsg"));
    if (pid != 0) {
        command.addPid(QStringLiteral("pid"), pid);
    }
    command.addEnvelope(dataInterface)
        .addHex(QStringLiteral("msgTypeID"), msgTypeId)
        .addText(QStringLiteral("msg"), text);
    return command.blankJoined();
}

bool SendRaiseMsgCommand(DataInterface &dataInterface, MessageLog *log, qint32 pid,
                         quint32 msgTypeId, const QString &text)
{
    return PostCommand(
        dataInterface, log, RecordType::Calibration,
        RaiseMsgCommandText(dataInterface, pid, msgTypeId, text), QStringLiteral("CSET-0096"),
        u"CSET-0096: Can't write msg record to raise message; " + TruncateText(text, 80));
}

PendingCalState ReadPendingCalState(const XmlNode &calStart)
{
    QString reason;
    QString start;
    QString expiration;
    std::optional<bool> pending;
    std::optional<bool> defaultConfirm;
    for (const XmlNode &child : calStart.selectNodes(QStringLiteral(
             "CalConfirmPending|CalConfirmPendingCalType|CalConfirmScheduledStartTime"
             "|CalConfirmDefaultConfirm|CalConfirmExpirationTime"))) {
        const QString name = child.name();
        if (name == u"CalConfirmPending") {
            pending = Value(child.text().trimmed()).toBoolean();
        } else if (name == u"CalConfirmPendingCalType") {
            reason = child.text().trimmed();
        } else if (name == u"CalConfirmScheduledStartTime") {
            start = child.text().trimmed();
        } else if (name == u"CalConfirmDefaultConfirm") {
            defaultConfirm = Value(child.text().trimmed()).toBoolean();
        } else if (name == u"CalConfirmExpirationTime") {
            expiration = child.text().trimmed();
        }
    }
    return {pending.value_or(false),
            {reason, start, DefaultActionText(defaultConfirm.value_or(false), expiration)}};
}

bool IsCalConfirmPending(const XmlDocument &document)
{
    return ReadPendingCalState(document.selectSingleNode(kCalStart)).pending;
}

QString DefaultActionText(bool defaultConfirm, const QString &expirationTime)
{
    return (defaultConfirm ? QStringLiteral("This calibration will be automatically confirmed at:")
                           : QStringLiteral("This calibration will be automatically canceled at:"))
           + u"\r\n" + expirationTime;
}

PendingCalTexts ReadPendingCalTexts(const XmlDocument &document)
{
    return ReadPendingCalState(document.selectSingleNode(kCalStart)).texts;
}

QString AddPendingCalMessage(const QString &pidText, const QString &name,
                             const PendingCalTexts &texts)
{
    return pendingCalMessage(QStringLiteral("CSET-0092: AddPendingCal: "), pidText, name, texts);
}

QString PendingCalChangedMessage(const QString &pidText, const QString &name,
                                 const PendingCalTexts &texts)
{
    return pendingCalMessage(QStringLiteral("CSET-0093: PendingCal changed: "), pidText, name,
                             texts);
}

QString ClearPendingCalMessage(const QString &pidText, const QString &name,
                               const QString &finalStartTimeText)
{
    return withoutLineBreaks(u"CSET-0094: ClearPendingCal: " + pidText + u' ' + name + u": Text='"
                             + finalStartTimeText + u'\'');
}

QString NoPendingCalsMessage()
{
    return QStringLiteral("CSET-0098: There are no calibrations pending confirmation");
}

} // namespace olvex
