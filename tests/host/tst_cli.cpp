// olvex-settings as an operator runs it: exit codes, its one-line complaints, and the
// acceptance path (init-demo, info, get, set).
#include "testsite.h"

#include <QFile>

using namespace olvex;
using namespace olvex::test;

namespace {

ProgramRun cli(const QStringList &arguments)
{
    return runProgram(QStringLiteral(OLVEX_SETTINGS_CLI), arguments);
}

class CliTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_site = m_place.filePath();
        const ProgramRun init
            = cli({QStringLiteral("init-demo"), QStringLiteral("--site"), m_site});
        ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
    }
    SitePlace m_place{Backend::Sqlite};
    QString m_site;
};

TEST(Cli, NonSiteFailsWithOneClearLine)
{
    for (const char *site : {"/etc/passwd", "mysql://x/y", "/no/such/site.db"}) {
        const ProgramRun run
            = cli({QStringLiteral("info"), QStringLiteral("--site"), QString::fromUtf8(site)});
        EXPECT_EQ(run.exitCode, 1) << site;
        EXPECT_TRUE(run.out.isEmpty()) << site;
        EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(u"olvex-settings: ")) << run.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(QStringLiteral("/no/such/site.db")));
}

TEST(Cli, UsageErrorsExitTwo)
{
    const QList<QStringList> runs{
        {},
        {QStringLiteral("frobnicate")},
        {QStringLiteral("info")},
        {QStringLiteral("info"), QStringLiteral("--site")},
        {QStringLiteral("info"), QStringLiteral("--bogus")},
        {QStringLiteral("get"), QStringLiteral("--site"), QStringLiteral("x.db")},
        {QStringLiteral("get"), QStringLiteral("--site"), QStringLiteral("x.db"),
         QStringLiteral("not-a-pid")},
        {QStringLiteral("set"), QStringLiteral("--site"), QStringLiteral("x.db"),
         QStringLiteral("1-101-1-00-01"), QStringLiteral("5")},
        {QStringLiteral("init-demo"), QStringLiteral("--site"), QStringLiteral("x.db"),
         QStringLiteral("--scale"), QStringLiteral("many")},
    };
    for (const QStringList &arguments : runs) {
        const ProgramRun run = cli(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(u' ').toStdString();
        EXPECT_FALSE(run.err.isEmpty());
    }
    EXPECT_FALSE(QFile::exists(QStringLiteral("x.db")));
    for (const char *command : {"--help", "info", "set", "init-demo"}) {
        QStringList arguments{QString::fromUtf8(command)};
        if (arguments.first() != u"--help") {
            arguments.append(QStringLiteral("--help"));
        }
        const ProgramRun run = cli(arguments);
        EXPECT_EQ(run.exitCode, 0) << command;
        EXPECT_TRUE(run.out.startsWith(u"Usage: olvex-settings")) << run.out.toStdString();
    }
}

TEST_F(CliTest, InfoCountsTheDemoSite)
{
    const ProgramRun run = cli({QStringLiteral("info"), QStringLiteral("--site"), m_site});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("site: MILLCREEK\ntype 2: 30\ntype 4: 206\ntype 5: 31\n"
                                      "type 62: 4\ntype 79: 4\n"));

    const ProgramRun again = cli({QStringLiteral("init-demo"), QStringLiteral("--site"), m_site});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(again.err.contains(u"--force")) << again.err.toStdString();
    EXPECT_EQ(cli({QStringLiteral("init-demo"), QStringLiteral("--site"), m_site,
                   QStringLiteral("--force"), QStringLiteral("--site-id"), QStringLiteral("RIVER")})
                  .exitCode,
              0);
    EXPECT_TRUE(cli({QStringLiteral("info"), QStringLiteral("--site"), u"sqlite:" + m_site})
                    .out.startsWith(u"site: RIVER\n"));
}

