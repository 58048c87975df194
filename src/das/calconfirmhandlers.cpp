#include "das/calconfirmhandlers.h"

#include "common/error.h"
#include "common/pid.h"
#include "das/calscheduler.h"
#include "das/commandhandlers.h"
#include "host/storeerrors.h"
#include "host/systemmessages.h"

namespace olvex {

namespace {

// The command's own user and address where it names them, else the record's.
Actor commandActor(const CommandContext &context)
{
    const QString user = context.command.attribute(QStringLiteral("user"));
    const QString address = context.command.attribute(QStringLiteral("clientIP"));
    return {user.isEmpty() ? context.record.userName : user, context.record.clientName,
            address.isEmpty() ? context.record.clientAddress : address};
}

qint32 commandPid(const CommandContext &context, bool required)
{
    const QString text = context.command.attribute(QStringLiteral("pid"));
    if (text.isEmpty() && !required) {
        return 0;
    }
    const qint32 pid = ParsePid(text);
    if (pid == 0) {
        throw Error(StoreError::InvalidRequest,
                    u"the command names no valid pid ('" + text + u"')");
    }
    return pid;
}

std::optional<bool> itemFlag(const CommandContext &context, const QString &id)
{
    const XmlNode item = context.command.selectSingleNode(u"Item[@id='" + id + u"']");
    if (!item) {
        return std::nullopt;
    }
    const QString value = item.attribute(QStringLiteral("newValue")).trimmed();
    if (value != u"0" && value != u"1") {
        throw Error(StoreError::InvalidRequest, id + u" must be 0 or 1, not '" + value + u'\'');
    }
    return value == u"1";
}

} // namespace

void addCalConfirmHandlers(CommandHandlers &handlers, CalScheduler &scheduler)
{
    handlers.add(QStringLiteral("RaiseMsg"), [&scheduler](CommandContext &context) {
        const QString typeText = context.command.attribute(QStringLiteral("msgTypeID"));
        bool ok = false;
        const quint32 type = typeText.startsWith(u"0x", Qt::CaseInsensitive)
                                 ? typeText.mid(2).toUInt(&ok, 16)
                                 : typeText.toUInt(&ok, 10);
        if (!ok) {
            return CommandOutcome::failed(u"msgTypeID is no number: '" + typeText + u'\'');
        }
        const Actor who = commandActor(context);
        SystemMessage message;
        message.raised = scheduler.now();
        message.msgType = type;
        message.pid = commandPid(context, false);
        message.text = context.command.attribute(QStringLiteral("msg"));
        message.userName = who.userName;
        message.clientAddress = who.clientAddress;
        message.commandId = context.record.id;
        raiseSystemMessage(context.store, message);
        return CommandOutcome::done(QStringLiteral("message raised"));
    });

    handlers.add(QStringLiteral("CalPendingPromptAction"), [&scheduler](CommandContext &context) {
        const qint32 pid = commandPid(context, true);
        const std::optional<bool> confirm = itemFlag(context, QStringLiteral("CalConfirm"));
        const std::optional<bool> cancel = itemFlag(context, QStringLiteral("CalCancel"));
        if (confirm.value_or(false) == cancel.value_or(false)) {
            return CommandOutcome::failed(
                QStringLiteral("the answer must confirm or cancel, not both or neither"));
        }
        return CommandOutcome::done(
            scheduler.answer(context.store, pid, confirm.value_or(false), commandActor(context)));
    });
}

} // namespace olvex
