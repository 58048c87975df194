// olvex-settings as an operator runs it: exit codes, its one-line complaints, and the
// acceptance path (init-demo, info, list, get, set).
#include "testsite.h"

#include <QFile>

using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

// Runs olvex-settings with the words of line, "@" standing for site, then the arguments of more.
ProgramRun cli(const QString &line, const QString &site = {}, const QStringList &more = {})
{
    QStringList arguments = line.split(u' ', Qt::SkipEmptyParts);
    arguments.replaceInStrings(u"@"_s, site);
    return runProgram(QStringLiteral(OLVEX_SETTINGS_CLI), arguments + more);
}

class CliTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const ProgramRun init = cli(u"init-demo --site @"_s, m_site);
        ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
    }
    ProgramRun run(const QString &line, const QStringList &more = {})
    {
        return cli(line, m_site, more);
    }
    SitePlace m_place{Backend::Sqlite};
    QString m_site = m_place.filePath();
};

TEST(Cli, BadSitesAndUsageErrorsFailWithClearLines)
{
    for (const char *site : {"/etc/passwd", "/no/such/site.db"}) {
        const ProgramRun run = cli(u"info --site @"_s, QString::fromUtf8(site));
        EXPECT_EQ(run.exitCode, 1) << site;
        EXPECT_TRUE(run.out.isEmpty()) << site;
        EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(u"olvex-settings: ")) << run.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(u"/no/such/site.db"_s));

    for (const char *line :
         {"", "frobnicate", "info", "info --site", "info --bogus", "get --site x.db",
          "get --site x.db not-a-pid", "set --site x.db 1-101-1-00-01 5",
          "init-demo --site x.db --scale many"}) {
        const ProgramRun run = cli(QString::fromUtf8(line));
        EXPECT_EQ(run.exitCode, 2) << line;
        EXPECT_FALSE(run.err.isEmpty()) << line;
    }
    EXPECT_FALSE(QFile::exists(u"x.db"_s));
    for (const char *line : {"--help", "info --help", "set --help", "init-demo --help"}) {
        const ProgramRun run = cli(QString::fromUtf8(line));
        EXPECT_EQ(run.exitCode, 0) << line;
        EXPECT_TRUE(run.out.startsWith(u"Usage: olvex-settings")) << run.out.toStdString();
    }
}

TEST_F(CliTest, InfoListAndGetShowTheDemoSite)
{
    ProgramRun info = run(u"info --site @"_s);
    ASSERT_EQ(info.exitCode, 0) << info.err.toStdString();
    EXPECT_EQ(info.out,
              u"site: MILLCREEK\ntype 2: 30\ntype 4: 206\ntype 5: 31\ntype 62: 4\ntype 79: 4\n"_s);

    const ProgramRun list = run(u"list --site @ --type 79"_s);
    ASSERT_EQ(list.exitCode, 0);
    const QStringList lines = list.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines.first(), u"0-201-7-00-01\t79\tCylinder A (SO2/NO/CO2 high)"_s);

    // Values as the settings list shows them, whichever way the PID is written.
    const ProgramRun get
        = run(u"get --site @ 1-101-1-00-01 110110006 [1-101-1-00-03]"_s, {u"1 101 1 00 14"_s});
    ASSERT_EQ(get.exitCode, 0) << get.err.toStdString();
    EXPECT_EQ(get.out, u"1-101-1-00-01\t500\n1-101-1-00-06\t<Null>\n1-101-1-00-03\tUpdating...\n"
                       u"1-101-1-00-14\t(Write-Only)\n"_s);
    const ProgramRun undefined = run(u"get --site @ 0-301-1-00-99"_s);
    EXPECT_EQ(undefined.exitCode, 1);
    EXPECT_EQ(undefined.out, u"0-301-1-00-99\tN/A\n"_s);

    // A site is replaced only with --force.
    const ProgramRun again = run(u"init-demo --site @"_s);
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains(u"--force")) << again.err.toStdString();
    EXPECT_EQ(run(u"init-demo --site @ --force --site-id RIVER"_s).exitCode, 0);
    EXPECT_TRUE(run(u"info --site sqlite:@"_s).out.startsWith(u"site: RIVER\n"));
}

TEST_F(CliTest, SetChecksPrivilegeChangeabilityAndLimits)
{
    const std::tuple<const char *, int, const char *> cases[] = {
        {"viewer 1-101-1-00-01 450", 3,
         "Access denied. Account 'viewer' does not have privileges."},
        {"operator 1-101-1-00-02 900", 1, "cannot be changed"},
        {"operator 1-101-1-00-01 abc", 1, "not a number"},
        {"operator 1-101-1-00-01 1000000000000", 1, "greater than the maximum value"},
        {"operator 1-101-1-00-01 1200", 1, "recommended maximum"},
        {"operator 1-101-1-00-10 perhaps", 1, "neither Yes nor No"},
        {"operator 1-101-1-00-08 25:99", 1, "not a date or a time"},
        {"operator 0-301-1-00-99 1", 1, "not defined"},
        {"operator 1-101-0-00-01 1", 1, "not a setting"},
        {"nobody 1-101-1-00-01 1", 1, "no user 'nobody'"},
    };
    for (const auto &[userPidValue, exitCode, errPart] : cases) {
        const ProgramRun set = run(u"set --site @ --user "_s + QString::fromUtf8(userPidValue));
        EXPECT_EQ(set.exitCode, exitCode) << userPidValue;
        EXPECT_TRUE(set.err.contains(QString::fromUtf8(errPart))) << set.err.toStdString();
        EXPECT_EQ(set.err.count(u'\n'), 1) << set.err.toStdString();
    }
    // None of them queued anything: the span still reads its value.
    EXPECT_EQ(run(u"get --site @ 1-101-1-00-01 1-101-1-00-10"_s).out,
              u"1-101-1-00-01\t500\n1-101-1-00-10\tYes\n"_s);

    for (const char *accepted :
         {"1-101-1-00-01 450", "1-101-1-00-10 no", "1-101-1-00-16 1150 --confirm"}) {
        const ProgramRun set
            = run(u"set --site @ --user operator "_s + QString::fromUtf8(accepted));
        EXPECT_EQ(set.exitCode, 0) << set.err.toStdString();
        EXPECT_EQ(set.out, QString::fromUtf8(accepted).section(u' ', 0, 0) + u"\tUpdating...\n");
    }
}

} // namespace
