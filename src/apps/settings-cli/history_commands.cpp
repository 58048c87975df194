#include "history_commands.h"

#include "cliutil.h"

#include "common/error.h"
#include "common/pid.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "settings/settinghistory.h"

namespace olvex::cli {

int historyCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Lists the recorded changes of a setting's "
                                                  "value, newest first: when, user, client, old "
                                                  "and new value, separated by tabs."),
                                   QStringLiteral("PID"), 1, 1, out, err)) {
        return *done;
    }
    const QString pidText = parser.positionalArguments().constFirst();
    const qint32 pid = ParsePid(pidText);
    if (pid == 0) {
        return complain(err, u"history: '" + pidText + u"' is not a PID", ExitCode::Usage);
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteDataInterface data(store, HostSession{QStringLiteral("viewer")});
        const std::shared_ptr<PidDirectory> directory = data.GetPidDirectory();
        if (!directory->PidExists(pid)) {
            return complain(err, u"history: there is no parameter " + FormatPid(pid),
                            ExitCode::Failed);
        }
        const ParameterPtr definition = directory->GetPid(pid, true);
        QList<AuditEntry> entries = data.ReadAuditTrail(pid, true, kHistoryLimit + 1);
        const bool truncated = entries.size() > kHistoryLimit;
        entries = entries.mid(0, kHistoryLimit);
        out << FormatPid(pid) << ' ' << definition->GetName(0) << '\n';
        if (entries.isEmpty()) {
            out << "No change of this setting's value is recorded.\n";
            return ExitCode::Ok;
        }
        out << "When\tUser\tClient\tOld Value\tNew Value\n";
        for (const HistoryLine &line : historyLines(*definition, entries, nullptr)) {
            out << line.when << '\t' << line.user << '\t' << line.client << '\t' << line.oldValue
                << '\t' << line.newValue << '\n';
        }
        if (truncated) {
            out << "(the latest " << kHistoryLimit << " changes; older ones are not shown)\n";
        }
        out.flush();
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
