// The olvex-das command line: what it refuses, and the one clear line it gives when it cannot
// start.
#include "dastestsite.h"
#include "host/testsite.h"

#include "common/pid.h"
#include "host/demosite.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

using namespace olvex;
using namespace olvex::test;
using testing::HasSubstr;

namespace {

TEST(DasProgram, RefusesABadCommandLineWithUsageCode)
{
    struct Case
    {
        QStringList arguments;
        std::string message;
    };
    const QString site = QStringLiteral("/nonexistent/site.db");
    const QList<Case> cases = {
        {{}, "no site given (--site SITE)"},
        {{QStringLiteral("--drain")}, "no site given (--site SITE)"},
        {{QStringLiteral("--site")}, "Missing value after '--site'"},
        {{QStringLiteral("--site"), QStringLiteral("  ")}, "no site given"},
        {{QStringLiteral("--site"), site, QStringLiteral("--interval"), QStringLiteral("0")},
         "--interval wants a positive number of milliseconds, not '0'"},
        {{QStringLiteral("--site"), site, QStringLiteral("--interval"), QStringLiteral("1s")},
         "--interval wants a positive number of milliseconds, not '1s'"},
        {{QStringLiteral("--site"), site, QStringLiteral("--lease"), QStringLiteral("-5")},
         "--lease wants a positive number of milliseconds, not '-5'"},
        {{QStringLiteral("--site"), site, QStringLiteral("--bogus")}, "Unknown option 'bogus'"},
        {{QStringLiteral("--site"), site, QStringLiteral("extra")}, "unexpected argument 'extra'"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.arguments.join(u' ').toStdString());
        const ProgramRun run = runProgram(dasProgram(), c.arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.err.toStdString(), HasSubstr("olvex-das: " + c.message));
        EXPECT_THAT(run.err.toStdString(), HasSubstr("Try 'olvex-das --help'."));
    }
}

TEST(DasProgram, SiteThatCannotBeOpenedGivesOneLineAndFailureCode)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString notASite = dir.filePath(QStringLiteral("notes.txt"));
    {
        QFile file(notASite);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("not a database\n");
    }
    const QStringList sites
        = {dir.filePath(QStringLiteral("missing.db")), notASite, QStringLiteral("mysql://host/db")};
    for (const QString &site : sites) {
        SCOPED_TRACE(site.toStdString());
        const ProgramRun run
            = runProgram(dasProgram(), {QStringLiteral("--site"), site, QStringLiteral("--drain")});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.err.startsWith(u"olvex-das: ")) << run.err.toStdString();
        EXPECT_EQ(run.err.count(u'\n'), 1) << run.err.toStdString();
    }
}

TEST(DasProgram, HelpNamesTheOptions)
{
    const ProgramRun run = runProgram(dasProgram(), {QStringLiteral("--help")});
    EXPECT_EQ(run.exitCode, 0);
    for (const char *option : {"--site", "--drain", "--interval", "--lease"}) {
        EXPECT_THAT(run.out.toStdString(), HasSubstr(option));
    }
}

// What an operator sees: "Updating..." while the write waits, the new value once the service
// has run.
TEST(DasProgram, DrainAppliesWhatIsPendingAndExits)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString site = dir.filePath(QStringLiteral("site.db"));
    QList<qint32> pids;
    auto store = createServiceSite(site, 2, &pids);
    queueWrites(*store,
                {{pids.at(0), Value(11)}, {pids.at(1), Value(22)}, {pids.at(0), Value(33)}});
    EXPECT_TRUE(store->liveState(pids.at(0)).changePending);

    const ProgramRun run
        = runProgram(dasProgram(), {QStringLiteral("--site"), site, QStringLiteral("--drain")});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.err.count(QStringLiteral(" applied")), 3);
    EXPECT_THAT(run.err.toStdString(), HasSubstr("drained the queue"));
    EXPECT_EQ(store->liveState(pids.at(0)).current.Value, Value(33));
    EXPECT_EQ(store->liveState(pids.at(1)).current.Value, Value(22));
    EXPECT_FALSE(store->liveState(pids.at(0)).changePending);

    // Nothing to do: a drain comes back at once.
    const ProgramRun again
        = runProgram(dasProgram(), {QStringLiteral("--site"), site, QStringLiteral("--drain")});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.err.count(QStringLiteral(" applied")), 0);
}

// The operator's round trip through the command line: a changed setting reads "Updating..."
// until the service has run, then the new value.
TEST(DasProgram, SettingReadsUpdatingUntilTheServiceHasRun)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString site = dir.filePath(QStringLiteral("demo.db"));
    createDemoSite(site);
    const QString pid = FormatPid(DemoPids::unit1SO2Span());
    const QString cli = QStringLiteral(OLVEX_SETTINGS_CLI);
    const auto get = [&] {
        return runProgram(cli, {QStringLiteral("get"), QStringLiteral("--site"), site, pid})
            .out.trimmed();
    };
    const QString before = get();
    ASSERT_FALSE(before.contains(u"Updating...")) << before.toStdString();

    const ProgramRun set = runProgram(cli, {QStringLiteral("set"), QStringLiteral("--site"), site,
                                            QStringLiteral("--user"), QStringLiteral("operator"),
                                            pid, QStringLiteral("321")});
    ASSERT_EQ(set.exitCode, 0) << set.err.toStdString();
    EXPECT_EQ(get(), pid + u"\tUpdating...");

    const ProgramRun das
        = runProgram(dasProgram(), {QStringLiteral("--site"), site, QStringLiteral("--drain")});
    ASSERT_EQ(das.exitCode, 0) << das.err.toStdString();
    EXPECT_EQ(get(), pid + u"\t321");
}

} // namespace
