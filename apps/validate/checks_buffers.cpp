// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <algorithm>
#include <cstring>

namespace vocafade::validate {
namespace {

constexpr double kRate = 48000.0;
constexpr std::int32_t kBlock = 500;
constexpr int kBlocks = 40;

using Sound = std::vector<std::vector<float>>;

/// Noise for every input, block after block the same for every way of handing it over.
class Source {
  public:
    explicit Source(std::uint32_t seed) : random_(seed) {}
    void Next(float** inputs, std::size_t count) {
        std::uniform_real_distribution<float> sample(-0.5F, 0.5F);
        for (std::size_t c = 0; c < count; ++c)
            for (std::int32_t i = 0; i < kBlock; ++i)
                inputs[c][i] = sample(random_);
    }

  private:
    std::mt19937 random_;
};

void Keep(Sound& sound, float** outputs) {
    for (std::size_t c = 0; c < sound.size(); ++c)
        sound[c].insert(sound[c].end(), outputs[c], outputs[c] + kBlock);
}

/// What it makes of the noise in plain buffers.
Sound Plain(Subject& subject) {
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    Sound sound(out.count());
    Source source(subject.seed());
    for (int i = 0; i < kBlocks; ++i) {
        source.Next(in.pointers(), in.count());
        effect.Process(in.pointers(), out.pointers(), kBlock);
        Keep(sound, out.pointers());
    }
    return sound;
}

/// True when an effect gives the same twice: only then can two ways of handing sound over be compared.
bool Repeats(Subject& subject, const Sound& sound, Report& report) {
    if (Plain(subject) == sound) return true;
    report.Remark("it gives something else at every run, so its sound cannot be compared");
    return false;
}

} // namespace

void CheckInPlace(Subject& subject, Report& report) {
    report.Trying("processing in buffers apart");
    const Sound plain = Plain(subject);
    const bool repeats = Repeats(subject, plain, report);
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    const std::int32_t count = std::max(effect->numInputs, effect->numOutputs);
    Channels<float> both(count, kBlock);
    Sound sound(static_cast<std::size_t>(effect->numOutputs));
    Source source(subject.seed());
    for (int i = 0; i < kBlocks; ++i) {
        report.Trying("processing in place, block {}", i);
        source.Next(both.pointers(), static_cast<std::size_t>(effect->numInputs));
        effect.Process(both.pointers(), both.pointers(), kBlock);
        Keep(sound, both.pointers());
    }
    if (repeats && sound != plain) report.Fault("in place it gives another sound than in buffers apart");
}

void CheckMisaligned(Subject& subject, Report& report) {
    report.Trying("processing in aligned buffers");
    const Sound plain = Plain(subject);
    const bool repeats = Repeats(subject, plain, report);
    for (std::int32_t shift = 1; shift < 16; ++shift) { // every place within a vector of 512 bits
        report.Trying("processing in buffers that begin {} samples behind an aligned place", shift);
        Instance effect(subject.Object());
        effect.Start(kRate, kBlock);
        const auto shifted = [&](Channels<float>& channels) {
            std::vector<float*> pointers(channels.pointers(), channels.pointers() + channels.count());
            for (std::size_t c = 0; c < pointers.size(); ++c)
                pointers[c] += (static_cast<std::size_t>(shift) * (c + 1)) % 16;
            return pointers;
        };
        Channels<float> inRoom(effect->numInputs, kBlock + 16);
        Channels<float> outRoom(effect->numOutputs, kBlock + 16);
        std::vector<float*> in = shifted(inRoom);
        std::vector<float*> out = shifted(outRoom);
        Sound sound(out.size());
        Source source(subject.seed());
        for (int i = 0; i < kBlocks; ++i) {
            source.Next(in.data(), in.size());
            effect.Process(in.data(), out.data(), kBlock);
            Keep(sound, out.data());
        }
        if (repeats && sound != plain)
            report.Remark("the sound depends on where buffers lie in memory, if only in its last digits");
    }
}

void CheckGuardPages(Subject& subject, Report& report) {
    using Against = GuardedMemory::Against;
    for (const Against against : {Against::end, Against::begin}) {
        for (const std::int32_t block : {1, 3, 64, 341, 1000, 1024, 4097}) {
            report.Trying("blocks of {} with a guard page right {} every buffer", block,
                          against == Against::end ? "behind" : "in front of");
            Instance effect(subject.Object());
            effect.Start(kRate, block);
            GuardedChannels<float> in(effect->numInputs, block, against, "input");
            GuardedChannels<float> out(effect->numOutputs, block, against, "output");
            const std::size_t bytes = static_cast<std::size_t>(block) * sizeof(float);
            std::mt19937 random(subject.seed());
            std::uniform_real_distribution<float> sample(-0.5F, 0.5F);
            for (std::size_t c = 0; c < in.count(); ++c)
                std::generate_n(in.pointers()[c], block, [&] { return sample(random); });
            std::vector<std::vector<float>> before;
            for (std::size_t c = 0; c < in.count(); ++c)
                before.emplace_back(in.pointers()[c], in.pointers()[c] + block);
            for (int i = 0; i < std::max(10, 6000 / block); ++i)
                effect.Process(in.pointers(), out.pointers(), block);
            for (std::size_t c = 0; c < in.count(); ++c)
                if (std::memcmp(before[c].data(), in.pointers()[c], bytes) != 0)
                    report.Fault("it writes into the inputs");
            if (!subject.CallsDoubles(*effect)) continue;
            GuardedChannels<double> doubleIn(effect->numInputs, block, against, "double input");
            GuardedChannels<double> doubleOut(effect->numOutputs, block, against, "double output");
            for (int i = 0; i < 10; ++i)
                effect.Process(doubleIn.pointers(), doubleOut.pointers(), block);
        }
    }
    // Both inputs from one buffer, as hosts do that feed a mono track.
    report.Trying("one buffer for all inputs");
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    Channels<float> mono(1, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(subject.seed());
    mono.FillWithNoise(random, 0.5F);
    std::vector<float*> in(static_cast<std::size_t>(effect->numInputs), mono[0].data());
    for (int i = 0; i < kBlocks; ++i)
        effect.Process(in.data(), out.pointers(), kBlock);
    if (!out.AreFinite(kBlock)) report.Fault("with one buffer for all inputs its output is no number");
}

} // namespace vocafade::validate
