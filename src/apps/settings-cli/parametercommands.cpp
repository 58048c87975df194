// Commands on single parameters: list them, show setting values as the settings list shows
// them, and change a setting through the same checks as the settings editor.
#include "cliutil.h"
#include "commands.h"

#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "host/sitedatainterface.h"
#include "host/sitesecurity.h"
#include "host/sitestore.h"
#include "settings/settingdisplay.h"
#include "settings/settingentry.h"

namespace olvex::cli {

namespace {

// Notes of the value display (a stored value that does not fit its type) go to stderr: reading
// a site from the command line leaves no trace in its message log.
class ErrorStreamLog final : public MessageLog
{
public:
    explicit ErrorStreamLog(QTextStream &err)
        : m_err(err)
    {}
    void LogMessage(int, const QString &text) override { complain(m_err, text, 0); }

private:
    QTextStream &m_err;
};

QString pidText(qint32 pid)
{
    const QString display = FormatPid(pid);
    return display.isEmpty() ? QString::number(pid) : display;
}

// The PIDs of the positional arguments, or the usage complaint.
std::optional<QList<qint32>> parsePids(const QStringList &texts, const QString &command,
                                       QTextStream &err)
{
    QList<qint32> pids;
    for (const QString &text : texts) {
        const qint32 pid = ParsePid(text);
        if (pid == 0) {
            complain(err, command + u": '" + text + u"' is not a PID", ExitCode::Usage);
            return std::nullopt;
        }
        pids.append(pid);
    }
    return pids;
}

// The value cell of one parameter: a setting as the settings list shows it, anything else as
// its value's text.
QString rawValueCell(const Parameter &parameter, bool alternativeState, MessageLog *log)
{
    if (parameter.ParameterType() == ParameterTypes::Setting) {
        const SettingRowState state = settingRowState(parameter, alternativeState, log);
        if (!state.formatProblem.isEmpty() && log) {
            log->LogMessage(Severity::Error, state.formatProblem);
        }
        return state.valueText;
    }
    return FormatSettingValue(pidText(parameter.PidNumber()), 0, parameter.GetCurrentValue().Value,
                              QString(), log, false)
        .text;
}

QString oneLine(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    text.replace(u'\n', u' ');
    text.replace(u'\r', u' ');
    return text;
}

// The value cell on one line.
QString valueCell(const Parameter &parameter, bool alternativeState, MessageLog *log)
{
    return oneLine(rawValueCell(parameter, alternativeState, log));
}

// A yes/no or on/off entry: the dialog's captions, True/False or a number.
std::optional<Value> switchEntry(EntryKind kind, const QString &entry)
{
    const auto [falseCaption, trueCaption] = yesNoCaptions(kind);
    const QString t = entry.trimmed();
    if (t.compare(trueCaption, Qt::CaseInsensitive) == 0) {
        return Value(true);
    }
    if (t.compare(falseCaption, Qt::CaseInsensitive) == 0) {
        return Value(false);
    }
    if (const auto b = Value(t).toBoolean()) {
        return Value(*b);
    }
    return std::nullopt;
}

} // namespace

int listCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption type(QStringLiteral("type"),
                                  QStringLiteral("Lists only parameters of this type code."),
                                  QStringLiteral("CODE"));
    parser.addOption(type);
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Lists parameters: PID, type code and name, "
                                                  "one per line, ascending by PID."),
                                   QString(), 0, 0, out, err)) {
        return *done;
    }
    QList<int> types;
    if (parser.isSet(type)) {
        bool ok = false;
        types.append(parser.value(type).toInt(&ok));
        if (!ok) {
            return complain(err,
                            u"list: --type wants a type code, not '" + parser.value(type) + u'\'',
                            ExitCode::Usage);
        }
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        if (types.isEmpty()) {
            types = store->counts().parametersByType.keys();
        }
        // The data interface's own read, so the list is what the components see.
        SiteDataInterface di(store, HostSession{QStringLiteral("viewer")});
        for (const ParameterPtr &parameter : di.GetPidsOfTypes(types)) {
            out << pidText(parameter->PidNumber()) << '\t' << parameter->ParameterType() << '\t'
                << parameter->GetName(0) << '\n';
        }
        out.flush();
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

int getCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption user(QStringLiteral("user"),
                                  QStringLiteral("Reads as this user (default viewer)."),
                                  QStringLiteral("USER"), QStringLiteral("viewer"));
    parser.addOption(user);
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Shows each PID's value as the settings list "
                                                  "shows it (\"<Null>\", \"Updating...\" while "
                                                  "a change is pending)."),
                                   QStringLiteral("PID..."), 1, 100000, out, err)) {
        return *done;
    }
    const auto pids = parsePids(parser.positionalArguments(), QStringLiteral("get"), err);
    if (!pids) {
        return ExitCode::Usage;
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteDataInterface di(store, HostSession{parser.value(user)});
        ErrorStreamLog log(err);
        const auto directory = di.GetPidDirectory();
        int code = ExitCode::Ok;
        for (const qint32 pid : *pids) {
            if (!directory->PidExists(pid)) {
                out << pidText(pid) << "\tN/A\n";
                out.flush();
                code = complain(err, u"PID " + pidText(pid) + u" is not defined", ExitCode::Failed);
                continue;
            }
            const ParameterPtr parameter = directory->GetPid(pid, true);
            out << pidText(pid) << '\t' << valueCell(*parameter, di.AlternativeState(), &log)
                << '\n';
        }
        out.flush();
        return code;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

int setCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption user(QStringLiteral("user"),
                                  QStringLiteral("The account making the change."),
                                  QStringLiteral("USER"));
    const QCommandLineOption confirm(
        QStringLiteral("confirm"),
        QStringLiteral("Answers Yes when the value lies outside the recommended range."));
    parser.addOptions({user, confirm});
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Changes a setting through the data "
                                                  "acquisition service, with the settings "
                                                  "editor's checks."),
                                   QStringLiteral("PID VALUE"), 2, 2, out, err)) {
        return *done;
    }
    if (!parser.isSet(user)) {
        return complain(err, QStringLiteral("set: no user given (use --user USER)"),
                        ExitCode::Usage);
    }
    const QString pidArgument = parser.positionalArguments().at(0);
    const QString entry = parser.positionalArguments().at(1);
    const auto pids = parsePids({pidArgument}, QStringLiteral("set"), err);
    if (!pids) {
        return ExitCode::Usage;
    }
    const qint32 pid = pids->first();
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteDataInterface di(store, HostSession{parser.value(user)});
        const auto directory = di.GetPidDirectory();
        if (!directory->PidExists(pid)) {
            return complain(err, u"PID " + pidText(pid) + u" is not defined", ExitCode::Failed);
        }
        const ConnectionDescription connection = di.ConnectionSettings();
        SiteSecurity security(di.actor().userName, store);
        security.Initialize(connection.DataConnection, connection.SecondaryDataConnection,
                            connection.DasConnection, connection.SecondaryDasConnection,
                            di.ClientName() + u":olvex-settings", 0);
        if (!security.CanChangeSetting(pid, true)) {
            return complain(err, accessDeniedText(di.GetUser()->UserName()), ExitCode::Refused);
        }
        const ParameterPtr parameter = directory->GetPid(pid, true);
        const QString name = parameter->GetName(0);
        if (parameter->ParameterType() != ParameterTypes::Setting) {
            return complain(err, u"PID " + pidText(pid) + u" (" + name + u") is not a setting",
                            ExitCode::Failed);
        }
        const SettingRowState state = settingRowState(*parameter, di.AlternativeState(), nullptr);
        if (!SettingIcon::isChangeable(state.icon)) {
            return complain(err, u"setting '" + name + u"' cannot be changed (read-only)",
                            ExitCode::Failed);
        }
        const int dataType
            = int(parameter->GetAttribute(SettingAttr::DataType).toInteger().value_or(0));
        const EntryKind kind = entryKindFor(dataType);
        std::optional<Value> value;
        switch (kind) {
        case EntryKind::Number: {
            const NumberEntryCheck check
                = checkNumberEntry(entry, parameter->GetAttribute(SettingAttr::RecommendedLow),
                                   parameter->GetAttribute(SettingAttr::RecommendedHigh));
            if (check.refusal == NumberEntryCheck::Refusal::NotNumeric) {
                return complain(err, u"'" + entry + u"' is not a number", ExitCode::Failed);
            }
            if (check.refused()) {
                return complain(err, check.message, ExitCode::Failed);
            }
            if (!check.questions.isEmpty() && !parser.isSet(confirm)) {
                return complain(
                    err,
                    withLineBreaks(check.questions.first()).section(QStringLiteral("\r\n"), 0, 0)
                        + u" Not changed; add --confirm to make this change.",
                    ExitCode::Failed);
            }
            value = valueToWrite(kind, entry);
            break;
        }
        case EntryKind::FreeText:
            value = valueToWrite(kind, entry);
            break;
        case EntryKind::DateTime:
            if (!isDateEntry(entry)) {
                return complain(err, u"'" + entry + u"' is not a date or a time", ExitCode::Failed);
            }
            value = valueToWrite(kind, entry);
            break;
        case EntryKind::YesNo:
        case EntryKind::OnOff: {
            value = switchEntry(kind, entry);
            if (!value) {
                const auto [no, yes] = yesNoCaptions(kind);
                return complain(err, u"'" + entry + u"' is neither " + yes + u" nor " + no,
                                ExitCode::Failed);
            }
            break;
        }
        case EntryKind::None:
            return complain(err,
                            u"setting '" + name + u"' has data type " + QString::number(dataType)
                                + u", which cannot be entered",
                            ExitCode::Failed);
        }
        if (!value) {
            return complain(err, u"'" + entry + u"' does not fit setting '" + name + u'\'',
                            ExitCode::Failed);
        }
        parameter->SetValues(WriteMode::Queued, *value);
        out << pidText(pid) << '\t' << valueCell(*parameter, di.AlternativeState(), nullptr)
            << '\n';
        out.flush();
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
