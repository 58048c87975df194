// olvex-settings: the headless command line of a site. One subcommand per table row; each lives
// in the file of its group (sitecommands.cpp, parametercommands.cpp, ...).
#include "calconfirm_commands.h"
#include "calstart_commands.h"
#include "cliutil.h"
#include "commands.h"
#include "history_commands.h"

#include <QCoreApplication>

#include <cstdio>
#include <iterator>

namespace {

using namespace olvex::cli;

struct Command
{
    const char *name;
    CommandFunction run;
    const char *summary;
};

const Command kCommands[] = {
    {"init-demo", initDemoCommand, "create the demo site (--site SITE [--scale N] [--force])"},
    {"info", infoCommand, "site id and parameter counts by type (--site SITE)"},
    {"list", listCommand, "PID, type and name of parameters (--site SITE [--type CODE])"},
    {"get", getCommand, "values as the settings list shows them (--site SITE PID...)"},
    {"set", setCommand, "change a setting (--site SITE --user USER PID VALUE)"},
    {"history", historyCommand, "recorded changes of a setting, newest first (--site SITE PID)"},
    {"export", exportCommand, "save every setting to a CSV file (--site SITE [--force] FILE)"},
    {"import", importCommand, "load a CSV file (--site SITE --user USER [--dry-run] FILE)"},
    {"cal", calCommand,
     "calibration start settings (--site SITE [--user USER] list|show|set|start|abort PID...)"},
    {"log", logCommand, "the message log, or the auto-cal log (--site SITE [--auto-cal])"},
    {"cylinders", cylindersCommand, "gas cylinders as the cylinder list shows them (--site SITE)"},
    {"checks", checksCommand, "calibration-check records (--site SITE [--cylinder PID])"},
    {"messages", messagesCommand, "the raised system messages (--site SITE [--last N])"},
    {"cal pending", calPendingCommand, "calibrations waiting for confirmation (--site SITE)"},
};

void printUsage(QTextStream &stream)
{
    stream << "Usage: " << kProgram << " COMMAND [options]\n"
           << "       " << kProgram << " --version\n\n"
           << "The command line of an Olvex site. A site is a file path, sqlite:PATH or a\n"
           << "postgresql:// URI. Exit codes: 0 done, 1 failed, 2 usage, 3 refused for lack of\n"
           << "privilege, 4 an import that left lines of the file undone (listed).\n\nCommands:\n";
    for (const Command &command : kCommands) {
        stream << "  " << QString::fromLatin1(command.name).leftJustified(12) << command.summary
               << '\n';
    }
    stream << "\n" << kProgram << " COMMAND --help shows a command's options.\n";
    stream.flush();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(kProgram);
    QCoreApplication::setApplicationVersion(QStringLiteral(OLVEX_VERSION));
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty()) {
        printUsage(err);
        return ExitCode::Usage;
    }
    const QString name = args.first();
    if (name == u"--help" || name == u"-h" || name == u"help") {
        printUsage(out);
        return ExitCode::Ok;
    }
    if (name == u"--version" || name == u"-v") {
        out << kProgram << ' ' << QCoreApplication::applicationVersion() << '\n';
        return ExitCode::Ok;
    }
    // A two-word command ("cal pending") goes before a one-word one of its first word.
    const QString twoWords = args.size() > 1 ? name + u' ' + args.at(1) : QString();
    for (const QString &wanted : {twoWords, name}) {
        for (const Command &command : kCommands) {
            if (!wanted.isEmpty() && wanted == QLatin1StringView(command.name)) {
                return command.run(args, out, err);
            }
        }
    }
    complain(err, u"unknown command '" + name + u"' (see " + kProgram + u" --help)",
             ExitCode::Usage);
    return ExitCode::Usage;
}
