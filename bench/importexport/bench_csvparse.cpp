// ParseCsvLine against libcsv over the same 100,000 mixed lines. Both sides hand back every
// field as a string of its own (QString here, std::string there), as the import needs them.
#include "benchlines.h"
#include "importexport/csvline.h"

#include <benchmark/benchmark.h>
#include <csv.h>

#include <cstdlib>

using namespace olvex;

namespace {

const QStringList &qtLines()
{
    static const QStringList lines = bench::mixedCsvLines();
    return lines;
}
const std::vector<std::string> &stdLines()
{
    static const std::vector<std::string> lines = bench::toStdLines(qtLines());
    return lines;
}

void candidate(benchmark::State &state)
{
    const QStringList &lines = qtLines();
    for (auto _ : state) {
        qsizetype fields = 0;
        QString error;
        for (const QString &line : lines) {
            const auto parsed = ParseCsvLine(line, error);
            fields += parsed ? parsed->size() : 0;
        }
        benchmark::DoNotOptimize(fields);
    }
    state.SetItemsProcessed(state.iterations() * lines.size());
}

struct Record
{
    std::vector<std::string> fields;
    size_t total = 0;
};

void onField(void *text, size_t length, void *data)
{
    auto *record = static_cast<Record *>(data);
    record->fields.emplace_back(static_cast<const char *>(text), length);
}

void onRecord(int, void *data)
{
    auto *record = static_cast<Record *>(data);
    record->total += record->fields.size();
    record->fields.clear();
}

void baseline(benchmark::State &state)
{
    const std::vector<std::string> &lines = stdLines();
    csv_parser parser;
    if (csv_init(&parser, 0) != 0)
        std::abort();
    Record record;
    for (auto _ : state) {
        record.total = 0;
        for (const std::string &line : lines) {
            csv_parse(&parser, line.data(), line.size(), onField, onRecord, &record);
            csv_fini(&parser, onField, onRecord, &record);
        }
        benchmark::DoNotOptimize(record.total);
    }
    csv_free(&parser);
    state.SetItemsProcessed(state.iterations() * qsizetype(lines.size()));
}

} // namespace

BENCHMARK(candidate)->Name("csvparse_vs_libcsv/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(baseline)->Name("csvparse_vs_libcsv/baseline")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
