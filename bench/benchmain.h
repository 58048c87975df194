#pragma once

#include <benchmark/benchmark.h>

namespace olvex::bench {

// Google Benchmark's usual run, once the program has its application object and benchmarks.
inline int runBenchmarks(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace olvex::bench
