// SPDX-License-Identifier: MIT
// Every instruction set gives the same bits, and the transform the same as the scalar one.
#include "base/float_mode.h"
#include "dsp/fft.h"
#include "dsp/kernels/frame_transform.h"
#include "dsp/vocafade_unit.h"
#include "tests/support/signals.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <list>
#include <random>
#include <tuple>

namespace vocafade::test {
namespace {

using kernels::KernelSet;

std::vector<const KernelSet*> KernelSets() {
    std::vector<const KernelSet*> sets;
    for (int i = 0; const KernelSet* set = kernels::AvailableKernels(i); ++i) {
        sets.push_back(set);
    }
    return sets;
}

/// One second of a song that changes its nature from second to second: noise, tones that glide and swell, a
/// drum-like click, pure silence, one channel alone, next to nothing, far too much, and what is no sound.
StereoSamples SecondOfEverything(unsigned number) {
    StereoSamples sound = StereoNoise(44100, 2 * number);
    for (std::size_t i = 0; i < sound.left.size(); ++i) {
        const double t = number + static_cast<double>(i) / 44100.0;
        const float tone = static_cast<float>(0.3 * std::sin(900.0 * t + 300.0 * std::sin(0.7 * t)));
        const float side = static_cast<float>(0.2 * std::sin(2765.0 * t));
        const float noise = sound.left[i];
        const std::pair<float, float> kinds[] = {
            {noise, sound.right[i]},
            {tone + side, tone - side},
            {tone + 0.01f * noise, tone},
            {i % 11025 == 0 ? 1.0f : 0.0f, i % 7000 == 0 ? -1.0f : -0.0f},
            {0.0f, 0.0f},
            {noise + tone, 0.0f},
            {1e-37f * noise, 1e-20f * tone},
            {1e14f * noise, 1e4f * side},
            {i % 5000 == 0 ? NAN : tone, i % 9000 == 0 ? INFINITY : side},
        };
        std::tie(sound.left[i], sound.right[i]) = kinds[number % 9];
    }
    return sound;
}

/// An engine of one instruction set, whose band and balance change with its blocks, in each set's in the same way.
class Running {
  public:
    explicit Running(const KernelSet& set) : name(set.instructionSet), unit_(set) {
        unit_.Init(2048, 44100, 6, &lock_);
    }

    StereoSamples Run(const StereoSamples& input, const std::vector<std::size_t>& blocks) {
        return InBlocks(input, blocks, [this](float** in, float** out, std::int32_t count) {
            if (random_() % 3 == 0) {
                const unsigned low = random_() % 2000;
                unit_.SetCancelFS(low, random_() % 25000);
                unit_.SetLRBalance(std::exp2(static_cast<float>(random_() % 9) - 4.0f));
            }
            int produced = 0;
            unit_.Operate(in[0], in[1], count, out[0], out[1], &produced);
        });
    }

    const char* name;

