// SPDX-License-Identifier: MIT
#include "bench/heaviest_call.h"

#include "bench/engine_interface.h"
#include "bench/signals.h"
#include "host/effect.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>

namespace vocafade::bench {
namespace {

constexpr int kCallFrames = 64;
constexpr std::size_t kCalls = 1000000;

/// Whether call `i` completes a frame.
bool DoesAHop(std::size_t i) { return (i + 1) * kCallFrames / kHop > i * kCallFrames / kHop; }

/// Times every call of a fresh instance in microseconds; `least` keeps the least so far, `most` the most.
void Round(Stereo& song, std::vector<float>& least, float& most) {
    using Clock = std::chrono::steady_clock;
    host::Effect effect(VOCAFADE_PLUGIN);
    effect.Configure(44100.0, kCallFrames);
    effect.Start();
    float outL[kCallFrames];
    float outR[kCallFrames];
    float* outputs[] = {outL, outR};
    std::size_t at = 0;
    for (std::size_t i = 0; i < kCalls; ++i) {
        float* inputs[] = {song.left.data() + at, song.right.data() + at};
        const auto start = Clock::now();
        effect.Process(inputs, outputs, kCallFrames);
        const float took = std::chrono::duration<float, std::micro>(Clock::now() - start).count();
        least[i] = std::min(least[i], took);
        most = std::max(most, took);
        at = (at + kCallFrames) % (song.left.size() / kCallFrames * kCallFrames);
    }
}

} // namespace

void PrintHeaviestCall(int rounds) {
    Stereo song = Song(20);
    std::vector<float> least(kCalls, std::numeric_limits<float>::infinity());
    float most = 0.0f;
    for (int round = 0; round < rounds; ++round) {
        Round(song, least, most);
    }
    std::vector<float> hops;
    float first = 0.0f;
    for (std::size_t i = 0; i < kCalls; ++i) {
        if (!DoesAHop(i)) continue;
        if (hops.empty()) first = least[i];
        hops.push_back(least[i]);
    }
    const auto heaviest = std::max_element(least.begin(), least.end());
    const auto middle = hops.begin() + static_cast<std::ptrdiff_t>(hops.size() / 2);
    std::nth_element(hops.begin(), middle, hops.end());
    std::printf("processReplacing, %zu blocks of %d samples, in each of %d rounds:\n\n", kCalls, kCallFrames,
                rounds);
    std::printf("  a call with one hop's work, median      %8.2f us\n", *middle);
    std::printf("  the very first call                     %8.2f us\n", least[0]);
    std::printf("  the first call with a hop's work        %8.2f us\n", first);
    std::printf("  the heaviest call (number %7td)       %8.2f us, %.2f times one hop's work\n",
                heaviest - least.begin(), *heaviest, *heaviest / *middle);
    std::printf("  the heaviest with what else went on     %8.2f us\n\n", most);
    std::fflush(stdout);
}

} // namespace vocafade::bench
