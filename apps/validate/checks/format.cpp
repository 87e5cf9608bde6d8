// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <algorithm>

namespace vocafade::validate {
namespace {

/// Times full scale: an effect that makes this of noise at half scale is unstable.
constexpr double kAbsurdLevel = 1e6;

/// Runs `samples` of noise through, in blocks of `block`; answers the loudest that came out.
template <typename Sample>
double Run(NoisePlayer<Sample>& player, std::int64_t samples, std::int32_t block, Report& report,
           const std::string& situation) {
    player.Fill(Sample(0.5));
    double loudest = 0.0;
    for (std::int64_t done = 0; done < samples; done += std::max(block, 1)) {
        player.PlayBlock(block);
        if (!player.out().AreFinite(block)) {
            report.Fault("{}: its output is NaN or infinite", situation);
            return loudest;
        }
        loudest = std::max(loudest, static_cast<double>(player.out().Peak(block)));
    }
    if (loudest > kAbsurdLevel)
        report.Fault("{}: its output grows to {:g} times full scale", situation, loudest);
    return loudest;
}

/// `work` gets a value of the sample type and its name, for single precision and where it is called for,
/// double.
template <typename Work>
void InEachPrecision(Subject& subject, Work work) {
    work(0.0f, "single");
    const bool doubles = [&] {
        RawEffect probe(subject.Object());
        return subject.CallsDoubles(*probe);
    }();
    if (doubles) work(0.0, "double");
}

template <typename Sample>
void SwitchOn(RawEffect& effect, double rate, std::int32_t block) {
    effect.Configure(rate, block);
    effect.Ask(effSetProcessPrecision, 0, sizeof(Sample) == 8 ? 1 : 0);
    effect.On();
}

void FiniteSound(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero, const char* precision) {
        using Sample = decltype(zero);
        RawEffect effect(subject.Object());
        effect.Open();
        SwitchOn<Sample>(effect, 48000.0, kBlock);
        NoisePlayer<Sample> player(effect, kBlock, subject.seed());
        report.Trying("two seconds of noise at 48 kHz in {} precision", precision);
        const double loudest = Run(player, 96000, kBlock, report, "noise at 48 kHz");
        if (effect->numInputs > 0 && effect->numOutputs > 0 && loudest == 0.0)
            report.Remark("noise gives silence, with its parameters as they are at the start");
        report.Trying("five seconds of silence in {} precision", precision);
        player.in().Fill(Sample(0));
        for (int i = 0; i < 240000 / kBlock; ++i) {
            player.Play();
            if (!player.isFinite()) report.Fault("silence: its output is NaN or infinite");
        }
        if (effect->numInputs > 0 && player.out().Peak(kBlock) > Sample(1e-3))
            report.Remark("five seconds after the sound ended its output is not silent");
        effect.Off();
    });
}
const Check kSound{"sound",    1, 30, kPlain, "noise and silence go in, and what comes out is finite",
                   FiniteSound};

void Rates(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero, const char* precision) {
        using Sample = decltype(zero);
        for (const double rate : {8000.0, 11025.0, 16000.0, 22050.0, 32000.0, 44100.0, 48000.0, 88200.0,
                                  96000.0, 176400.0, 192000.0, 384000.0}) {
            for (const std::int32_t block : {64, 1000}) {
                report.Trying("{:g} Hz, blocks of {}, {} precision", rate, block, precision);
                RawEffect effect(subject.Object());
                effect.Open();
                SwitchOn<Sample>(effect, rate, block);
                NoisePlayer<Sample> player(effect, block, subject.seed());
                Run(player, static_cast<std::int64_t>(rate / 4.0), block, report,
                    fmt::format("{:g} Hz", rate));
                effect.Off();
            }
        }
        // The same instance through several, as a host does that follows the sound card.
        RawEffect effect(subject.Object());
        effect.Open();
        NoisePlayer<Sample> player(effect, 256, subject.seed());
        for (const double rate : {44100.0, 384000.0, 8000.0, 48000.0, 192000.0, 44100.0}) {
            report.Trying("changing one instance to {:g} Hz", rate);
            SwitchOn<Sample>(effect, rate, 256);
            Run(player, 20000, 256, report, fmt::format("changed to {:g} Hz", rate));
            effect.Off();
        }
    });
}
const Check kRates{"rates", 4, 90, kPlain, "sample rates from 8 kHz to 384 kHz", Rates};

void Blocks(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero, const char* precision) {
        using Sample = decltype(zero);
        for (const std::int32_t block : {1, 2, 3, 7, 15, 32, 100, 341, 441, 1024, 2048, 4096, 16384, 65536}) {
            report.Trying("blocks of {}, {} precision", block, precision);
            RawEffect effect(subject.Object());
            effect.Open();
            SwitchOn<Sample>(effect, 48000.0, block);
            NoisePlayer<Sample> player(effect, block, subject.seed());
            Run(player, std::min(24000, block * 2000), block, report, fmt::format("blocks of {}", block));
            effect.Off();
        }
        constexpr std::int32_t kMost = 4096;
        RawEffect effect(subject.Object());
        effect.Open();
        SwitchOn<Sample>(effect, 48000.0, kMost);
        NoisePlayer<Sample> player(effect, kMost, subject.seed());
        std::mt19937 random(subject.seed());
        std::uniform_int_distribution<std::int32_t> length(0, kMost);
        for (int i = 0; i < 200; ++i) { // hosts cut their blocks wherever automation has a point
            const std::int32_t block = i % 5 == 0 ? 0 : length(random) >> (i % 12);
            report.Trying("a block of {} after others, {} precision", block, precision);
            Run(player, block, block, report, "blocks of changing lengths");
        }
        report.Trying("an empty block");
        player.PlayBlock(0);
        effect.Off();
    });
}
const Check kBlocks{"blocks", 4, 90, kPlain, "blocks from 0 to 65536 samples, of changing lengths", Blocks};

} // namespace
} // namespace vocafade::validate
