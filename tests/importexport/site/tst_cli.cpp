// olvex-settings export and import as a user runs them: texts on stdout, exit codes.
#include "host/demosite.h"
#include "host/testsite.h"

#include <gtest/gtest.h>

using namespace olvex;
using namespace olvex::test;

namespace {

TEST(SettingsCli, ExportImportAndTheirExitCodes)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString site = dir.filePath("site.db");
    const QString file = dir.filePath("settings.csv");
    createDemoSite(site);
    const struct
    {
        QStringList arguments;
        int exitCode;
        QString out;              // the start of stdout
        QString part = QString(); // a part of stdout or stderr
    } cases[] = {
        {{"export", "--site", site, file}, 0, "Exported ", "settings to '" + file + "'."},
        // The refused lines are echoed on stderr as the log has them.
        {{"import", "--site", site, "--user", "admin", file},
         0,
         "Found ",
         "[CSET-0072] Cannot import setting. Setting is read-only."},
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
        const ProgramRun run = runProgram(QStringLiteral(OLVEX_SETTINGS_PROGRAM), c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
        EXPECT_TRUE(c.out.isEmpty() ? run.out.isEmpty() : run.out.startsWith(c.out))
            << run.out.toStdString();
        EXPECT_TRUE(QString(run.out + run.err).contains(c.part)) << run.err.toStdString();
    }
}

} // namespace