TEST_F(CliTest, ListShowsPidTypeAndName)
{
    const ProgramRun run = cli({QStringLiteral("list"), QStringLiteral("--site"), m_site,
                                QStringLiteral("--type"), QStringLiteral("79")});
    ASSERT_EQ(run.exitCode, 0);
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines.first(), QStringLiteral("0-201-7-00-01\t79\tCylinder A (SO2/NO/CO2 high)"));
}

TEST_F(CliTest, GetShowsValuesAsTheSettingsListDoes)
{
    const ProgramRun run
        = cli({QStringLiteral("get"), QStringLiteral("--site"), m_site,
               QStringLiteral("1-101-1-00-01"), QStringLiteral("110110006"),
               QStringLiteral("[1-101-1-00-03]"), QStringLiteral("1 101 1 00 14")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("1-101-1-00-01\t500\n"
                                      "1-101-1-00-06\t<Null>\n"
                                      "1-101-1-00-03\tUpdating...\n"
                                      "1-101-1-00-14\t(Write-Only)\n"));
    const ProgramRun undefined = cli(
        {QStringLiteral("get"), QStringLiteral("--site"), m_site, QStringLiteral("0-301-1-00-99")});
    EXPECT_EQ(undefined.exitCode, 1);
    EXPECT_EQ(undefined.out, QStringLiteral("0-301-1-00-99\tN/A\n"));
}

TEST_F(CliTest, SetChecksPrivilegeChangeabilityAndLimits)
{
    struct Case
    {
        const char *user;
        const char *pid;
        const char *value;
        int exitCode;
        const char *errPart;
    };
    const Case cases[] = {
        {"viewer", "1-101-1-00-01", "450", 3,
         "Access denied. Account 'viewer' does not have privileges."},
        {"operator", "1-101-1-00-02", "900", 1, "cannot be changed"},
        {"operator", "1-101-1-00-01", "abc", 1, "not a number"},
        {"operator", "1-101-1-00-01", "1000000000000", 1, "greater than the maximum value"},
        {"operator", "1-101-1-00-01", "1200", 1, "recommended maximum"},
        {"operator", "1-101-1-00-10", "perhaps", 1, "neither Yes nor No"},
        {"operator", "1-101-1-00-08", "25:99", 1, "not a date or a time"},
        {"operator", "0-301-1-00-99", "1", 1, "not defined"},
        {"operator", "1-101-0-00-01", "1", 1, "not a setting"},
        {"nobody", "1-101-1-00-01", "1", 1, "no user 'nobody'"},
    };
    for (const Case &c : cases) {
        const ProgramRun run = cli({QStringLiteral("set"), QStringLiteral("--site"), m_site,
                                    QStringLiteral("--user"), QString::fromUtf8(c.user),
                                    QString::fromUtf8(c.pid), QString::fromUtf8(c.value)});
        EXPECT_EQ(run.exitCode, c.exitCode) << c.pid << " " << c.value;
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(c.errPart))) << run.err.toStdString();
        EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
    }
    // None of them queued anything: the span still reads its value.
    const ProgramRun get = cli({QStringLiteral("get"), QStringLiteral("--site"), m_site,
                                QStringLiteral("1-101-1-00-01"), QStringLiteral("1-101-1-00-10")});
    EXPECT_EQ(get.out, QStringLiteral("1-101-1-00-01\t500\n1-101-1-00-10\tYes\n"));

    for (const QStringList &accepted :
         {QStringList{QStringLiteral("1-101-1-00-01"), QStringLiteral("450")},
          QStringList{QStringLiteral("1-101-1-00-10"), QStringLiteral("no")},
          QStringList{QStringLiteral("1-101-1-00-16"), QStringLiteral("1150"),
                      QStringLiteral("--confirm")}}) {
        const ProgramRun run
            = cli(QStringList{QStringLiteral("set"), QStringLiteral("--site"), m_site,
                              QStringLiteral("--user"), QStringLiteral("operator")}
                  + accepted);
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        EXPECT_EQ(run.out, accepted.first() + u"\tUpdating...\n");
    }
}

} // namespace
