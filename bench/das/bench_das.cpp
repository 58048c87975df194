// Value writes carried out by the service per second on an SQLite site, against the plainest
// write the same store can do: a single-row UPDATE in a transaction of its own. Both commit once
// per item on the same file with the same settings (WAL, synchronous FULL), so the ratio shows
// what claiming, the audit row, the result and the log line cost on top of the commit.
#include "common/pid.h"
#include "das/dasservice.h"
#include "host/sitebuilder.h"
#include "host/sitestore.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace {

// Items per benchmark iteration: the queue is refilled, untimed, between batches.
constexpr int kBatch = 64;
constexpr int kSettings = 64;

struct BenchSite
{
    BenchSite()
    {
        for (int i = 0; i < kSettings; ++i) {
            pids.append(olvex::BuildPid(1, 400, 0, 1, i));
        }
        olvex::SiteInfo info;
        info.siteId = QStringLiteral("BENCH");
        info.name = QStringLiteral("Service benchmark");
        store = olvex::SiteStore::create(
            dir.filePath(QStringLiteral("site.db")), info, false, [&](olvex::SiteStore &site) {
                olvex::SiteBuilder builder(site);
                for (const qint32 pid : pids) {
                    builder.addParameter(pid, u"Setting " + QString::number(pid), 4);
                    builder.setAttribute(pid, -14, olvex::Value(1));
                    builder.setCurrentValue(pid, olvex::Value(0));
                }
                builder.flush();
            });
    }

    QTemporaryDir dir;
    QList<qint32> pids;
    std::shared_ptr<olvex::SiteStore> store;
};

const olvex::Actor kOperator{QStringLiteral("operator"), QStringLiteral("WS-1"),
                             QStringLiteral("10.0.0.1")};

void candidate(benchmark::State &state)
{
    BenchSite site;
    olvex::DasService service(site.store);
    int value = 0;
    for (auto _ : state) {
        state.PauseTiming();
        {
            olvex::Transaction transaction(site.store->sql(),
                                           olvex::SqlConnection::TransactionKind::Write);
            for (int i = 0; i < kBatch; ++i) {
                site.store->queueValueWrite(site.pids.at(i % kSettings), olvex::Value(++value),
                                            kOperator);
            }
            transaction.commit();
        }
        state.ResumeTiming();
        for (int i = 0; i < kBatch; ++i) {
            if (service.runOnce() != 1) {
                state.SkipWithError("a write was not applied");
                return;
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void baseline(benchmark::State &state)
{
    BenchSite site;
    olvex::SqlConnection &sql = site.store->sql();
    int value = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            olvex::Transaction transaction(sql, olvex::SqlConnection::TransactionKind::Write);
            QSqlQuery &update
                = sql.prepared(QStringLiteral("UPDATE current_values SET val = ? WHERE pid = ?"));
            update.addBindValue(QString::number(++value));
            update.addBindValue(site.pids.at(i % kSettings));
            sql.exec(update);
            transaction.commit();
        }
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

} // namespace

BENCHMARK(candidate)->Name("das_apply_vs_raw_update/rate_candidate");
BENCHMARK(baseline)->Name("das_apply_vs_raw_update/rate_baseline");

// The SQL drivers are plugins: they want an application object.
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
