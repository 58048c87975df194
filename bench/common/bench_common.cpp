// PID parsing against the plainest possible read of the same digits (QString::toInt of the
// plain form): what the group rules and separators cost per PID read from a file.
#include "common/pid.h"

#include <benchmark/benchmark.h>

#include <QStringList>

namespace {

QStringList displayForms()
{
    QStringList texts;
    for (qint64 pid = 100000; texts.size() < 10000; pid += 10007) {
        if (olvex::IsValidPid(pid)) {
            texts << olvex::FormatPid(pid);
        }
    }
    return texts;
}

void candidate(benchmark::State &state)
{
    const QStringList texts = displayForms();
    for (auto _ : state) {
        qint64 sum = 0;
        for (const QString &t : texts) {
            sum += olvex::ParsePid(t);
        }
        benchmark::DoNotOptimize(sum);
    }
}

void baseline(benchmark::State &state)
{
    QStringList texts = displayForms();
    for (QString &t : texts) {
        t.remove(u'-');
    }
    for (auto _ : state) {
        qint64 sum = 0;
        for (const QString &t : texts) {
            sum += t.toInt();
        }
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

BENCHMARK(candidate)->Name("parsepid_vs_toint/candidate");
BENCHMARK(baseline)->Name("parsepid_vs_toint/baseline");
BENCHMARK_MAIN();
