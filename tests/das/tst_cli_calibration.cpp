// olvex-settings over the calibration and cylinder components: what each command prints and
// its exit code, on a demo site.
#include "dastestsite.h"
#include "host/testsite.h"

using namespace olvex::test;
using namespace Qt::StringLiterals;

TEST(CliCalibration, CommandsAnswerFromTheDemoSite)
{
    SitePlace place{Backend::Sqlite};
    const QString site = place.filePath();
    const auto run = [&](const char *line) {
        QStringList arguments = QString::fromUtf8(line).split(u' ', Qt::SkipEmptyParts);
        arguments.replaceInStrings(u"@"_s, site);
        // "das ..." runs the service, the rest the command line.
        if (arguments.first() == u"das") {
            return runProgram(dasProgram(), arguments.mid(1));
        }
        return runProgram(QStringLiteral(OLVEX_SETTINGS_CLI), arguments);
    };
    ASSERT_EQ(run("init-demo --site @").exitCode, 0);

    struct Case
    {
        const char *line;
        int exitCode;
        const char *part; // of stdout when it succeeds, else of stderr
    };
    const Case cases[] = {
        {"cal list --site @", 0, "1-101-3-00-01\t(Unit 1) SO2/NOx Cal\n"},
        {"cal show --site @ 1-101-3-00-01", 0, "\nCalStartTimeUser\t06:50\n"},
        {"cal show --site @ 1-101-1-00-01", 1, "is not a calibration parameter"},
        {"cal set --site @ --user viewer 1-101-3-00-01 CalStartTime=00:03", 3,
         "Account 'viewer' does not have privileges."},
        {"cal set --site @ 1-101-3-00-01 CalStartTime=25:00", 1, "is not a time of day"},
        {"cal set --site @ 1-101-3-00-01 CalStartTime=00:03", 0,
         "please allow up to 2 minutes for the changes to take effect."},
        {"cal abort --site @ 2-102-3-00-01", 1,
         "CSET-0080: Can't write to channel; writing to Q2 multivalue CSV channel is not allowed "
         "(ChannelID=34, PID=2-102-3-00-01)"},
        {"cal start --site @ 1-101-3-00-01", 0, "posted the manual cal start of 1-101-3-00-01"},
        {"das --site @ --drain", 0, ""},
        {"log --site @ --auto-cal", 0,
         "1-101-3-00-01\t** user requested a manual cal start (CSET-0029)\toperator"},
        {"cal pending --site @", 0, "Reason For Calibration: Daily calibration"},
        {"cylinders --site @", 0, "CC412233\t8 Jan 2028\tSO2 450.5 ppm,  NO 250 ppm,  CO2 12 %"},
        {"checks --site @ --cylinder 0-201-7-00-01", 0, "\t0-201-7-00-01\t2026-"},
        {"checks --site @ --cylinder 0-201-7-00-09", 1, "is not defined"},
        {"messages --site @", 0, "no system messages"},
    };
    for (const Case &c : cases) {
        const ProgramRun result = run(c.line);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.line << '\n' << result.err.toStdString();
        const QString &text = c.exitCode == 0 ? result.out : result.err;
        EXPECT_TRUE(text.contains(QString::fromUtf8(c.part))) << c.line << '\n'
                                                              << text.toStdString();
    }
}
