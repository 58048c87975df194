#include "cliutil.h"

#include "common/error.h"
#include "host/sitestore.h"

namespace olvex::cli {

int complain(QTextStream &err, const QString &text, int exitCode)
{
    QString line = text;
    line.replace(u'\n', u' ');
    err << kProgram << ": " << line << Qt::endl;
    return exitCode;
}

std::optional<int> parseArguments(QCommandLineParser &parser, const QStringList &args,
                                  const QString &description, const QString &positional,
                                  qsizetype minPositional, qsizetype maxPositional,
                                  QTextStream &out, QTextStream &err)
{
    const QString command = args.value(0);
    parser.setApplicationDescription(description);
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Shows this help."));
    parser.addOption(help);
    for (const QString &name : positional.split(u' ', Qt::SkipEmptyParts)) {
        parser.addPositionalArgument(name, QString());
    }
    QStringList withProgram = args;
    withProgram[0] = kProgram;
    if (!parser.parse(withProgram)) {
        return complain(err, command + u": " + parser.errorText(), ExitCode::Usage);
    }
    if (parser.isSet(help)) {
        QString text = parser.helpText();
        // The usage line names the program by its path; name it and the subcommand instead.
        const qsizetype lineEnd = text.indexOf(u'\n');
        const qsizetype options = text.indexOf(QStringLiteral(" [options]"));
        if (text.startsWith(QStringLiteral("Usage: ")) && options > 0 && options < lineEnd) {
            text.replace(7, options - 7, kProgram + u' ' + command);
        }
        out << text;
        out.flush();
        return ExitCode::Ok;
    }
    const qsizetype count = parser.positionalArguments().size();
    if (count < minPositional) {
        return complain(err,
                        command + u": missing " + positional + u" (see " + kProgram + u' ' + command
                            + u" --help)",
                        ExitCode::Usage);
    }
    if (count > maxPositional) {
        return complain(err,
                        command + u": unexpected argument '"
                            + parser.positionalArguments().at(maxPositional) + u'\'',
                        ExitCode::Usage);
    }
    return std::nullopt;
}

QCommandLineOption siteOption()
{
    return QCommandLineOption(QStringLiteral("site"),
                              QStringLiteral("The site: a file path, sqlite:PATH or a "
                                             "postgresql:// URI."),
                              QStringLiteral("SITE"));
}

int openSite(const QCommandLineParser &parser, QTextStream &err, std::shared_ptr<SiteStore> &store)
{
    const QString text = parser.value(QStringLiteral("site"));
    if (text.isEmpty()) {
        return complain(err, QStringLiteral("no site given (use --site SITE)"), ExitCode::Usage);
    }
    try {
        store = SiteStore::open(text);
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
