#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <memory>
#include <optional>

namespace olvex {
class SiteStore;
}

namespace olvex::cli {

namespace ExitCode {
inline constexpr int Ok = 0;
inline constexpr int Failed = 1;
inline constexpr int Usage = 2;
inline constexpr int Refused = 3;    // lack of privilege
inline constexpr int Incomplete = 4; // an import that left lines of the file undone
} // namespace ExitCode

inline const QString kProgram = QStringLiteral("olvex-settings");

// "olvex-settings: text" on err: the one line a failure prints.
int complain(QTextStream &err, const QString &text, int exitCode);

// Parses args (args[0] the subcommand) with the options already added to parser (--help is
// added here). Returns an exit code when the command is done: 0 after printing its help, 2 after
// a usage error; nullopt when it should go on. positional names the expected positional
// arguments for the help text; at least minPositional of them must be present.
std::optional<int> parseArguments(QCommandLineParser &parser, const QStringList &args,
                                  const QString &description, const QString &positional,
                                  qsizetype minPositional, qsizetype maxPositional,
                                  QTextStream &out, QTextStream &err);

// The --site option, required by every command that works on a site.
QCommandLineOption siteOption();
// Opens the site named by --site into store; returns ExitCode::Ok, or prints the error line and
// returns the exit code (Usage without --site, Failed when the site cannot be opened).
int openSite(const QCommandLineParser &parser, QTextStream &err, std::shared_ptr<SiteStore> &store);

} // namespace olvex::cli
