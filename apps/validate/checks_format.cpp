// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <algorithm>

namespace vocafade::validate {
namespace {

/// Beyond this nobody mixes: an effect that makes it of sound at half scale runs away.
constexpr double kAbsurdLevel = 1e6;

template <typename Sample>
class Player {
  public:
    Player(Instance& effect, std::int32_t frames, std::uint32_t seed)
        : effect_(effect), in_(effect->numInputs, frames), out_(effect->numOutputs, frames), random_(seed) {}

    /// Runs `samples` of noise through, in blocks of `block`.
    void Run(std::int64_t samples, std::int32_t block, Report& report, const std::string& situation) {
        in_.FillWithNoise(random_, Sample(0.5));
        for (std::int64_t done = 0; done < samples; done += std::max(block, 1)) {
            effect_.Process(in_.pointers(), out_.pointers(), block);
            if (!out_.AreFinite(block)) {
                report.Fault("{}: its output is no number", situation);
                return;
            }
            loudest_ = std::max(loudest_, static_cast<double>(out_.Peak(block)));
        }
        if (loudest_ > kAbsurdLevel)
            report.Fault("{}: its output grows to {:g} times full scale", situation, loudest_);
    }
    Channels<Sample>& in() { return in_; }
    Channels<Sample>& out() { return out_; }
    double loudest() const { return loudest_; }

  private:
    Instance& effect_;
    Channels<Sample> in_;
    Channels<Sample> out_;
    std::mt19937 random_;
    double loudest_ = 0.0;
};

/// `work` gets a value of the sample type, for single precision and where it is called for, double.
template <typename Work>
void InEachPrecision(Subject& subject, Work work) {
    work(0.0F);
    const bool doubles = [&] {
        Instance probe(subject.Object());
        return subject.CallsDoubles(*probe);
    }();
    if (doubles) work(0.0);
}

template <typename Sample>
const char* PrecisionName() {
    return sizeof(Sample) == 8 ? "double" : "single";
}

template <typename Sample>
void Prepare(Instance& effect, double rate, std::int32_t block) {
    effect.Open();
    effect.Configure(rate, block);
    effect.Ask(effSetProcessPrecision, 0, sizeof(Sample) == 8 ? 1 : 0);
    effect.On();
}

} // namespace

void CheckSound(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero) {
        using Sample = decltype(zero);
        constexpr std::int32_t kBlock = 512;
        Instance effect(subject.Object());
        Prepare<Sample>(effect, 48000.0, kBlock);
        Player<Sample> player(effect, kBlock, subject.seed());
        report.Trying("two seconds of noise at 48 kHz in {} precision", PrecisionName<Sample>());
        player.Run(96000, kBlock, report, "noise at 48 kHz");
        if (effect->numInputs > 0 && effect->numOutputs > 0 && player.loudest() == 0.0)
            report.Remark("noise at its defaults gives silence");
        report.Trying("five seconds of silence in {} precision", PrecisionName<Sample>());
        player.in().Fill(Sample(0));
        for (int i = 0; i < 240000 / kBlock; ++i) {
            effect.Process(player.in().pointers(), player.out().pointers(), kBlock);
            if (!player.out().AreFinite(kBlock)) report.Fault("silence becomes what is no number");
        }
        if (effect->numInputs > 0 && player.out().Peak(kBlock) > Sample(1e-3))
            report.Remark("five seconds after the sound ended it still sounds");
        effect.Off();
    });
}

void CheckRates(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero) {
        using Sample = decltype(zero);
        for (const double rate : {8000.0, 11025.0, 16000.0, 22050.0, 32000.0, 44100.0, 48000.0, 88200.0,
                                  96000.0, 176400.0, 192000.0, 384000.0}) {
            for (const std::int32_t block : {64, 1000}) {
                report.Trying("{:g} Hz, blocks of {}, {} precision", rate, block, PrecisionName<Sample>());
                Instance effect(subject.Object());
                Prepare<Sample>(effect, rate, block);
                Player<Sample>(effect, block, subject.seed())
                    .Run(static_cast<std::int64_t>(rate / 4.0), block, report, fmt::format("{:g} Hz", rate));
                effect.Off();
            }
        }
        // The same instance through all of them, as a host does that follows the sound card.
        Instance effect(subject.Object());
        effect.Open();
        Player<Sample> player(effect, 256, subject.seed());
        for (const double rate : {44100.0, 384000.0, 8000.0, 48000.0, 192000.0, 44100.0}) {
            report.Trying("changing one instance to {:g} Hz", rate);
            effect.Configure(rate, 256);
            effect.Ask(effSetProcessPrecision, 0, sizeof(Sample) == 8 ? 1 : 0);
            effect.On();
            player.Run(20000, 256, report, fmt::format("changed to {:g} Hz", rate));
            effect.Off();
        }
    });
}

void CheckBlocks(Subject& subject, Report& report) {
    InEachPrecision(subject, [&](auto zero) {
        using Sample = decltype(zero);
        for (const std::int32_t block : {1, 2, 3, 7, 15, 32, 100, 341, 441, 1024, 2048, 4096, 16384, 65536}) {
            report.Trying("blocks of {}, {} precision", block, PrecisionName<Sample>());
            Instance effect(subject.Object());
            Prepare<Sample>(effect, 48000.0, block);
            Player<Sample>(effect, block, subject.seed())
                .Run(std::min(24000, block * 2000), block, report, fmt::format("blocks of {}", block));
            effect.Off();
        }
        constexpr std::int32_t kMost = 4096;
        Instance effect(subject.Object());
        Prepare<Sample>(effect, 48000.0, kMost);
        Player<Sample> player(effect, kMost, subject.seed());
        std::mt19937 random(subject.seed());
        std::uniform_int_distribution<std::int32_t> length(0, kMost);
        for (int i = 0; i < 200; ++i) { // hosts cut their blocks wherever automation has a point
            const std::int32_t block = i % 5 == 0 ? 0 : length(random) >> (i % 12);
            report.Trying("a block of {} after others, {} precision", block, PrecisionName<Sample>());
            player.Run(block, block, report, "blocks of changing lengths");
        }
        report.Trying("a block of no samples");
        effect.Process(player.in().pointers(), player.out().pointers(), 0);
        effect.Off();
    });
}

} // namespace vocafade::validate
