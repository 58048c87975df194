// olvex-settings export and import as a user runs them: texts on stdout, exit codes.
#include "host/demosite.h"
#include "importexport/importexport_test_util.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::testutil;

namespace {

struct CliRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

CliRun runSettings(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(OLVEX_SETTINGS_PROGRAM), arguments);
    CliRun run;
    if (!process.waitForFinished(60000)) {
        ADD_FAILURE() << "olvex-settings did not finish: " << process.errorString().toStdString();
        return run;
    }
    run.exitCode = process.exitCode();
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

class CliTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        createDemoSite(site);
    }
    QTemporaryDir dir;
    QString site = dir.filePath("site.db");
    QString file = dir.filePath("settings.csv");
};

TEST_F(CliTest, ExportThenImport)
{
    const CliRun exported = runSettings({"export", "--site", site, file});
    EXPECT_EQ(exported.exitCode, 0) << exported.err.toStdString();
    EXPECT_TRUE(exported.out.startsWith("Exported ")) << exported.out.toStdString();
    EXPECT_TRUE(exported.out.contains("settings to '" + file + "'.")) << exported.out.toStdString();
    EXPECT_EQ(fileLines(readBytes(file)).value(0), ";SiteID=MILLCREEK");

    const CliRun imported = runSettings({"import", "--site", site, "--user", "admin", file});
    EXPECT_EQ(imported.exitCode, 0) << imported.err.toStdString();
    EXPECT_TRUE(imported.out.startsWith("Found ")) << imported.out.toStdString();
    EXPECT_TRUE(imported.out.contains("\n\n0 settings were changed.\n"));
    // The refused lines are echoed on stderr as the log has them.
    EXPECT_TRUE(imported.err.contains("[CSET-0072] Cannot import setting. Setting is read-only."));
}

TEST_F(CliTest, ExitCodes)
{
    ASSERT_EQ(runSettings({"export", "--site", site, file}).exitCode, 0);
    const struct
    {
        QStringList arguments;
        int exitCode;
        QString out; // the start of stdout
    } cases[] = {
        {{"import", "--site", site, "--user", "operator", file},
         3,
         "Access denied. Account 'operator' does not have privileges.\n"},
        {{"import", "--site", site, "--user", "admin", dir.filePath("none.csv")},
         1,
         "Failed. [CSET-0060] Cannot import settings. Cannot find '" + dir.filePath("none.csv")
             + "'. [CSET-0062]\n"},
        {{"import", "--site", site, "--user", "operator", "--dry-run", file},
         0,
         "Preview of '" + file + "': nothing has been changed.\n"},
        {{"export", "--site", site, dir.filePath("missing/out.csv")}, 1, "Failed. [CSET-0056]\n"},
        {{"import", "--site", site, file}, 2, ""}, // no user: nothing on stdout
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const CliRun run = runSettings(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
        if (c.out.isEmpty())
            EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
        else
            EXPECT_TRUE(run.out.startsWith(c.out)) << run.out.toStdString();
    }
}

} // namespace
