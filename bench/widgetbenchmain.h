#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>

namespace olvex::bench {

// The main of a benchmark program that builds widgets: offscreen, one application object, then
// Google Benchmark's usual run.
inline int runWidgetBenchmarks(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace olvex::bench
