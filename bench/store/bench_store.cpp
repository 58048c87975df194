// store_read_all_vs_raw_select: every setting's definition and current value read through the
// data interface (a fresh one each time, so nothing comes from a warm cache) on a site of
// 100,000 settings, against one raw SELECT of the same rows through QSqlQuery on the same
// connection.
#include "benchmain.h"
#include "common/vocabulary.h"
#include "host/demosite.h"
#include "host/sitedatainterface.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <memory>

using namespace olvex;

namespace {

constexpr int kSettings = 100000;

struct Site
{
    QTemporaryDir dir;
    std::shared_ptr<SiteStore> store;
};

Site &site()
{
    static Site *instance = [] {
        auto *s = new Site;
        DemoOptions options;
        options.scale = kSettings;
        s->store = createDemoSite(s->dir.filePath(QStringLiteral("bench.db")), options);
        return s;
    }();
    return *instance;
}

const int kAttributes[]
    = {SettingAttr::Readable,        SettingAttr::Changeable,   SettingAttr::DataType,
       SettingAttr::DisplayFormat,   SettingAttr::DefaultValue, SettingAttr::RecommendedLow,
       SettingAttr::RecommendedHigh, SettingAttr::Level,        SettingAttr::ChangePending,
       SettingAttr::AltReadable,     SettingAttr::AltChangeable};

void candidate(benchmark::State &state)
{
    auto store = site().store;
    qint64 rows = 0;
    for (auto _ : state) {
        SiteDataInterface di(store, HostSession(QStringLiteral("viewer")));
        const ParameterList settings = di.GetPidsOfTypes({ParameterTypes::Setting});
        for (const ParameterPtr &p : settings) {
            benchmark::DoNotOptimize(p->GetName(0));
            for (const int number : kAttributes) {
                benchmark::DoNotOptimize(p->GetAttribute(number));
            }
            benchmark::DoNotOptimize(p->GetCurrentValue());
        }
        rows += settings.size();
    }
    state.counters["settings"] = double(rows) / double(state.iterations());
}

void baseline(benchmark::State &state)
{
    auto store = site().store;
    qint64 rows = 0;
    for (auto _ : state) {
        QSqlQuery query(store->sql().database());
        query.setForwardOnly(true);
        query.exec(QStringLiteral(
            "SELECT p.pid, p.name, a.number, a.vkind, a.val, c.vkind, c.val, c.status, c.time"
            " FROM parameters p JOIN attributes a ON a.pid = p.pid"
            " LEFT JOIN current_values c ON c.pid = p.pid"
            " WHERE p.ptype = 4 ORDER BY p.pid, a.number"));
        while (query.next()) {
            for (int column = 0; column < 9; ++column) {
                benchmark::DoNotOptimize(query.value(column));
            }
            ++rows;
        }
    }
    state.counters["rows"] = double(rows) / double(state.iterations());
}

} // namespace

BENCHMARK(candidate)->Name("store_read_all_vs_raw_select/candidate")->Unit(benchmark::kMillisecond);
BENCHMARK(baseline)->Name("store_read_all_vs_raw_select/baseline")->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    site(); // built before any timing starts
    return olvex::bench::runBenchmarks(argc, argv);
}
