// The service against the plainest writes the same store can do.
//
// das_apply_vs_raw_update: single value writes on a short queue, each carried out as soon as it
// is posted, per second / single-row UPDATE transactions per second. Both commit once per item
// on the same SQLite file with the same settings (WAL, synchronous FULL), so the ratio shows what
// claiming, the audit row, the result and the log line cost on top of the commit.
//
// das_drain_vs_bulk_update (SQLite) and das_drain_pg_vs_bulk_update (PostgreSQL, when
// OLVEX_TEST_PG names a database): the service draining 20,000 queued writes of as many settings,
// what an import of a big site leaves it / one raw transaction that writes the same 20,000
// values and 20,000 audit rows, the physical limit for that work.
#include "benchmain.h"
#include "common/pid.h"
#include "das/dasservice.h"
#include "host/sitebuilder.h"
#include "host/sitestore.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace {

constexpr int kShortSite = 64;
constexpr int kDrained = 20000;

const olvex::Actor kOperator{QStringLiteral("operator"), QStringLiteral("WS-1"),
                             QStringLiteral("10.0.0.1")};

struct BenchSite
{
    // An SQLite file in a temporary folder, or the PostgreSQL database of connection.
    explicit BenchSite(int settings, const QString &connection = QString())
    {
        for (int i = 0; i < settings; ++i) {
            pids.append(olvex::BuildPid(1, 300 + i / 100, 0, 1, i % 100));
        }
        olvex::SiteInfo info;
        info.siteId = QStringLiteral("BENCH");
        info.name = QStringLiteral("Service benchmark");
        store = olvex::SiteStore::create(
            connection.isEmpty() ? dir.filePath(QStringLiteral("site.db")) : connection, info, true,
            [&](olvex::SiteStore &site) {
                olvex::SiteBuilder builder(site);
                for (const qint32 pid : pids) {
                    builder.addParameter(pid, u"Setting " + QString::number(pid), 4);
                    builder.setAttribute(pid, -14, olvex::Value(1));
                    builder.setCurrentValue(pid, olvex::Value(0));
                }
                builder.flush();
            });
    }

    void queueAll(int &value)
    {
        olvex::Transaction transaction(store->sql(), olvex::SqlConnection::TransactionKind::Write);
        for (const qint32 pid : pids) {
            store->queueValueWrite(pid, olvex::Value(++value), kOperator);
        }
        transaction.commit();
    }

    QTemporaryDir dir;
    QList<qint32> pids;
    std::shared_ptr<olvex::SiteStore> store;
};

void applyCandidate(benchmark::State &state)
{
    BenchSite site(kShortSite);
    olvex::DasService service(site.store);
    int value = 0;
    for (auto _ : state) {
        state.PauseTiming();
        site.store->queueValueWrite(site.pids.at(value % kShortSite), olvex::Value(value + 1),
                                    kOperator);
        ++value;
        state.ResumeTiming();
        if (service.runOnce() != 1) {
            state.SkipWithError("the write was not applied on its own");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void applyBaseline(benchmark::State &state)
{
    BenchSite site(kShortSite);
    olvex::SqlConnection &sql = site.store->sql();
    int value = 0;
    for (auto _ : state) {
        olvex::Transaction transaction(sql, olvex::SqlConnection::TransactionKind::Write);
        QSqlQuery &update
            = sql.prepared(QStringLiteral("UPDATE current_values SET val = ? WHERE pid = ?"));
        update.addBindValue(QString::number(++value));
        update.addBindValue(site.pids.at(value % kShortSite));
        sql.exec(update);
        transaction.commit();
    }
    state.SetItemsProcessed(state.iterations());
}

void drainCandidate(benchmark::State &state, const QString &connection)
{
    BenchSite site(kDrained, connection);
    olvex::DasService service(site.store);
    int value = 0;
    for (auto _ : state) {
        state.PauseTiming();
        site.queueAll(value);
        state.ResumeTiming();
        int finished = 0;
        for (int n = service.runOnce(); n > 0; n = service.runOnce()) {
            finished += n;
        }
        if (finished != kDrained) {
            state.SkipWithError("not every write was applied");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * kDrained);
}

void drainBaseline(benchmark::State &state, const QString &connection)
{
    BenchSite site(kDrained, connection);
    olvex::SqlConnection &sql = site.store->sql();
    int value = 0;
    for (auto _ : state) {
        olvex::Transaction transaction(sql, olvex::SqlConnection::TransactionKind::Write);
        for (const qint32 pid : std::as_const(site.pids)) {
            const QString text = QString::number(++value);
            QSqlQuery &update = sql.prepared(
                QStringLiteral("UPDATE current_values SET vkind = 2, val = ? WHERE pid = ?"));
            update.addBindValue(text);
            update.addBindValue(pid);
            sql.exec(update);
            QSqlQuery &audit = sql.prepared(QStringLiteral(
                "INSERT INTO audit_trail (changed_ms, user_name, client_name, client_address,"
                " pid, old_vkind, old_val, new_vkind, new_val, source)"
                " VALUES (?, 'operator', 'WS-1', '10.0.0.1', ?, 2, '0', 2, ?, 'bench')"));
            audit.addBindValue(QDateTime::currentMSecsSinceEpoch());
            audit.addBindValue(pid);
            audit.addBindValue(text);
            sql.exec(audit);
        }
        transaction.commit();
    }
    state.SetItemsProcessed(state.iterations() * kDrained);
}

} // namespace

BENCHMARK(applyCandidate)->Name("das_apply_vs_raw_update/rate_candidate");
BENCHMARK(applyBaseline)->Name("das_apply_vs_raw_update/rate_baseline");

// The SQL drivers are plugins: they want an application object.
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const auto drain = [](const char *name, const QString &connection) {
        // A drain takes about a second: a few repetitions, judged by their median.
        benchmark::RegisterBenchmark((std::string(name) + "/candidate").c_str(), drainCandidate,
                                     connection)
            ->Iterations(1)
            ->Repetitions(3)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string(name) + "/baseline").c_str(), drainBaseline,
                                     connection)
            ->Iterations(1)
            ->Repetitions(3)
            ->Unit(benchmark::kMillisecond);
    };
    drain("das_drain_vs_bulk_update", QString());
    if (const QString pg = qEnvironmentVariable("OLVEX_TEST_PG"); !pg.isEmpty()) {
        drain("das_drain_pg_vs_bulk_update", pg);
    }
    return olvex::bench::runBenchmarks(argc, argv);
}
