// SPDX-License-Identifier: MIT
#include "bench/engine_interface.h"
#include "bench/signals.h"
#include "dsp/fft.h"

#include <benchmark/benchmark.h>

namespace vocafade::bench {
namespace {

/// One hop of 341 samples, which is one frame's work.
void Hop(benchmark::State& state, const EngineForm& form) {
    const auto engine = form.make();
    const Stereo song = Song(5);
    std::vector<float> outL(kHop);
    std::vector<float> outR(kHop);
    std::size_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        engine->Process(song.left.data() + at, song.right.data() + at, kHop, outL.data(), outR.data());
        benchmark::DoNotOptimize(outL.data());
        at += kHop;
        if (at + kHop > song.left.size()) at = 0;
    }
}

/// One complex transform of 2048 points by `CFFT`.
void Transform(benchmark::State& state, bool forward) {
    CFFT fft;
    fft.Init(kFrameSize, true, forward);
    const Stereo song = Song(1);
    std::vector<float> data(2 * kFrameSize);
    for ([[maybe_unused]] auto _ : state) {
        std::copy_n(song.left.data(), data.size(), data.data());
        fft.ComplexFFT(data.data());
        benchmark::DoNotOptimize(data.data());
    }
}

const bool kRegistered = [] {
    for (const EngineForm& form : EngineForms()) {
        benchmark::RegisterBenchmark(("hop/" + form.name).c_str(), Hop, form);
    }
    benchmark::RegisterBenchmark("fft2048/forward", Transform, true);
    benchmark::RegisterBenchmark("fft2048/inverse", Transform, false);
    return true;
}();

} // namespace
} // namespace vocafade::bench
