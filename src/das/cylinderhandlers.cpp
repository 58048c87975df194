#include "das/cylinderhandlers.h"

#include "common/datetime.h"
#include "common/pid.h"
#include "host/calchecks.h"

#include <QDateTime>

#include <optional>

namespace olvex {

namespace {

// "yyyy/MM/dd HH:mm" as the command writes its dates.
std::optional<QDateTime> commandDate(const QString &text)
{
    const QDateTime date
        = QDateTime::fromString(text.trimmed(), QStringLiteral("yyyy/MM/dd HH:mm"));
    return date.isValid() ? std::optional<QDateTime>(date) : std::nullopt;
}

} // namespace

CommandOutcome FixOldCalCylinderInfo(CommandContext &context)
{
    const XmlNode &command = context.command;
    const QString pidText = command.attribute(QStringLiteral("pid"));
    const qint32 pid = ParsePid(pidText);
    if (pid == 0) {
        return CommandOutcome::failed(pidText.trimmed().isEmpty()
                                          ? QStringLiteral("the fix names no cylinder")
                                          : u"'" + pidText + u"' is not a cylinder PID");
    }
    const std::optional<ParameterRecord> cylinder = context.store.parameter(pid);
    if (!cylinder || cylinder->type != ParameterTypes::GasCylinder) {
        return CommandOutcome::failed(u"PID " + FormatPid(pid) + u" is not a gas cylinder");
    }
    const QString startText = command.attribute(QStringLiteral("start"));
    const QString endText = command.attribute(QStringLiteral("end"));
    const std::optional<QDateTime> start = commandDate(startText);
    const std::optional<QDateTime> end = commandDate(endText);
    if (!start) {
        return CommandOutcome::failed(u"start '" + startText + u"' is not a date and time");
    }
    if (!end) {
        return CommandOutcome::failed(u"end '" + endText + u"' is not a date and time");
    }
    if (*start > *end) {
        return CommandOutcome::failed(u"start " + startText + u" is after end " + endText);
    }
    const QString expirationText = command.attribute(QStringLiteral("newexpdate"));
    CalCheckCylinder data;
    data.cylinderId = command.attribute(QStringLiteral("newcylid"));
    data.vendorId = command.attribute(QStringLiteral("newvendorid"));
    data.gasCodes = command.attribute(QStringLiteral("newgaslist"));
    if (!expirationText.trimmed().isEmpty()) {
        std::optional<QDateTime> expiration = commandDate(expirationText);
        if (!expiration) {
            expiration = parseDateText(expirationText);
        }
        if (!expiration) {
            return CommandOutcome::failed(u"newexpdate '" + expirationText + u"' is not a date");
        }
        data.expiration = *expiration;
    }
    const Actor who{command.attribute(QStringLiteral("user")), context.record.clientName,
                    command.attribute(QStringLiteral("clientIP"))};
    const int changed = rewriteCalCheckCylinder(context.store, pid, *start,
                                                end->addSecs(60).addMSecs(-1), data, who);
    return CommandOutcome::done(QString::number(changed)
                                + (changed == 1 ? QStringLiteral(" calibration check updated")
                                                : QStringLiteral(" calibration checks updated")));
}

void addCylinderHandlers(CommandHandlers &handlers)
{
    handlers.add(QStringLiteral("FixOldCalCylinderInfo"), FixOldCalCylinderInfo);
}

} // namespace olvex