  private:
    CCriticalSection lock_;
    CVocafadeUnit unit_;
    std::mt19937 random_{1};
};

void ExpectSameBits(unsigned seconds) {
    const AudioFloatMode mode;
    std::list<Running> running;
    for (const KernelSet* set : KernelSets())
        running.emplace_back(*set);
    std::mt19937 random(1);
    std::vector<std::size_t> blocks(20);
    for (unsigned second = 0; second < seconds; ++second) {
        const StereoSamples input = SecondOfEverything(second);
        for (std::size_t& block : blocks)
            block = 1 + random() % (random() % 4 == 0 ? 5000 : 700);
        const StereoSamples reference = running.front().Run(input, blocks);
        if (second == 0) {
            EXPECT_GT(Power(reference.left), 1e-3);
        }
        for (auto other = std::next(running.begin()); other != running.end(); ++other) {
            const StereoSamples output = other->Run(input, blocks);
            ASSERT_TRUE(SameBits(output.left, reference.left, output.left.size()) &&
                        SameBits(output.right, reference.right, output.right.size()))
                << other->name << " in second " << second;
        }
    }
}

#ifndef VOCAFADE_LONG_TESTS

TEST(InstructionSets, GiveTheSameBits) { ExpectSameBits(20); }

TEST(InstructionSets, TransformAsTheScalarTransformDoes) {
    for (int size = 2; size <= 8192; size *= 2) {
        const auto n = static_cast<std::size_t>(size);
        const auto bins = n / 2;
        kernels::FrameTransform transform;
        transform.Init(size);
        const Samples input = Noise(n + kernels::kPadding, 5);
        const Samples window = Noise(n + kernels::kPadding, 6);
        Samples spectrum(2 * n);
        for (std::size_t i = 0; i < n; ++i)
            spectrum[2 * i] = input[i] * window[i];
        CFFT fft;
        fft.Init(size, true, true);
        fft.ComplexFFT(spectrum.data());
        Samples back(2 * n);
        std::copy_n(spectrum.data(), n, back.data());
        fft.Init(size, true, false);
        fft.ComplexFFT(back.data());

        Samples re(bins + kernels::kPadding);
        Samples im(bins + kernels::kPadding);
        Samples frame(n + kernels::kPadding);
        for (const KernelSet* set : KernelSets()) {
            transform.Forward(*set, input.data(), window.data(), re.data(), im.data());
            for (std::size_t k = 0; k < bins; ++k) { // zeros of either sign are equal
                ASSERT_EQ(re[k], spectrum[2 * k]) << set->instructionSet << ' ' << size << ' ' << k;
                ASSERT_EQ(im[k], spectrum[2 * k + 1]) << set->instructionSet << ' ' << size << ' ' << k;
            }
            transform.Inverse(*set, re.data(), im.data(), frame.data());
            for (std::size_t i = 0; i < n; ++i) {
                ASSERT_EQ(frame[i] / static_cast<float>(size), back[2 * i])
                    << set->instructionSet << ' ' << size << ' ' << i;
            }
        }
    }
}

TEST(InstructionSets, ServeOtherFramesThanTheEnginesOwn) {
    for (const int size : {2, 4, 8, 16, 32, 64, 128, 256, 1024, 4096}) {
        for (const int overlap : {2, 3, 7}) { // beyond the size, too: then a hop is one sample
            std::vector<StereoSamples> outputs;
            for (const KernelSet* set : KernelSets()) {
                CCriticalSection lock;
                CVocafadeUnit unit(*set);
                unit.SetCancelFS(1, 0);
                unit.Init(size, 48000, overlap, &lock);
                outputs.push_back(
                    InBlocks(StereoNoise(9000), {9000}, [&unit](float** in, float** out, std::int32_t count) {
                        int produced = 0;
                        unit.Operate(in[0], in[1], count, out[0], out[1], &produced);
                    }));
                EXPECT_EQ(outputs.back(), outputs.front()) << set->instructionSet << ' ' << size;
                const auto latency = static_cast<std::size_t>(unit.Latency());
                EXPECT_TRUE(SameBits(outputs.back().left, Samples(9000), latency));
                EXPECT_GT(Power(outputs.back().left, latency), 1e-4) << size << ' ' << overlap;
            }
        }
    }
}

TEST(InstructionSets, FindThePeakOfAnyBlock) {
    for (std::size_t place = 0; place < 300; place += 7) {
        Samples samples = Noise(300, 9);
        samples[place] = place % 2 == 0 ? 3.0f : -3.0f;
        samples[(place + 20) % samples.size()] = NAN;
        for (const KernelSet* set : KernelSets()) {
            for (const std::size_t count : {place, place + 1, samples.size()}) {
                EXPECT_EQ(set->peak(samples.data(), static_cast<int>(count), 0.3f),
                          0.3f * Peak({samples.data(), samples.data() + count}))
                    << set->instructionSet << ' ' << place << ' ' << count;
            }
        }
    }
}

TEST(InstructionSets, FollowTheEnvironment) { // run with several settings of it
    const auto sets = KernelSets();
    ASSERT_FALSE(sets.empty());
    EXPECT_STREQ(sets[0]->instructionSet, "portable");
    const char* wanted = std::getenv("VOCAFADE_SIMD"); // NOLINT(concurrency-mt-unsafe)
    const auto named = std::find_if(sets.begin(), sets.end(), [wanted](const KernelSet* set) {
        return wanted != nullptr && std::strcmp(set->instructionSet, wanted) == 0;
    });
    EXPECT_EQ(&kernels::ChosenKernels(), named != sets.end() ? *named : sets.back());
}

#else

TEST(InstructionSets, GiveTheSameBitsForTenMinutes) { ExpectSameBits(600); }

#endif

} // namespace
} // namespace vocafade::test
