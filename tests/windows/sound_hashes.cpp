// SPDX-License-Identifier: MIT
// Prints what a plug-in makes of some sounds, as one number each: the same program on each system must print the same.
//
//   sound_hashes PLUGIN
#include "host/effect.h"
#include "host/host_error.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

namespace {

std::uint64_t HashOf(vocafade::host::Effect& effect, int blocks, int frames) {
    std::mt19937 random(1); // whose numbers, unlike those of distributions, are the same everywhere
    const auto next = [&] { return static_cast<float>(static_cast<std::int32_t>(random())) / 4294967296.0f; };
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    std::array<std::vector<float>, 4> channels;
    for (std::vector<float>& channel : channels)
        channel.resize(static_cast<std::size_t>(frames));
    float* in[] = {channels[0].data(), channels[1].data()};
    float* out[] = {channels[2].data(), channels[3].data()};
    for (int block = 0; block < blocks; ++block) {
        for (std::size_t i = 0; i < channels[0].size(); ++i) {
            const float middle = next();
            channels[0][i] = middle + 0.3f * next();
            channels[1][i] = middle + 0.3f * next();
        }
        effect.Process(in, out, frames);
        for (const std::size_t side : {2, 3})
            for (const float sample : channels[side])
                hash = (hash ^ std::bit_cast<std::uint32_t>(sample)) * 1099511628211U;
    }
    return hash;
}

} // namespace

int main(int count, char** arguments) try {
    if (count != 2) return 2;
    for (const double rate : {44100.0, 96000.0}) {
        for (const int frames : {64, 1000}) {
            for (const float position : {0.0f, 64.0f / 127.0f, 0.9f}) {
                vocafade::host::Effect effect(arguments[1]);
                effect.Configure(rate, frames);
                effect.Start();
                effect.setParameter(3, 0.2f);
                effect.setParameter(5, position);
                std::printf("%.0f Hz, %d samples, position %.3f: %016llx\n", rate, frames, position,
                            static_cast<unsigned long long>(HashOf(effect, 200000 / frames, frames)));
            }
        }
    }
    return 0;
} catch (const vocafade::host::HostError& error) {
    std::fprintf(stderr, "sound_hashes: %s\n", error.what());
    return 1;
}
