// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "bench/comparison.h"
#include "bench/heaviest_call.h"

#include <benchmark/benchmark.h>
#include <cstring>

/// Prints the tables of ratios and of heaviest calls, then runs the single benchmarks. `--ratios` stops after
/// the tables,
/// `--no-ratios` leaves them out; Google Benchmark's own switches hold for the rest.
int main(int argc, char** argv) {
    bool ratios = true;
    bool benchmarks = true;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--ratios") == 0) {
            benchmarks = false;
        } else if (std::strcmp(argv[i], "--no-ratios") == 0) {
            ratios = false;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    const vocafade::AudioFloatMode mode; // as in the effect while it processes
    if (ratios) {
        vocafade::bench::PrintComparison(7);
        vocafade::bench::PrintHeaviestCall(7);
    }
    if (benchmarks) benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
