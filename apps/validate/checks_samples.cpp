// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"
#include "apps/validate/thread_clock.h"

#include <limits>

namespace vocafade::validate {
namespace {

constexpr double kRate = 48000.0;
constexpr std::int32_t kBlock = 512;
/// How long an effect may take to get over what was fed to it: feedback and tails are long.
constexpr int kRecoveryBlocks = 10 * 48000 / kBlock;

struct Burst {
    const char* name;
    float value;
};
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr Burst kBursts[] = {
    {"no number", std::numeric_limits<float>::quiet_NaN()},
    {"a signalling no number", std::numeric_limits<float>::signaling_NaN()},
    {"infinity", kInfinity},
    {"minus infinity", -kInfinity},
    {"the largest number", std::numeric_limits<float>::max()},
    {"a million times full scale", 1e6F},
    {"full scale", 1.0F},
    {"minus full scale", -1.0F},
};

/// `scattered`: one sample in the block and one channel, instead of all of them.
void Feed(Subject& subject, Report& report, const Burst& burst, bool scattered) {
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(subject.seed());
    in.FillWithNoise(random, 0.25F);
    const auto run = [&](int blocks) {
        for (int i = 0; i < blocks; ++i)
            effect.Process(in.pointers(), out.pointers(), kBlock);
    };
    run(10);
    report.Trying("feeding {} ({})", burst.name, scattered ? "one sample" : "whole blocks");
    if (scattered) {
        if (in.count() > 0) in[0][kBlock / 3] = burst.value;
    } else {
        in.Fill(burst.value);
    }
    run(scattered ? 1 : 20);
    report.Trying("playing on after {}", burst.name);
    in.FillWithNoise(random, 0.25F);
    run(kRecoveryBlocks);
    if (!out.AreFinite(kBlock))
        report.Fault("ten seconds after {} ({}) its output is still no number", burst.name,
                     scattered ? "one sample" : "whole blocks");
    else if (out.Peak(kBlock) > 1e4F)
        report.Fault("ten seconds after {} ({}) its output is {:g} times full scale", burst.name,
                     scattered ? "one sample" : "whole blocks", out.Peak(kBlock));
}

double SecondsFor(Instance& effect, Channels<float>& in, Channels<float>& out) {
    constexpr int kBlocks = 200;
    const double begin = ThreadSeconds();
    for (int i = 0; i < kBlocks; ++i)
        effect.Process(in.pointers(), out.pointers(), kBlock);
    return ThreadSeconds() - begin;
}

} // namespace

void CheckHostileSamples(Subject& subject, Report& report) {
    for (const Burst& burst : kBursts)
        for (const bool scattered : {false, true})
            Feed(subject, report, burst, scattered);
}

void CheckDenormals(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(subject.seed());
    in.FillWithNoise(random, 0.5F);
    report.Trying("measuring its time with noise");
    SecondsFor(effect, in, out);
    const double usual = SecondsFor(effect, in, out);
    report.Trying("measuring its time with denormal noise");
    in.FillWithNoise(random, 1e-40F);
    double slowest = SecondsFor(effect, in, out);
    if (!out.AreFinite(kBlock)) report.Fault("of denormal input it makes what is no number");
    report.Trying("measuring its time in the tail after sound");
    in.Fill(0.0F);
    for (int i = 0; i < 10; ++i)
        slowest = std::max(slowest, SecondsFor(effect, in, out));
    report.Measured("denormals and tails take {:.2f} of the usual time", slowest / std::max(usual, 1e-6));
    if (slowest > 8.0 * usual && slowest > 0.02)
        report.Fault("denormal numbers slow it down {:.0f} times", slowest / usual);
}

} // namespace vocafade::validate
