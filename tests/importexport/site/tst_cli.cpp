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
    // A value beyond the absolute limit: the lines the import could not change make it exit 4.
    const QString overflow = dir.filePath("in.csv");
    QFile csv(overflow);
    ASSERT_TRUE(csv.open(QIODevice::WriteOnly));
    csv.write(";SiteID=MILLCREEK\r\n1-101-1-00-04,,SO2 Span Drift Limit,10000000000000\r\n");
    csv.close();
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
        {on("import", {"--user", "admin", overflow}), 4, "Found 1 settings",
         "  line 2: [CSET-0078] Error 6, Overflow: '10000000000000' is greater"},
        // An existing file is replaced only with --force.
        {on("export", {file}), 1, "", "--force replaces it"},
        {on("export", {file, "--force"}), 0, "Exported ", ""},
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

} // namespace
