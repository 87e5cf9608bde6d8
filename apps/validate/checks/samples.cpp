// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"
#include "apps/validate/thread_clock.h"

#include <limits>

namespace vocafade::validate {
namespace {

constexpr int kTenSeconds = 10 * 48000 / kBlock; // blocks

struct Burst {
    const char* name;
    float value;
};
using Limits = std::numeric_limits<float>;
constexpr Burst kBursts[] = {
    {"NaN", Limits::quiet_NaN()},
    {"a signalling NaN", Limits::signaling_NaN()},
    {"infinity", Limits::infinity()},
    {"minus infinity", -Limits::infinity()},
    {"the largest number", Limits::max()},
    {"a million times full scale", 1e6f},
    {"full scale", 1.0f},
    {"minus full scale", -1.0f},
};

void HostileSamples(Subject& subject, Report& report) {
    for (const Burst& burst : kBursts) {
        for (const char* where : {"one sample", "whole blocks"}) {
            RawEffect effect(subject.Object());
            effect.Start(48000.0, kBlock);
            NoisePlayer<float> player(effect, kBlock, subject.seed(), 0.25f);
            player.Play(10);
            report.Trying("feeding {} ({})", burst.name, where);
            const bool single = where == std::string_view("one sample");
            if (!single) player.in().Fill(burst.value);
            if (single && effect->numInputs > 0) player.in()[0][kBlock / 3] = burst.value;
            player.Play(single ? 1 : 20);
            report.Trying("playing on after {}", burst.name);
            player.Fill(0.25f);
            player.Play(kTenSeconds); // feedback and tails are long
            if (!player.isFinite())
                report.Fault("ten seconds after {} ({}) its output is still NaN or infinite", burst.name,
                             where);
            else if (player.out().Peak(kBlock) > 1e4f)
                report.Fault("ten seconds after {} ({}) its output is {:g} times full scale", burst.name,
                             where, player.out().Peak(kBlock));
        }
    }
}
const Check kHostileSamples{
    "hostile-samples", 6, 60, kPlain, "NaN, infinite and enormous samples leave nothing behind",
    HostileSamples};

/// For 200 blocks; of as many times 200 as the clock needs.
double SecondsFor(NoisePlayer<float>& player) {
    const double begin = ThreadSeconds();
    for (int times = 1;; ++times) {
        player.Play(200);
        const double seconds = ThreadSeconds() - begin;
        if (seconds >= 8 * kThreadTick) return seconds / times;
    }
}

void Denormals(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    NoisePlayer<float> player(effect, kBlock, subject.seed());
    report.Trying("measuring its time with noise");
    SecondsFor(player);
    const double usual = SecondsFor(player);
    report.Trying("measuring its time with denormal noise");
    player.Fill(1e-40f);
    double slowest = SecondsFor(player);
    if (!player.isFinite()) report.Fault("with denormal input its output is NaN or infinite");
    report.Trying("measuring its time in the tail after sound");
    player.in().Fill(0.0f);
    for (int i = 0; i < 10; ++i)
        slowest = std::max(slowest, SecondsFor(player));
    report.Measured("denormals and tails take {:.2f} of the usual time", slowest / std::max(usual, 1e-6));
    if (slowest > 8.0 * usual && slowest > 0.02)
        report.Fault("denormals slow it down {:.0f} times", slowest / usual);
}
const Check kDenormals{"denormals", 6, 60, kNotSanitized, "denormals do not slow it down", Denormals};

} // namespace
} // namespace vocafade::validate
