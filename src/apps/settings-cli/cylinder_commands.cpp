#include "cylinder_commands.h"

#include "cliutil.h"

#include "common/error.h"
#include "common/pid.h"
#include "cylinders/cylinderrow.h"
#include "host/calchecks.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"

namespace olvex::cli {

namespace {

// A log that prints each line on stderr: the list's CSET lines (a PID that does not exist).
class ErrorLinesLog final : public MessageLog
{
public:
    explicit ErrorLinesLog(QTextStream &err)
        : m_err(err)
    {}
    void LogMessage(int, const QString &text) override
    {
        m_err << text << '\n';
        m_err.flush();
        ++m_lines;
    }
    int lines() const { return m_lines; }

private:
    QTextStream &m_err;
    int m_lines = 0;
};

QString timeText(const QDateTime &time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : QString();
}

} // namespace

int cylindersCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption list(QStringLiteral("list"),
                                  QStringLiteral("Only these cylinders (PIDs separated by commas), "
                                                 "as a host gives the list control."),
                                  QStringLiteral("PIDS"));
    parser.addOption(list);
    if (auto done = parseArguments(
            parser, args,
            QStringLiteral("Prints the gas cylinders as the cylinder list shows them, one per "
                           "line, tab-separated: PID, the six columns and how soon the cylinder "
                           "expires (when within 30 days or past)."),
            QString(), 0, 0, out, err)) {
        return *done;
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        SiteDataInterface di(store, HostSession{QStringLiteral("viewer")});
        const QDate today = di.Clock()->Now().date();
        ErrorLinesLog log(err);
        ParameterList cylinders;
        if (parser.isSet(list)) {
            const QList<qint32> pids = cylinderListPids(parser.value(list));
            const ParameterList found = di.GetPidDirectory()->GetPids(pids);
            for (qsizetype i = 0; i < pids.size(); ++i) {
                if (found.value(i)) {
                    cylinders.append(found[i]);
                } else {
                    log.LogMessage(Severity::Error, u"CSET-0003: can't load cylinder "
                                                        + FormatPid(pids[i])
                                                        + u"; PID does not exist");
                }
            }
        } else {
            cylinders
                = di.GetPidsOfTypesWith({ParameterTypes::GasCylinder}, cylinderRowAttributes());
        }
        out << "PID\t" << cylinderColumns().join(u'\t') << "\tExpiry\n";
        for (const ParameterPtr &cylinder : std::as_const(cylinders)) {
            const CylinderRow row = cylinderRow(*cylinder, today);
            out << FormatPid(cylinder->PidNumber()) << '\t' << row.cells.join(u'\t') << '\t'
                << expiryNote(row.daysToExpiry) << '\n';
        }
        if (cylinders.isEmpty()) {
            out << "No cylinders\n";
        }
        out.flush();
        return log.lines() == 0 ? ExitCode::Ok : ExitCode::Failed;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

int checksCommand(const QStringList &args, QTextStream &out, QTextStream &err)
{
    QCommandLineParser parser;
    parser.addOption(siteOption());
    const QCommandLineOption cylinder(QStringLiteral("cylinder"),
                                      QStringLiteral("Only the checks made with this cylinder."),
                                      QStringLiteral("PID"));
    parser.addOption(cylinder);
    if (auto done = parseArguments(
            parser, args,
            QStringLiteral("Prints the calibration-check records, oldest first, tab-separated, "
                           "with the cylinder data each was made with."),
            QString(), 0, 0, out, err)) {
        return *done;
    }
    qint32 pid = 0;
    if (parser.isSet(cylinder)) {
        pid = ParsePid(parser.value(cylinder));
        if (pid == 0) {
            return complain(
                err, u"checks: --cylinder wants a PID, not '" + parser.value(cylinder) + u'\'',
                ExitCode::Usage);
        }
    }
    std::shared_ptr<SiteStore> store;
    if (const int code = openSite(parser, err, store); code != ExitCode::Ok) {
        return code;
    }
    try {
        if (pid != 0 && !store->parameterExists(pid)) {
            return complain(err, u"PID " + FormatPid(pid) + u" is not defined", ExitCode::Failed);
        }
        out << "ID\tCal PID\tCylinder PID\tStarted\tEnded\tResult\tCylinder ID\tExpiration Date"
               "\tEPA Vendor ID\tGas Codes\n";
        for (const CalCheckRecord &check : calCheckRecords(*store, pid)) {
            out << check.id << '\t' << FormatPid(check.calPid) << '\t'
                << FormatPid(check.cylinderPid) << '\t' << timeText(check.started) << '\t'
                << timeText(check.ended) << '\t' << check.result << '\t' << check.cylinderId << '\t'
                << (check.expiration.isValid()
                        ? check.expiration.toString(QStringLiteral("yyyy-MM-dd"))
                        : QString())
                << '\t' << check.vendorId << '\t' << check.gasCodes << '\n';
        }
        out.flush();
        return ExitCode::Ok;
    } catch (...) {
        return complain(err, currentError().description, ExitCode::Failed);
    }
}

} // namespace olvex::cli
