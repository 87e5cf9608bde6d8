// SPDX-License-Identifier: MIT
#include "bench/comparison.h"

#include "bench/cpu_time.h"
#include "bench/engine_interface.h"
#include "bench/signals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vocafade::bench {
namespace {

constexpr int kSeconds = 60;
constexpr int kBlock = 512;

struct Contestant {
    EngineForm form;
    std::unique_ptr<Engine> engine;
    double least = std::numeric_limits<double>::infinity();
    double energy = 0.0; ///< of the output: shows that all forms did the same work
};

double RunOnce(Engine& engine, const Stereo& song, double* energy) {
    std::vector<float> outL(kBlock);
    std::vector<float> outR(kBlock);
    *energy = 0.0;
    const double start = ThreadSeconds();
    for (std::size_t at = 0; at + kBlock <= song.left.size(); at += kBlock) {
        engine.Process(song.left.data() + at, song.right.data() + at, kBlock, outL.data(), outR.data());
        *energy += static_cast<double>(outL[0]) * outL[0] + static_cast<double>(outR[0]) * outR[0];
    }
    return ThreadSeconds() - start;
}

} // namespace

void PrintComparison(int rounds) {
    const Stereo song = Song(kSeconds);
    std::vector<Contestant> contestants;
    for (EngineForm& form : EngineForms()) {
        auto engine = form.make();
        contestants.push_back({std::move(form), std::move(engine)});
    }
    for (int round = 0; round < rounds; ++round) {
        for (Contestant& c : contestants) {
            c.least = std::min(c.least, RunOnce(*c.engine, song, &c.energy));
        }
    }
    const double plain = contestants[0].least;
    const auto library = std::find_if(contestants.begin(), contestants.end(),
                                      [](const Contestant& c) { return c.form.name == "fftw+sleef"; });
    std::printf("One minute of 44.1 kHz stereo in blocks of %d, least of %d rounds in turns:\n\n", kBlock,
                rounds);
    std::printf("%-22s %10s %12s %14s %14s %12s\n", "form", "seconds", "x real time", "plain / form",
                "form / library", "energy (dB)");
    for (const Contestant& c : contestants) {
        std::printf("%-22s %10.4f %12.0f %14.2f ", c.form.name.c_str(), c.least, kSeconds / c.least,
                    plain / c.least);
        if (library != contestants.end()) {
            std::printf("%14.2f ", c.least / library->least);
        } else {
            std::printf("%14s ", "-");
        }
        std::printf("%12.3f\n", 10.0 * std::log10(c.energy));
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace vocafade::bench
