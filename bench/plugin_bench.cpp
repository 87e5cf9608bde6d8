// SPDX-License-Identifier: MIT
// The built plug-in through its binary interface, as a host meets it.
#include "bench/engine_interface.h"
#include "bench/signals.h"
#include "host/effect.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <malloc.h>

namespace vocafade::bench {
namespace {

using Clock = std::chrono::steady_clock;

/// `processReplacing` with blocks of so many samples. "worst_us" is the longest single call, whatever else
/// the machine did meanwhile; the table of heaviest calls tells the two apart.
void ProcessReplacing(benchmark::State& state) {
    const auto block = static_cast<std::int32_t>(state.range(0));
    host::Effect effect(VOCAFADE_PLUGIN);
    effect.Configure(44100.0, block);
    effect.Start();
    Stereo song = Song(5);
    std::vector<float> outL(static_cast<std::size_t>(block));
    std::vector<float> outR(outL.size());
    float* outputs[] = {outL.data(), outR.data()};
    std::size_t at = 0;
    Clock::duration worst{};
    for ([[maybe_unused]] auto _ : state) {
        float* inputs[] = {song.left.data() + at, song.right.data() + at};
        const auto start = Clock::now();
        effect.Process(inputs, outputs, block);
        worst = std::max(worst, Clock::now() - start);
        at += outL.size();
        if (at + outL.size() > song.left.size()) at = 0;
    }
    state.counters["worst_us"] = std::chrono::duration<double, std::micro>(worst).count();
    state.counters["x_real_time"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * block / 44100.0, benchmark::Counter::kIsRate);
}

/// An instance is made and opened, then closed. The shared object stays loaded.
void CreateAndOpen(benchmark::State& state) {
    const host::SharedObject keep(VOCAFADE_PLUGIN);
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const host::Effect effect(VOCAFADE_PLUGIN);
        bytes = mallinfo2().uordblks + mallinfo2().hblkhd - before;
    }
    state.counters["instance_bytes"] = static_cast<double>(bytes);
}

BENCHMARK(ProcessReplacing)->Name("processReplacing")->Arg(32)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(CreateAndOpen)->Name("create+effOpen")->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vocafade::bench
