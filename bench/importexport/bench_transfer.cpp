// Export and import of a 100,000-setting SQLite site against the sqlite3 command line on the
// same data:
// - export_vs_sqlite3_csv: ExportSettings (opening the site included) against sqlite3 writing
//   the same columns (PID, units, name, value, default, changeable) as CSV;
// - import_unchanged_vs_sqlite3_import: ImportSettings of the site's own export, which changes
//   nothing, against sqlite3 .import of that file into a table.
// Both sides start from a closed database, as the command line does.
#include "benchmain.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"
#include "host/sitestore.h"
#include "importexport/settingsimportexport.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

using namespace olvex;

namespace {

constexpr int kSettings = 100000;
// Runs of each side within one timed iteration: a run takes a good part of a second.
constexpr int kRuns = 3;

struct BenchSite
{
    QTemporaryDir dir;
    QString database;
    QString exported; // the site's own export, for the import
    int exportedCount = 0;

    BenchSite()
    {
        if (!dir.isValid())
            std::abort();
        database = dir.filePath(QStringLiteral("site.db"));
        exported = dir.filePath(QStringLiteral("site.csv"));
        DemoOptions options;
        options.scale = kSettings;
        createDemoSite(database, options);
        ExportCounts counts;
        if (!exportSite(exported, counts))
            std::abort();
        exportedCount = counts.count;
    }

    bool exportSite(const QString &file, ExportCounts &counts) const
    {
        auto data = std::make_shared<SiteDataInterface>(SiteStore::open(database),
                                                        HostSession{QStringLiteral("admin")});
        SettingsImportExport transfer(data, nullptr);
        return transfer.ExportSettings(file, counts);
    }
};

const BenchSite &site()
{
    static const BenchSite instance;
    return instance;
}

// Runs sqlite3 with the arguments; stdout to outFile when given. Empty on success.
QString runSqlite(const QStringList &arguments, const QString &outFile = {})
{
    QProcess process;
    if (!outFile.isEmpty())
        process.setStandardOutputFile(outFile, QIODevice::Truncate);
    else
        process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral("sqlite3"), arguments);
    if (!process.waitForFinished(-1))
        return process.errorString();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringLiteral("sqlite3 exited with ") + QString::number(process.exitCode());
    return {};
}

void exportCandidate(benchmark::State &state)
{
    const BenchSite &s = site();
    const QString out = s.dir.filePath(QStringLiteral("candidate.csv"));
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            ExportCounts counts;
            if (!s.exportSite(out, counts) || counts.count != s.exportedCount) {
                state.SkipWithError("export failed");
                return;
            }
        }
    }
    state.counters["settings"] = s.exportedCount;
}

void exportBaseline(benchmark::State &state)
{
    const BenchSite &s = site();
    const QString out = s.dir.filePath(QStringLiteral("baseline.csv"));
    const QString query
        = QStringLiteral("SELECT p.pid, p.units_text, p.name, v.val, d.val, c.val FROM parameters p"
                         " LEFT JOIN current_values v ON v.pid = p.pid"
                         " LEFT JOIN attributes d ON d.pid = p.pid AND d.number = -19"
                         " LEFT JOIN attributes c ON c.pid = p.pid AND c.number = -10"
                         " WHERE p.ptype = 4 ORDER BY p.pid");
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            const QString error = runSqlite({QStringLiteral("-csv"), s.database, query}, out);
            if (!error.isEmpty()) {
                state.SkipWithError(error.toStdString().c_str());
                return;
            }
        }
    }
}

void importCandidate(benchmark::State &state)
{
    const BenchSite &s = site();
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            auto data = std::make_shared<SiteDataInterface>(SiteStore::open(s.database),
                                                            HostSession{QStringLiteral("admin")});
            SettingsImportExport transfer(data, nullptr);
            QString errorText;
            ImportCounts counts;
            if (!transfer.ImportSettings(s.exported, errorText, counts)) {
                state.SkipWithError(errorText.toStdString().c_str());
                return;
            }
            if (counts.modified != 0 || counts.failures != 0) {
                // The file is the site's own: a change means this is not the figure asked for.
                std::fprintf(stderr, "unchanged import changed %d settings\n", counts.modified);
                state.SkipWithError("the unchanged import changed settings");
                return;
            }
            state.counters["not_changed"] = counts.notModified;
        }
    }
}

void importBaseline(benchmark::State &state)
{
    const BenchSite &s = site();
    const QString target = s.dir.filePath(QStringLiteral("import.db"));
    for (auto _ : state) {
        for (int run = 0; run < kRuns; ++run) {
            const QString error = runSqlite(
                {target, QStringLiteral("DROP TABLE IF EXISTS t"),
                 QStringLiteral("CREATE TABLE t (pid TEXT, unit TEXT, setting TEXT, value TEXT, "
                                "dflt TEXT)"),
                 QStringLiteral(".import --csv --skip 3 '") + s.exported + QStringLiteral("' t")});
            if (!error.isEmpty()) {
                state.SkipWithError(error.toStdString().c_str());
                return;
            }
        }
    }
}

} // namespace

BENCHMARK(exportCandidate)->Name("export_vs_sqlite3_csv/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(exportBaseline)->Name("export_vs_sqlite3_csv/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(importCandidate)
    ->Name("import_unchanged_vs_sqlite3_import/candidate")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(importBaseline)
    ->Name("import_unchanged_vs_sqlite3_import/baseline")
    ->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv); // Qt SQL and QProcess want one
    // One timed iteration per side. The library would otherwise repeat a side until it has used
    // half a second of this process's CPU, which a side spent in sqlite3 never does. Given as a
    // default flag rather than per benchmark, so that the names stay "NAME/candidate" and
    // "NAME/baseline"; a --benchmark_min_time on the command line still wins.
    // Five repetitions of each side: the figure is their medians' ratio (bench/run.sh), as a
    // run of a few tenths of a second on a shared machine varies by several percent.
    std::vector<char *> arguments(argv, argv + argc);
    char minTime[] = "--benchmark_min_time=0.000000001";
    char repetitions[] = "--benchmark_repetitions=5";
    arguments.insert(arguments.begin() + 1, {minTime, repetitions});
    return olvex::bench::runBenchmarks(int(arguments.size()), arguments.data());
}
