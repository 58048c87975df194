#include "das/calstarthandlers.h"

#include "calstart/calstartcommands.h"
#include "calstart/calstartrecord.h"
#include "common/pid.h"
#include "common/value.h"
#include "common/vocabulary.h"
#include "das/calcheckrunner.h"
#include "das/calrecord.h"
#include "das/commandhandlers.h"
#include "host/storedvalue.h"

#include <QRegularExpression>
#include <QSqlQuery>

namespace olvex {

namespace {

// The record's PID attribute: digits only, a valid PID.
std::optional<qint32> commandPid(const XmlNode &command, QString &reason)
{
    const QString text = command.attribute(QStringLiteral("pid"));
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,10}$"));
    const qint64 number = digits.match(text).hasMatch() ? text.toLongLong() : 0;
    if (!IsValidPid(Value(number))) {
        reason = u"malformed command record: pid '" + TruncateText(text, 20) + u"' is no valid PID";
        return std::nullopt;
    }
    return qint32(number);
}

// Who asked: the command's own user and address where it names them, else the record's.
Actor commandActor(const CommandContext &context)
{
    Actor who{context.record.userName, context.record.clientName, context.record.clientAddress};
    const QString user = context.command.attribute(QStringLiteral("user"));
    const QString address = context.command.attribute(QStringLiteral("clientIP"));
    if (!user.isEmpty()) {
        who.userName = user;
    }
    if (!address.isEmpty()) {
        who.clientAddress = address;
    }
    return who;
}

// The items' values as the record keeps them; an empty reason when all are good.
QList<CalRecordEdit> calStartEdits(const QList<XmlNode> &items, QString &reason)
{
    static const QRegularExpression hhmm(QStringLiteral("^([01][0-9]|2[0-3]):[0-5][0-9]$"));
    static const QRegularExpression whole(QStringLiteral("^[0-9]{1,6}$"));
    const auto known = [](const QString &id) {
        for (const char16_t *name : kCalStartItems) {
            if (id == QStringView(name)) {
                return true;
            }
        }
        return false;
    };
    QList<CalRecordEdit> edits;
    QHash<QString, QString> values;
    for (const XmlNode &item : items) {
        const QString id = item.attribute(QStringLiteral("id"));
        const QString value = item.attribute(QStringLiteral("newValue"));
        const auto bad = [&](const QString &what) {
            reason = u"malformed item " + TruncateText(id, 40) + u" = '" + TruncateText(value, 40)
                     + u"': " + what;
            return QList<CalRecordEdit>();
        };
        if (!known(id)) {
            return bad(QStringLiteral("no such item"));
        }
        if (values.contains(id)) {
            return bad(QStringLiteral("given twice"));
        }
        if (id == u"CalStartTime") {
            if (!hhmm.match(value).hasMatch()) {
                return bad(QStringLiteral("not a time of day HH:nn"));
            }
            edits.append({QStringLiteral("CalStartTimeUser"), value});
            edits.append({QStringLiteral("CalStartTimePLC"), value});
        } else if (id == u"CalDelayMinutes" || id == u"CalConfirmTimeout") {
            if (!whole.match(value).hasMatch()) {
                return bad(QStringLiteral("not a whole number of minutes"));
            }
            if (id == u"CalConfirmTimeout" && (value.toInt() < 1 || value.toInt() > 480)) {
                return bad(QStringLiteral("outside 1 to 480 minutes"));
            }
            edits.append({id, QString::number(value.toInt())});
        } else {
            if (value != u"0" && value != u"1") {
                return bad(QStringLiteral("not 0 or 1"));
            }
            edits.append({id, value});
        }
        values.insert(id, value);
    }
    if (values.value(QStringLiteral("CalAfterStartup")) == u"1"
        && values.value(QStringLiteral("CalAfterEnterNormalOps")) == u"1") {
        reason = QStringLiteral("malformed command record: CalAfterStartup and "
                                "CalAfterEnterNormalOps are both 1");
        return {};
    }
    if (edits.isEmpty()) {
        reason = QStringLiteral("malformed command record: no items");
    }
    return edits;
}

CommandOutcome changeCalStartSettings(CommandContext &context, CalCheckRunner &runner)
{
    QString reason;
    const std::optional<qint32> pid = commandPid(context.command, reason);
    if (!pid) {
        return CommandOutcome::failed(reason);
    }
    QList<CalRecordEdit> edits
        = calStartEdits(context.command.selectNodes(QStringLiteral("Item")), reason);
    if (!reason.isEmpty()) {
        return CommandOutcome::failed(reason);
    }
    const QString before = readCalRecord(context.store, *pid);
    if (before.isEmpty()) {
        return CommandOutcome::failed(u"PID " + FormatPid(*pid)
                                      + u" has no calibration start record");
    }
    QString after = editCalStartElements(before, edits);
    // An idle parameter's status names the next daily check, which may just have moved; a
    // running check or a prompt waiting for the operator keeps the status line.
    const bool pending
        = Value(calStartElement(after, QStringLiteral("CalConfirmPending")).value_or(QString()))
              .isTrue();
    if (!pending && !runner.running(context.store, *pid)) {
        after = editCalStartElements(
            after, {{QStringLiteral("UserFriendlyStatus"), CalCheckRunner::idleStatus(after)}});
    }
    if (after == before) {
        return CommandOutcome::done(u"no change to PID " + FormatPid(*pid));
    }
    writeCalRecord(context.store, *pid, after, commandActor(context), context.action);
    return CommandOutcome::done(u"changed " + QString::number(edits.size()) + u" items of PID "
                                + FormatPid(*pid));
}

// The calibration parameter whose start (or abort) channel is channel; 0 when none.
qint32 calParameterOfChannel(SiteStore &store, int channel, bool start)
{
    for (const auto &[pid, live] : store.liveStatesOfTypes({ParameterTypes::Calibration})) {
        const std::optional<CalStartRecord> record
            = CalStartRecord::fromXml(nullptr, live.current.Value.toText());
        if (!record) {
            continue;
        }
        const bool supported
            = start ? record->manualCalStartSupported : record->manualCalAbortSupported;
        const QString ioid = start ? record->manualCalStartIoid : record->manualCalAbortIoid;
        if (supported && usableChannel(ioid) == channel) {
            return pid;
        }
    }
    return 0;
}

void setChannelBit(SiteStore &store, int channel, int bit, const Actor &who, qint64 whenMs)
{
    const StoredValue stored = encodeValue(Value(bit));
    QSqlQuery &query = store.sql().prepared(
        QStringLiteral("UPDATE channels SET vkind = ?, val = ?, written_ms = ?, written_by = ?,"
                       " written_client = ? WHERE channel = ?"));
    query.addBindValue(stored.kind);
    query.addBindValue(stored.text);
    query.addBindValue(whenMs);
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientAddress.isEmpty() ? who.clientName : who.clientAddress));
    query.addBindValue(channel);
    store.sql().exec(query);
}

