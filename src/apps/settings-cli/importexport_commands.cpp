#include "importexport_commands.h"

#include "cliutil.h"

#include "common/error.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "importexport/importexporttexts.h"
#include "importexport/settingsimportexport.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

#include <unistd.h>

namespace olvex::cli {

namespace texts = importexporttexts;

namespace {

// Work that runs this long reports its progress on stderr; quicker work says nothing.
constexpr qint64 kProgressAfterMs = 500;

// The site's own message log, echoed on stderr so that each refused line shows where it is run.
class EchoLog final : public MessageLog
{
public:
    EchoLog(std::shared_ptr<MessageLog> site, QTextStream &err)
        : m_site(std::move(site))
        , m_err(err)
    {}
    void LogMessage(int severity, const QString &text) override
    {
        if (m_site)
            m_site->LogMessage(severity, text);
        m_err << text << Qt::endl;
    }
    void LogMessages(const QList<LogLine> &lines) override
    {
        if (m_site)
            m_site->LogMessages(lines);
        for (const LogLine &line : lines)
            m_err << line.text << u'\n';
        m_err.flush();
    }

private:
    std::shared_ptr<MessageLog> m_site;
    QTextStream &m_err;
};

// "export: 40% (40000 of 100000 settings)" at every tenth of the work, once it has run half a
// second, and only to a terminal: a script or a log file gets the result lines alone.
ProgressHandler stderrProgress(const QString &command, const QString &items, QTextStream &err,
                               bool quiet)
{
    if (quiet || !isatty(fileno(stderr)))
        return {};
    auto started = std::make_shared<QElapsedTimer>();
    started->start();
    auto lastTenth = std::make_shared<qint64>(-1);
    return [command, items, &err, lastTenth, started](qint64 done, qint64 total) {
        if (total <= 0 || started->elapsed() < kProgressAfterMs)
            return true;
        const qint64 tenth = done * 10 / total;
        if (tenth != *lastTenth) {
            *lastTenth = tenth;
            err << command << ": " << tenth * 10 << "% (" << done << " of " << total << ' ' << items
                << ')' << Qt::endl;
        }
        return true;
    };
}

QCommandLineOption quietOption()
{
    return QCommandLineOption(QStringLiteral("quiet"), QStringLiteral("Prints no progress lines."));
}

void print(QTextStream &out, const QString &text)
{
    out << text << Qt::endl;
}

QCommandLineOption userOption(const QString &description, const QString &defaultValue = {})
{
    return QCommandLineOption(QStringLiteral("user"), description, QStringLiteral("USER"),
                              defaultValue);
}

} // namespace

int exportCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    parser.addOption(userOption(QStringLiteral("Reads as this user (default viewer)."),
                                QStringLiteral("viewer")));
    const QCommandLineOption force(QStringLiteral("force"),
                                   QStringLiteral("Replaces FILE when it exists already."));
    parser.addOption(force);
    parser.addOption(quietOption());
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Saves every setting of the site to a settings "
                                                  "CSV file (Windows-1252, CR LF)."),
                                   QStringLiteral("FILE"), 1, 1, out, err)) {
        return *done;
    }
    const QString fileName = parser.positionalArguments().constFirst();
    if (QFileInfo::exists(fileName) && !parser.isSet(force))
        return complain(err, u'\'' + fileName + u"' exists already; --force replaces it",
                        ExitCode::Failed);
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok)
        return code;
    try {
        auto data = std::make_shared<SiteDataInterface>(
            store, HostSession{parser.value(QStringLiteral("user"))});
        SettingsImportExport transfer(data, std::make_shared<EchoLog>(data->MessageLog(), err));
        transfer.setProgressHandler(stderrProgress(QStringLiteral("export"),
                                                   QStringLiteral("settings"), err,
                                                   parser.isSet(QStringLiteral("quiet"))));
        ExportCounts counts;
        if (!transfer.ExportSettings(fileName, counts)) {
            print(out, texts::exportFailed(transfer.exportErrorText()));
            return ExitCode::Failed;
        }
        print(out, texts::exportSucceeded(fileName, counts));
        if (const QString loss = texts::exportLossNote(counts); !loss.isEmpty())
            print(err, loss);
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

int importCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    parser.addOption(userOption(QStringLiteral("The account making the changes; it needs the "
                                               "privilege to import settings (250).")));
    const QCommandLineOption dryRun(
        QStringLiteral("dry-run"),
        QStringLiteral("Lists what the import would change and which lines it would refuse, "
                       "and changes nothing."));
    parser.addOption(dryRun);
    parser.addOption(quietOption());
    if (auto done = parseArguments(parser, args,
                                   QStringLiteral("Changes every setting whose value in a "
                                                  "settings CSV file differs from the site's."),
                                   QStringLiteral("FILE"), 1, 1, out, err)) {
        return *done;
    }
    if (!parser.isSet(QStringLiteral("user")))
        return complain(err, QStringLiteral("import: no user given (use --user USER)"),
                        ExitCode::Usage);
    const QString fileName = parser.positionalArguments().constFirst();
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok)
        return code;
    try {
        auto data = std::make_shared<SiteDataInterface>(
            store, HostSession{parser.value(QStringLiteral("user"))});
        const auto siteLog = data->MessageLog();
        SettingsImportExport transfer(data, std::make_shared<EchoLog>(siteLog, err));
        transfer.setProgressHandler(stderrProgress(QStringLiteral("import"),
                                                   QStringLiteral("lines"), err,
                                                   parser.isSet(QStringLiteral("quiet"))));
        QString errorText;
        ImportCounts counts;
        if (parser.isSet(dryRun)) {
            ImportPreview preview;
            if (!transfer.ImportSettings(fileName, errorText, counts, &preview)) {
                print(out, texts::importFailed(errorText));
                return ExitCode::Failed;
            }
            out << texts::previewReport(fileName, counts, preview, errorText) << Qt::endl;
            return ExitCode::Ok;
        }
        const auto user = data->GetUser();
        if (!user || !user->HasPrivilege(Privileges::ImportSettings)) {
            const QString name = user ? user->UserName() : parser.value(QStringLiteral("user"));
            print(out, texts::accessDenied(name));
            if (siteLog)
                siteLog->LogMessage(Severity::Error, texts::accessDeniedLogLine(name));
            return ExitCode::Refused;
        }
        if (!transfer.ImportSettings(fileName, errorText, counts)) {
            print(out, texts::importFailed(errorText));
            return ExitCode::Failed;
        }
        print(out, texts::importSummary(fileName, counts, errorText));
        // Lines of a file the site's own export wrote (read-only, blank) are no fault; anything
        // else the file asked for and did not get is named, and the exit code says so.
        QStringList undone;
        for (const ImportRefusal &line : transfer.linesNotChanged()) {
            if (!line.skipped)
                undone << texts::notChangedLine(line);
        }
        if (undone.isEmpty())
            return ExitCode::Ok;
        out << Qt::endl << "Lines not imported:" << Qt::endl;
        for (const QString &line : std::as_const(undone))
            out << "  " << line << Qt::endl;
        return ExitCode::Incomplete;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
