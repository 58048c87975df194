// The calibration start commands: list the calibration parameters as the calibration start
// control lists them, show a record element by element, change it with the control's checks,
// start or abort a check as the buttons do; and the logs of the site.
#include "calstart_commands.h"
#include "cliutil.h"

#include "calstart/calstartcommands.h"
#include "calstart/calstartrecord.h"
#include "calstart/calstartrules.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/xml.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "host/storedvalue.h"

#include <QDateTime>
#include <QSqlQuery>

#include <functional>

namespace olvex::cli {

namespace {

// The refusals of the start and abort buttons, which the control only logs, are the command's
// answer here: they go to stderr.
class CollectingLog final : public MessageLog
{
public:
    void LogMessage(int, const QString &text) override { lines.append(text); }
    QStringList lines;
};

const QString kSubcommands = QStringLiteral("list|show|set|start|abort");

// One NAME=VALUE of `cal set`, applied to the entry; an empty text when it was taken, else the
// reason it was not.
QString applySetting(CalStartEntry &entry, const CalStartRecord &record, const QString &name,
                     const QString &value)
{
    const auto flag = [&](bool &target, bool allowed, const QString &why) -> QString {
        const QString v = value.trimmed().toLower();
        bool on = false;
        if (v == u"1" || v == u"true" || v == u"yes") {
            on = true;
        } else if (v != u"0" && v != u"false" && v != u"no") {
            return u"'" + value + u"' is not 0 or 1";
        }
        if (!allowed) {
            return why;
        }
        target = on;
        return {};
    };
    const bool on = !entry.disableAutoCal;
    const QString disabled = QStringLiteral("automatic calibration checks are disabled");
    const QString noConfirm
        = QStringLiteral("the parameter does not support calibration confirmation");
    if (name == u"CalEnabled") {
        bool enabled = on;
        const QString why = flag(enabled, record.enableChannelUsable(),
                                 QStringLiteral("the enable channel is not usable"));
        entry.disableAutoCal = !enabled;
        return why;
    }
    if (name == u"CalStartTime") {
        const std::optional<QTime> time = acceptCalStartTime(value);
        if (!time) {
            return u"'" + value + u"' is not a time of day";
        }
        entry.startTime = calStartTimeText(*time);
        return on ? QString() : disabled;
    }
    if (name == u"CalDelayMinutes") {
        if (!isMinutesText(value)) {
            return u"'" + value + u"' is not a number of minutes";
        }
        entry.startupDelay = entry.normalOpsDelay = value.trimmed();
        return on ? QString() : disabled;
    }
    if (name == u"CalConfirmTimeout") {
        const std::optional<QString> minutes = clampConfirmTimeout(value.trimmed());
        if (!minutes) {
            return u"'" + value + u"' is not a number of minutes";
        }
        entry.confirmTimeout = *minutes;
        return record.calConfirmSupported ? QString() : noConfirm;
    }
    if (name == u"CalAfterStartup") {
        const QString why = flag(entry.calAfterStartup, on, disabled);
        if (why.isEmpty() && entry.calAfterStartup) {
            entry.calAfterEnterNormalOps = false;
        }
        return why;
    }
    if (name == u"CalAfterEnterNormalOps") {
        const QString why = flag(
            entry.calAfterEnterNormalOps, on && record.normalOpSupported,
            on ? QStringLiteral("the unit cannot report entering normal operation") : disabled);
        if (why.isEmpty() && entry.calAfterEnterNormalOps) {
            entry.calAfterStartup = false;
        }
        return why;
    }
    const struct
    {
        const char16_t *name;
        bool *target;
        bool allowed;
        QString why;
    } flags[] = {
        {u"SkipIfOffline", &entry.skipIfOffline, on, disabled},
        {u"SkipDailyCalIfOnlineCalExists", &entry.skipDailyCalIfOnlineCalExists, on, disabled},
        {u"SkipStartupCalIfOnlineCalExists", &entry.skipStartupCalIfOnlineCalExists, on, disabled},
        {u"CalEvery26OpHours", &entry.calEvery26OpHours, on && record.canDetermineOpHours,
         on ? QStringLiteral("the unit's operating hours are not known") : disabled},
        {u"CalConfirmEnabled", &entry.calConfirmEnabled, on && record.calConfirmSupported,
         record.calConfirmSupported ? disabled : noConfirm},
        {u"CalConfirmDefaultConfirm", &entry.runOnTimeout, record.calConfirmSupported, noConfirm},
    };
    for (const auto &f : flags) {
        if (name == QStringView(f.name)) {
            return flag(*f.target, f.allowed, f.why);
        }
    }
    QStringList known;
    for (const char16_t *item : kCalStartItems) {
        known.append(QString::fromUtf16(item));
    }
    return u"no such setting (one of " + known.join(u", ") + u')';
}

// The calibration parameter pid with its record, or the complaint's exit code.
struct CalTarget
{
    ParameterPtr parameter;
    QString xml;
};
std::optional<CalTarget> calTarget(SiteDataInterface &di, qint32 pid, QTextStream &err, int &code)
{
    const auto directory = di.GetPidDirectory();
    if (!directory->PidExists(pid)) {
        code = complain(err, u"cal: PID " + FormatPid(pid) + u" is not defined", ExitCode::Failed);
        return std::nullopt;
    }
    CalTarget target{directory->GetPid(pid, true), {}};
    if (target.parameter->ParameterType() != ParameterTypes::Calibration) {
        code = complain(err, u"cal: PID " + FormatPid(pid) + u" is not a calibration parameter",
                        ExitCode::Failed);
        return std::nullopt;
    }
    target.xml = target.parameter->GetCurrentValue().Value.toText();
    return target;
}

int calList(SiteDataInterface &di, QTextStream &out)
{
    ParameterList parameters = di.GetPidsOfTypes({ParameterTypes::Calibration});
    const bool severalUnits = belongToSeveralUnits(parameters);
    for (const ParameterPtr &parameter : std::as_const(parameters)) {
        out << FormatPid(parameter->PidNumber()) << '\t'
            << calParameterCaption(*parameter, severalUnits) << '\n';
    }
    return ExitCode::Ok;
}

int calShow(const CalTarget &target, QTextStream &out, QTextStream &err)
{
    if (target.xml.isEmpty()) {
        return complain(err,
                        QStringLiteral("cal show: the parameter has no calibration start "
                                       "record"),
                        ExitCode::Failed);
    }
    const XmlDocument document = LoadXmlDocument(nullptr, target.xml);
    const QList<XmlNode> elements = document.selectNodes(QStringLiteral("//CalStart/*"));
    if (elements.isEmpty()) {
        return complain(err,
                        QStringLiteral("cal show: the parameter's value is no calibration "
                                       "start record"),
                        ExitCode::Failed);
    }
    for (const XmlNode &element : elements) {
        QString text = element.text();
        text.replace(u'\n', u' ');
        out << element.name() << '\t' << text << '\n';
    }
    return ExitCode::Ok;
}

int calSet(SiteDataInterface &di, qint32 pid, const CalTarget &target, const QStringList &pairs,
           QTextStream &out, QTextStream &err)
{
    const std::shared_ptr<User> user = di.GetUser();
    if (!user || !user->HasPrivilege(Privileges::ChangeSettings)) {
        return complain(err,
                        u"Access denied. Account '" + (user ? user->UserName() : QString())
                            + u"' does not have privileges.",
                        ExitCode::Refused);
    }
    const std::optional<CalStartRecord> record = CalStartRecord::fromXml(nullptr, target.xml);
    if (!record) {
        return complain(err,
                        QStringLiteral("cal set: the parameter has no calibration start "
                                       "record"),
                        ExitCode::Failed);
    }
    CalStartEntry entry = CalStartEntryFromRecord(*record);
    for (const QString &pair : pairs) {
        const qsizetype equals = pair.indexOf(u'=');
        if (equals <= 0) {
            return complain(err, u"cal set: '" + pair + u"' is not NAME=VALUE", ExitCode::Usage);
        }
        const QString name = pair.left(equals).trimmed();
        const QString why = applySetting(entry, *record, name, pair.mid(equals + 1));
        if (!why.isEmpty()) {
            return complain(err, u"cal set: " + name + u": " + why, ExitCode::Failed);
        }
    }
    CollectingLog log;
    if (!PostCalStartChange(di, &log, pid, entry)) {
        return complain(err,
                        log.lines.isEmpty()
                            ? QStringLiteral("cal set: the settings do not make a valid change")
                            : log.lines.join(u' '),
                        ExitCode::Failed);
    }
    out << "posted the change of " << FormatPid(pid)
        << "; please allow up to 2 minutes for the changes to take effect.\n";
    return ExitCode::Ok;
}

int calButton(SiteDataInterface &di, qint32 pid, bool start, QTextStream &out, QTextStream &err)
{
    CollectingLog log;
    const bool posted = start ? StartCalCheck(di, &log, pid) : AbortCal(di, &log, pid);
    for (const QString &line : std::as_const(log.lines)) {
        complain(err, line, ExitCode::Failed);
    }
    if (!posted) {
        return ExitCode::Failed;
    }
    out << "posted the " << (start ? "manual cal start" : "cal abort") << " of " << FormatPid(pid)
        << '\n';
    return log.lines.isEmpty() ? ExitCode::Ok : ExitCode::Failed;
}

} // namespace

int calCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption user(QStringLiteral("user"),
                                  QStringLiteral("The account (default: operator)."),
                                  QStringLiteral("USER"), QStringLiteral("operator"));
    parser.addOption(user);
    if (auto done = parseArguments(
            parser, args,
            QStringLiteral("Calibration start settings: list the calibration parameters, show "
                           "one's record, change it (NAME=VALUE with the item names of the "
                           "change command, e.g. CalStartTime=06:30 CalAfterStartup=0), start or "
                           "abort a calibration check."),
            QStringLiteral("list|show|set|start|abort [PID] [NAME=VALUE...]"), 1, 1000, out, err)) {
        return *done;
    }
    const QStringList positional = parser.positionalArguments();
    const QString sub = positional.first();
    if (!kSubcommands.split(u'|').contains(sub)) {
        return complain(err, u"cal: unknown subcommand '" + sub + u"' (" + kSubcommands + u')',
                        ExitCode::Usage);
    }
    qint32 pid = 0;
    if (sub != u"list") {
        pid = positional.size() > 1 ? ParsePid(positional.at(1)) : 0;
        if (pid == 0) {
            return complain(err, u"cal " + sub + u": give the PID of a calibration parameter",
                            ExitCode::Usage);
        }
        if (sub == u"set" ? positional.size() < 3 : positional.size() > 2) {
            return complain(err,
                            sub == u"set" ? QStringLiteral("cal set: give NAME=VALUE to change")
                                          : u"cal " + sub + u": unexpected argument '"
                                                + positional.at(2) + u'\'',
                            ExitCode::Usage);
        }
    } else if (positional.size() > 1) {
        return complain(err, u"cal list: unexpected argument '" + positional.at(1) + u'\'',
                        ExitCode::Usage);
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteDataInterface di(store, HostSession{parser.value(user)});
        if (sub == u"list") {
            return calList(di, out);
        }
        int code = ExitCode::Failed;
        const std::optional<CalTarget> target = calTarget(di, pid, err, code);
        if (!target) {
            return code;
        }
        if (sub == u"show") {
            return calShow(*target, out, err);
        }
        if (sub == u"set") {
            return calSet(di, pid, *target, positional.mid(2), out, err);
        }
        return calButton(di, pid, sub == u"start", out, err);
    } catch (...) {
        return complain(err, u"cal " + sub + u": " + currentError().description, ExitCode::Failed);
    }
}

int logCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption autoCal(QStringLiteral("auto-cal"),
                                     QStringLiteral("The automatic calibration log instead of "
                                                    "the message log."));
    parser.addOption(autoCal);
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Prints a log of the site, oldest line first: "
                                                  "time, then the line's fields, tab-separated."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        const bool calLog = parser.isSet(autoCal);
        QSqlQuery query = store->sql().prepare(
            calLog ? QStringLiteral("SELECT logged_ms, pid, text, user_name, client_address"
                                    " FROM autocal_log ORDER BY id")
                   : QStringLiteral("SELECT logged_ms, severity, text, user_name, client_name"
                                    " FROM message_log ORDER BY id"));
        store->sql().exec(query);
        while (query.next()) {
            out << fromStoreTime(query.value(0)).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                << '\t' << (calLog ? FormatPid(query.value(1).toInt()) : query.value(1).toString())
                << '\t' << query.value(2).toString() << '\t' << query.value(3).toString() << '\t'
                << query.value(4).toString() << '\n';
        }
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, u"log: " + currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