CommandOutcome writeToChannel(CommandContext &context, CalCheckRunner &runner)
{
    const QString id = context.command.attribute(QStringLiteral("id"));
    const std::optional<int> channel = usableChannel(id);
    if (!channel || !id.startsWith(u'C')) {
        return CommandOutcome::failed(u"malformed command record: channel id '"
                                      + TruncateText(id, 20) + u"' is not C and a number");
    }
    const QString value = context.command.attribute(QStringLiteral("value"));
    if (value != u"1" && value != u"0") {
        return CommandOutcome::failed(u"malformed command record: value '" + TruncateText(value, 20)
                                      + u"' is not 0 or 1");
    }
    const int kind = context.store.channelKind(*channel);
    const QString recordType = channelRecordType(kind);
    if (recordType.isEmpty()) {
        return CommandOutcome::failed(channelRefusal(kind) + u"(ChannelID="
                                      + QString::number(*channel) + u')');
    }
    if (recordType != context.record.recordType) {
        return CommandOutcome::failed(u"channel " + QString::number(*channel) + u" is written by "
                                      + recordType + u" records, not " + context.record.recordType);
    }
    const Actor who = commandActor(context);
    const qint64 whenMs = toStoreTime(runner.now());
    setChannelBit(context.store, *channel, value.toInt(), who, whenMs);
    if (value != u"1") {
        return CommandOutcome::done(u"channel " + QString::number(*channel) + u" set to 0");
    }
    // The plant acts on a rising start or abort bit and clears it again.
    if (const qint32 pid = calParameterOfChannel(context.store, *channel, true)) {
        const CalCheckState check = runner.start(context.store, pid, who, true);
        setChannelBit(context.store, *channel, 0, who, whenMs);
        return CommandOutcome::done(u"channel " + QString::number(*channel) + u": cal check of PID "
                                    + FormatPid(pid) + u" started, due "
                                    + check.due.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")));
    }
    if (const qint32 pid = calParameterOfChannel(context.store, *channel, false)) {
        const bool aborted = runner.abort(context.store, pid, who);
        setChannelBit(context.store, *channel, 0, who, whenMs);
        return CommandOutcome::done(
            u"channel " + QString::number(*channel) + u": "
            + (aborted ? QStringLiteral("cal check of PID ")
                       : QStringLiteral("no cal check of PID "))
            + FormatPid(pid)
            + (aborted ? QStringLiteral(" aborted") : QStringLiteral(" was running")));
    }
    return CommandOutcome::done(u"channel " + QString::number(*channel) + u" set to 1");
}

CommandOutcome writeMsgToAutoCalLog(CommandContext &context, CalCheckRunner &runner)
{
    QString reason;
    const std::optional<qint32> pid = commandPid(context.command, reason);
    if (!pid) {
        return CommandOutcome::failed(reason);
    }
    const QString text = context.command.attribute(QStringLiteral("msg"));
    if (text.isEmpty()) {
        return CommandOutcome::failed(QStringLiteral("malformed command record: no msg"));
    }
    if (!context.store.parameterExists(*pid)) {
        return CommandOutcome::failed(u"PID " + FormatPid(*pid) + u" has no definition");
    }
    const Actor who = commandActor(context);
    QSqlQuery &query = context.store.sql().prepared(
        QStringLiteral("INSERT INTO autocal_log (logged_ms, pid, text, user_name, client_address)"
                       " VALUES (?, ?, ?, ?, ?)"));
    query.addBindValue(toStoreTime(runner.now()));
    query.addBindValue(*pid);
    query.addBindValue(text);
    query.addBindValue(notNull(who.userName));
    query.addBindValue(notNull(who.clientAddress));
    context.store.sql().exec(query);
    return CommandOutcome::done(u"auto-cal log line for PID " + FormatPid(*pid));
}

} // namespace

void addCalStartHandlers(CommandHandlers &handlers, CalCheckRunner &runner)
{
    handlers.add(QStringLiteral("ChangeCalStartSettings"), [&runner](CommandContext &context) {
        return changeCalStartSettings(context, runner);
    });
    handlers.add(QStringLiteral("WriteToChannel"),
                 [&runner](CommandContext &context) { return writeToChannel(context, runner); });
    handlers.add(QStringLiteral("WriteMsgToAutoCalLog"), [&runner](CommandContext &context) {
        return writeMsgToAutoCalLog(context, runner);
    });
}

} // namespace olvex
