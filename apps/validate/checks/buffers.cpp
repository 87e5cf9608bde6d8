// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/guarded_memory.h"
#include "apps/validate/noise_player.h"

#include <algorithm>
#include <cstring>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kFrames = 500;

using Sound = std::vector<std::vector<float>>;
using Pointers = std::vector<float*>;

/// What the effect makes of noise in these buffers; the same noise at every call.
Sound SoundFrom(Subject& subject, const Pointers& inputs, const Pointers& outputs) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kFrames);
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> sample(-0.5f, 0.5f);
    Sound sound(outputs.size());
    for (int i = 0; i < 40; ++i) {
        for (float* input : inputs)
            std::generate_n(input, kFrames, [&] { return sample(random); });
        Pointers in = inputs; // effects may change the pointers
        Pointers out = outputs;
        effect.Process(in.data(), out.data(), kFrames);
        for (std::size_t c = 0; c < sound.size(); ++c)
            sound[c].insert(sound[c].end(), outputs[c], outputs[c] + kFrames);
    }
    return sound;
}

/// Buffers of each side, the way that one check hands them over.
struct Buffers {
    Buffers(Subject& subject, std::int32_t room)
        : effect(subject.Object()), in(effect->numInputs, room), out(effect->numOutputs, room) {}
    /// Channel c begins `shift * (c + 1)` samples, modulo 16, behind an aligned place.
    static Pointers Of(Channels<float>& channels, std::size_t shift = 0) {
        Pointers pointers(channels.pointers(), channels.pointers() + channels.count());
        for (std::size_t c = 0; c < pointers.size(); ++c)
            pointers[c] += shift * (c + 1) % 16;
        return pointers;
    }

    RawEffect effect; ///< asked for its channels alone
    Channels<float> in;
    Channels<float> out;
};

/// What it makes of noise in plain buffers, to compare others with; empty when no two runs give the same.
Sound Plain(Subject& subject, Report& report) {
    report.Trying("processing in aligned buffers, separate for input and output");
    Buffers buffers(subject, kFrames);
    Sound sound = SoundFrom(subject, Buffers::Of(buffers.in), Buffers::Of(buffers.out));
    if (SoundFrom(subject, Buffers::Of(buffers.in), Buffers::Of(buffers.out)) == sound) return sound;
    report.Remark("its output differs from run to run, so it cannot be compared");
    return {};
}

void InPlace(Subject& subject, Report& report) {
    const Sound plain = Plain(subject, report);
    report.Trying("processing in place");
    RawEffect effect(subject.Object());
    Channels<float> both(std::max(effect->numInputs, effect->numOutputs), kFrames);
    Pointers inputs = Buffers::Of(both);
    Pointers outputs = inputs;
    inputs.resize(static_cast<std::size_t>(effect->numInputs));
    outputs.resize(static_cast<std::size_t>(effect->numOutputs));
    const Sound sound = SoundFrom(subject, inputs, outputs);
    if (!plain.empty() && sound != plain)
        report.Fault("in place its output differs from that in separate buffers");
}
const Check kInPlace{"in-place", 6, 30, kPlain, "inputs and outputs in the same memory", InPlace};

void Misaligned(Subject& subject, Report& report) {
    const Sound plain = Plain(subject, report);
    Buffers buffers(subject, kFrames + 16);
    for (std::size_t shift = 1; shift < 16; ++shift) { // every place within a vector of 512 bits
        report.Trying("processing in buffers that begin {} samples behind an aligned place", shift);
        const Sound sound =
            SoundFrom(subject, Buffers::Of(buffers.in, shift), Buffers::Of(buffers.out, shift));
        if (!plain.empty() && sound != plain)
            report.Remark("its output depends on the alignment of its buffers, if only in the last digits");
    }
}
const Check kMisaligned{"misaligned", 6, 30, kPlain, "buffers that begin at any sample", Misaligned};

void GuardPages(Subject& subject, Report& report) {
    using Against = GuardedMemory::Against;
    for (const Against against : {Against::end, Against::begin}) {
        for (const std::int32_t block : {1, 3, 64, 341, 1000, 1024, 4097}) {
            report.Trying("blocks of {} with a guard page right {} every buffer", block,
                          against == Against::end ? "behind" : "in front of");
            RawEffect effect(subject.Object());
            effect.Start(48000.0, block);
            GuardedChannels<float> in(effect->numInputs, block, against, "input");
            GuardedChannels<float> out(effect->numOutputs, block, against, "output");
            std::mt19937 random(subject.seed());
            std::uniform_real_distribution<float> sample(-0.5f, 0.5f);
            Sound before;
            for (std::size_t c = 0; c < in.count(); ++c) {
                std::generate_n(in.pointers()[c], block, [&] { return sample(random); });
                before.emplace_back(in.pointers()[c], in.pointers()[c] + block);
            }
            for (int i = 0; i < std::max(10, 6000 / block); ++i)
                effect.Process(in.pointers(), out.pointers(), block);
            for (std::size_t c = 0; c < in.count(); ++c)
                if (std::memcmp(before[c].data(), in.pointers()[c], before[c].size() * sizeof(float)) != 0)
                    report.Fault("it writes into the inputs");
            if (!subject.CallsDoubles(*effect)) continue;
            GuardedChannels<double> doubleIn(effect->numInputs, block, against, "double input");
            GuardedChannels<double> doubleOut(effect->numOutputs, block, against, "double output");
            for (int i = 0; i < 10; ++i)
                effect.Process(doubleIn.pointers(), doubleOut.pointers(), block);
        }
    }
    report.Trying("one buffer for all inputs"); // as hosts do that feed a mono track
    Buffers buffers(subject, kFrames);
    Channels<float> mono(1, kFrames);
    SoundFrom(subject, Pointers(buffers.in.count(), mono[0].data()), Buffers::Of(buffers.out));
    if (!buffers.out.AreFinite(kFrames))
        report.Fault("with one buffer for all inputs its output is NaN or infinite");
}
const Check kGuardPages{"guard-pages", 6, 30, kPlain, "no sample before or behind a buffer is touched",
                        GuardPages};

} // namespace
} // namespace vocafade::validate
