// SPDX-License-Identifier: MIT
#include "bench/comparison.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <xmmintrin.h>

/// Prints the table of ratios, then runs the single benchmarks. `--ratios` stops after the table,
/// `--no-ratios` leaves it out; Google Benchmark's own switches hold for the rest.
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
    // As the effect does while it processes: denormals count as zero.
    _mm_setcsr(_mm_getcsr() | 0x8040U);
    if (ratios) vocafade::bench::PrintComparison(5);
    if (benchmarks) benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
