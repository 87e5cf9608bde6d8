// SPDX-License-Identifier: MIT
#include "bench/comparison.h"

#include "bench/cpu_time.h"
#include "bench/engine_interface.h"
#include "bench/signals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>

namespace vocafade::bench {
namespace {

constexpr int kSeconds = 60;
constexpr std::size_t kBlock = 512;
constexpr std::size_t kSlice = 20 * kBlock; ///< what a form works on before the next one's turn
constexpr std::size_t kSlices = static_cast<std::size_t>(kSeconds) * 44100 / kSlice;

struct Contestant {
    EngineForm form;
    std::unique_ptr<Engine> engine;
    std::vector<double> least = std::vector<double>(kSlices, std::numeric_limits<double>::infinity());
    double energy = 0.0; ///< of the output: shows that all forms did the same work

    double Seconds() const { return std::accumulate(least.begin(), least.end(), 0.0); }

    void Run(const Stereo& song, std::size_t slice) {
        float outL[kBlock];
        float outR[kBlock];
        const double start = ThreadSeconds();
        for (std::size_t at = slice * kSlice; at < (slice + 1) * kSlice; at += kBlock) {
            engine->Process(song.left.data() + at, song.right.data() + at, kBlock, outL, outR);
            energy += static_cast<double>(outL[0]) * outL[0] + static_cast<double>(outR[0]) * outR[0];
        }
        least[slice] = std::min(least[slice], ThreadSeconds() - start);
    }
};

} // namespace

void PrintComparison(int rounds) {
    const Stereo song = Song(kSeconds);
    std::vector<Contestant> contestants;
    for (EngineForm& form : EngineForms()) {
        auto engine = form.make();
        contestants.push_back({.form = std::move(form), .engine = std::move(engine)});
    }
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t slice = 0; slice < kSlices; ++slice) {
            for (Contestant& c : contestants) {
                c.Run(song, slice);
            }
        }
    }
    const double plain = contestants[0].Seconds();
    const auto library = std::find_if(contestants.begin(), contestants.end(),
                                      [](const Contestant& c) { return c.form.name == "fftw+sleef"; });
    std::printf(
        "One minute of 44.1 kHz stereo in blocks of %zu, in turns of %zu; of each turn the least of %d:\n\n",
        kBlock, kSlice, rounds);
    std::printf("%-22s %10s %12s %14s %14s %12s\n", "form", "seconds", "x real time", "plain / form",
                "form / library", "energy (dB)");
    for (const Contestant& c : contestants) {
        std::printf("%-22s %10.4f %12.0f %14.2f ", c.form.name.c_str(), c.Seconds(), kSeconds / c.Seconds(),
                    plain / c.Seconds());
        if (library != contestants.end()) {
            std::printf("%14.2f ", c.Seconds() / library->Seconds());
        } else {
            std::printf("%14s ", "-");
        }
        std::printf("%12.3f\n", 10.0 * std::log10(c.energy / rounds));
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace vocafade::bench
