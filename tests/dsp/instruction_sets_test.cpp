// SPDX-License-Identifier: MIT
// Every instruction set gives the same bits, and the transform the same as the scalar one.
#include "base/float_mode.h"
#include "dsp/fft.h"
#include "dsp/kernels/frame_transform.h"
#include "dsp/vocafade_unit.h"
#include "tests/dsp/plain_model.h"
#include "tests/dsp/same_bits.h"
#include "tests/support/signals.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
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

/// A stretch of stereo that changes its nature from second to second: noise, tones that glide and swell, a
/// drum-like click, pure silence, one channel alone, next to nothing, far too much, and what is no sound.
class EverythingSong {
  public:
    void Next(float* left, float* right, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i, ++at_) {
            const auto second = at_ / 44100;
            const double t = static_cast<double>(at_) / 44100.0;
            const float tone = static_cast<float>(0.3 * std::sin(900.0 * t + 300.0 * std::sin(0.7 * t)));
            const float side = static_cast<float>(0.2 * std::sin(2765.0 * t));
            const float noise = Random();
            const std::pair<float, float> kinds[] = {
                {noise, Random()},
                {tone + side, tone - side},
                {tone + 0.01f * noise, tone},
                {at_ % 11025 == 0 ? 1.0f : 0.0f, at_ % 7000 == 0 ? -1.0f : -0.0f},
                {0.0f, 0.0f},
                {noise + tone, 0.0f},
                {1e-37f * noise, 1e-20f * tone},
                {1e14f * noise, 1e4f * side},
                {at_ % 5000 == 0 ? NAN : tone, at_ % 9000 == 0 ? INFINITY : side},
            };
            std::tie(left[i], right[i]) = kinds[second % 9];
        }
    }

  private:
    float Random() { return static_cast<float>(static_cast<int>(random_())) * 0x1p-32f; }

    std::mt19937 random_{4711};
    std::size_t at_ = 0;
};

struct Running {
    explicit Running(const KernelSet& set) : name(set.instructionSet), unit(set) {
        unit.Init(2048, 44100, 6, &lock);
    }
    std::string name;
    CCriticalSection lock;
    CVocafadeUnit unit;
    Samples left = Samples(5000);
    Samples right = Samples(5000);
};

/// Feeds all instruction sets with the same stream in blocks of random sizes, under changing bands and
/// balances.
void ExpectSameBits(int seconds) {
    const AudioFloatMode mode;
    std::vector<std::unique_ptr<Running>> running;
    for (const KernelSet* set : KernelSets()) {
        running.push_back(std::make_unique<Running>(*set));
    }
    EverythingSong song;
    std::mt19937 random(1);
    Samples left(5000);
    Samples right(5000);
    bool sounded = false;
    for (std::size_t done = 0; done < static_cast<std::size_t>(seconds) * 44100;) {
        const std::size_t most = random() % 4 == 0 ? 5000 : 700;
        const std::size_t count = 1 + random() % most;
        song.Next(left.data(), right.data(), count);
        const unsigned low = random() % 2000;
        const unsigned high = random() % 25000;
        const float balance = std::exp2(static_cast<float>(random() % 9) - 4.0f);
        for (const auto& r : running) {
            if (done % 3 == 0) {
                r->unit.SetCancelFS(low, high);
                r->unit.SetLRBalance(balance);
            }
            int produced = 0;
            r->unit.Operate(left.data(), right.data(), static_cast<int>(count), r->left.data(),
                            r->right.data(), &produced);
        }
        const Running& reference = *running.front();
        sounded = sounded || reference.left[count - 1] != 0.0f;
        for (const auto& r : running) {
            ASSERT_TRUE(SameBits(r->left.data(), reference.left.data(), count) &&
                        SameBits(r->right.data(), reference.right.data(), count))
                << r->name << " at sample " << done;
        }
        done += count;
    }
    EXPECT_TRUE(sounded);
}

#ifndef VOCAFADE_LONG_TESTS

TEST(InstructionSets, GiveTheSameBits) { ExpectSameBits(20); }

TEST(InstructionSets, TransformAsTheScalarTransformDoes) {
    for (int size = 2; size <= 8192; size *= 2) {
        const auto n = static_cast<std::size_t>(size);
        const auto bins = n / 2;
        kernels::FrameTransform transform;
        transform.Init(size);
        Samples input = Noise(n, 5);
        Samples window = Noise(n, 6);
        CFFT forward;
        CFFT inverse;
        forward.Init(size, true, true);
        inverse.Init(size, true, false);
        Samples spectrum(2 * n);
        Samples back(2 * n);
        for (std::size_t i = 0; i < n; ++i) {
            spectrum[2 * i] = input[i] * window[i];
        }
        forward.ComplexFFT(spectrum.data());
        std::copy_n(spectrum.data(), n, back.data());
        inverse.ComplexFFT(back.data());

        Samples re(bins + kernels::kPadding);
        Samples im(bins + kernels::kPadding);
        Samples frame(n + kernels::kPadding);
        input.resize(n + kernels::kPadding);
        window.resize(n + kernels::kPadding);
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
    const StereoSamples input{Noise(9000, 1), Noise(9000, 2)};
    for (const int size : {2, 4, 8, 16, 32, 64, 128, 256, 1024, 4096}) {
        for (const int overlap : {2, 3, 7}) { // beyond the size, too: then a hop is one sample
            std::vector<StereoSamples> outputs;
            for (const KernelSet* set : KernelSets()) {
                CCriticalSection lock;
                CVocafadeUnit unit(*set);
                unit.SetCancelFS(1, 0);
                unit.Init(size, 48000, overlap, &lock);
                outputs.push_back({Samples(9000), Samples(9000)});
                int produced = 0;
                unit.Operate(input.left.data(), input.right.data(), 9000, outputs.back().left.data(),
                             outputs.back().right.data(), &produced);
                EXPECT_EQ(outputs.back().left, outputs.front().left) << set->instructionSet << ' ' << size;
                EXPECT_EQ(outputs.back().right, outputs.front().right) << set->instructionSet << ' ' << size;
                const auto latency = static_cast<std::size_t>(unit.Latency());
                const Samples& left = outputs.back().left;
                EXPECT_TRUE(std::all_of(left.begin(), left.begin() + unit.Latency(),
                                        [](float s) { return s == 0.0f; }));
                EXPECT_GT(Power(left, latency), 1e-4) << size << ' ' << overlap;
            }
        }
    }
}

TEST(InstructionSets, FindThePeakOfAnyBlock) {
    Samples samples = Noise(300, 9);
    for (std::size_t place = 0; place < samples.size(); place += 7) {
        const float before = samples[place];
        samples[place] = place % 2 == 0 ? 3.0f : -3.0f;
        samples[(place + 20) % samples.size()] = NAN;
        for (const KernelSet* set : KernelSets()) {
            for (const std::size_t count : {place, place + 1, samples.size()}) {
                float expected = 0.0f;
                for (std::size_t i = 0; i < count; ++i) {
                    expected = std::fmax(expected, std::fabs(samples[i]) * 0.3f);
                }
                EXPECT_EQ(set->peak(samples.data(), static_cast<int>(count), 0.3f), expected)
                    << set->instructionSet << ' ' << place << ' ' << count;
            }
        }
        samples[place] = before;
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
