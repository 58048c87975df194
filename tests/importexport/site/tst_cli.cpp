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
    const QString none = dir.filePath("none.csv");
    const auto on = [&](const QString &verb, const QStringList &rest) {
        return QStringList{verb, "--site", site} + rest;
    };
    // Arguments, exit code, the start of stdout and a part of stdout or stderr.
    const std::tuple<QStringList, int, QString, QString> cases[] = {
        {on("export", {file}), 0, "Exported ", "settings to '" + file + "'."},
        // The refused lines are echoed on stderr as the log has them.
        {on("import", {"--user", "admin", file}), 0, "Found ", "[CSET-0072] "},
        // The panel's test pins the refusal's whole text.
        {on("import", {"--user", "operator", file}), 3, "Access denied. ", ""},
        {on("import", {"--user", "admin", none}), 1,
         "Failed. [CSET-0060] Cannot import settings. Cannot find '" + none + "'. [CSET-0062]\n",
         ""},
        {on("import", {"--user", "operator", "--dry-run", file}), 0,
         "Preview of '" + file + "': nothing has been changed.", ""},
        {on("export", {file + "/out.csv"}), 1, "Failed. [CSET-0056]\n'" + file + "/out.csv': ", ""},
        {on("import", {file}), 2, "", ""}, // no user: nothing on stdout
    };
    for (const auto &[arguments, exitCode, out, part] : cases) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const ProgramRun run = runProgram(QStringLiteral(OLVEX_SETTINGS_PROGRAM), arguments);
        EXPECT_EQ(run.exitCode, exitCode) << run.err.toStdString();
        EXPECT_TRUE(out.isEmpty() ? run.out.isEmpty() : run.out.startsWith(out))
            << run.out.toStdString();
        EXPECT_TRUE(QString(run.out + run.err).contains(part)) << run.err.toStdString();
    }
}

// A value beyond the recommended range, one beyond the absolute limit, text in a number and an
// impossible time: the preview sorts them, the import changes only the first and names the
// lines of the other three, and exits 4. An existing export file needs --force.
TEST(SettingsCli, ImportOfValuesNoSettingMayHold)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString site = dir.filePath("site.db");
    const QString file = dir.filePath("in.csv");
    createDemoSite(site);
    QFile csv(file);
    ASSERT_TRUE(csv.open(QIODevice::WriteOnly));
    csv.write(";SiteID=MILLCREEK\r\n1-101-1-00-03,,SO2 Zero Drift Limit,7\r\n"
              "1-101-1-00-04,,SO2 Span Drift Limit,10000000000000\r\n"
              "1-101-1-00-05,,x,abc\r\n1-101-1-00-08,,SO2 Daily Cal Time,25:70:00\r\n");
    csv.close();
    const QString program = QStringLiteral(OLVEX_SETTINGS_PROGRAM);
    const QStringList import{"import", "--site", site, "--user", "admin", file};
    const ProgramRun preview = runProgram(program, import + QStringList{"--dry-run"});
    EXPECT_EQ(preview.exitCode, 0);
    EXPECT_TRUE(preview.out.contains("\n3 would fail\n1 would change, outside the recommended "
                                     "range\n0 would change\n"))
        << preview.out.toStdString();
    const ProgramRun run = runProgram(program, import);
    EXPECT_EQ(run.exitCode, 4) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains("\n1 settings were changed.")) << run.out.toStdString();
    for (const char *line : {"  line 3: [CSET-0078] Error 6, Overflow: '10000000000000' is greater",
                             "  line 4: [CSET-0078] Error 13, Type mismatch: 'abc' is not a number",
                             "  line 5: [CSET-0078] Error 13, Type mismatch: '25:70:00' is not a "
                             "time"})
        EXPECT_TRUE(run.out.contains(QString::fromLatin1(line))) << line;

    const QStringList exportTo{"export", "--site", site, file};
    EXPECT_EQ(runProgram(program, exportTo).exitCode, 1);
    EXPECT_EQ(runProgram(program, exportTo + QStringList{"--force"}).exitCode, 0);
}

} // namespace
