// SPDX-License-Identifier: MIT
// The kernels' own angle, sine and cosine against the C library's in double precision, both rounded to
// single: at most one last place apart, on every instruction set.
#include "dsp/constants.h"
#include "dsp/kernels/kernel_set.h"
#include "tests/support/signals.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace vocafade::test {
namespace {

using kernels::KernelSet;

constexpr std::size_t kBatch = 4096;

#ifdef VOCAFADE_LONG_TESTS
constexpr std::uint32_t kStride = 1;
#else
constexpr std::uint32_t kStride = 997;
#endif

/// Counts how many values of all are not as expected, and how many are more than one last place apart.
struct Differences {
    std::uint64_t count = 0;
    std::uint64_t apart = 0;
    std::uint64_t farApart = 0;

    void Take(float got, float expected) {
        ++count;
        if (got == expected) return;
        ++apart;
        farApart += got == std::nextafter(expected, got) ? 0 : 1;
    }

    void Expect() const {
        EXPECT_GT(count, 100000U);
        EXPECT_EQ(farApart, 0U);
        // About one in a million is apart: before rounding, the errors are far smaller than a last place.
        EXPECT_LT(static_cast<double>(apart), 1e-5 * static_cast<double>(count));
    }
};

/// One batch through a kernel on every instruction set; the portable one's results remain.
class Batch {
  public:
    Batch() { std::iota(bins_.begin(), bins_.end(), 0.0f); }

    /// Runs the resynthesis for its cosines and sines only: with amplitudes of 1, true frequencies equal to
    /// the bins' own and sums that are the analysed phases, the sums stay where they are.
    void SineAndCosine() {
        ForEveryInstructionSet([this](const KernelSet& set, Samples& cosines, Samples& sines) {
            Samples phases = x;
            set.resynthesise(kIdle, ones_.data(), bins_.data(), x.data(), phases.data(), cosines.data(),
                             sines.data());
            ASSERT_EQ(phases, x) << set.instructionSet;
        });
    }

    /// Runs the analysis for its phases only.
    void Angle() {
        ForEveryInstructionSet([this](const KernelSet& set, Samples& phases, Samples& frequencies) {
            set.analyse(kIdle, x.data(), y.data(), phases.data(), magnitudes_.data(), frequencies.data());
            frequencies = phases;
        });
    }

    Samples x = Samples(kBatch + kernels::kPadding, 1.0f);
    Samples y = Samples(kBatch + kernels::kPadding, 1.0f);
    Samples first = Samples(kBatch + kernels::kPadding);
    Samples second = Samples(kBatch + kernels::kPadding);

  private:
    static constexpr kernels::VocoderConstants kIdle{static_cast<int>(kBatch), 0.0f, 1.0f, 1.0f};

    template <typename Kernel>
    void ForEveryInstructionSet(Kernel kernel) {
        Samples a = first;
        Samples b = second;
        kernel(*kernels::AvailableKernels(0), first, second);
        for (int i = 1; const KernelSet* set = kernels::AvailableKernels(i); ++i) {
            kernel(*set, a, b);
            ASSERT_TRUE(SameBits(a, first, kBatch)) << set->instructionSet;
            ASSERT_TRUE(SameBits(b, second, kBatch)) << set->instructionSet;
        }
    }

    Samples ones_ = Samples(kBatch + kernels::kPadding, 1.0f);
    Samples bins_ = Samples(kBatch + kernels::kPadding);
    Samples magnitudes_ = Samples(kBatch + kernels::kPadding);
};

/// Walks in batches over the single-precision numbers from 0 to `last`, every `kStride`th of them, those below
/// 2^-26 more coarsely: there all three functions are straight lines. `put` takes each to its place in the
/// batch, `run` sends the batch through the kernels, `take` compares the result at each place.
template <typename Put, typename Take>
void WalkInBatches(float last, Put put, void (Batch::*run)(), Take take) {
    Batch batch;
    Differences differences;
    for (std::uint32_t bits = 0; bits <= std::bit_cast<std::uint32_t>(last);) {
        std::size_t filled = 0;
        for (; filled < kBatch && bits <= std::bit_cast<std::uint32_t>(last); ++filled) {
            put(batch, filled, std::bit_cast<float>(bits));
            bits += bits < std::bit_cast<std::uint32_t>(0x1p-26f) ? 1000 * kStride : kStride;
        }
        ASSERT_NO_FATAL_FAILURE((batch.*run)());
        for (std::size_t i = 0; i < filled; ++i)
            take(differences, batch, i);
    }
    differences.Expect();
}

void TakeAngle(Differences& differences, const Batch& batch, std::size_t i) {
    const auto expected = static_cast<float>(std::atan2(double{batch.y[i]}, double{batch.x[i]}));
    differences.Take(batch.first[i], expected);
    ASSERT_EQ(std::signbit(batch.first[i]), std::signbit(expected)) << batch.y[i] << ' ' << batch.x[i];
}

TEST(Transcendental, SineAndCosineOfEveryFoldedPhase) {
    WalkInBatches(
        kPi, [](Batch& batch, std::size_t i, float phase) { batch.x[i] = i % 2 == 0 ? phase : -phase; },
        &Batch::SineAndCosine,
        [](Differences& differences, const Batch& batch, std::size_t i) {
            differences.Take(batch.first[i], static_cast<float>(std::cos(double{batch.x[i]})));
            differences.Take(batch.second[i], static_cast<float>(std::sin(double{batch.x[i]})));
        });
}

TEST(Transcendental, AngleOfEveryRatioInEveryOctant) {
    // Ratios run through the single-precision numbers in [0, 1]; beyond, the axes change places.
    std::mt19937 random(3);
    const auto put = [&random](Batch& batch, std::size_t i, float ratio) {
        const auto octant = random();
        const float shorter = (octant & 1) != 0 ? -ratio : ratio;
        const float longer = (octant & 2) != 0 ? -1.0f : 1.0f;
        batch.x[i] = (octant & 4) != 0 ? shorter : longer;
        batch.y[i] = (octant & 4) != 0 ? longer : shorter;
    };
    WalkInBatches(1.0f, put, &Batch::Angle, TakeAngle);
}

TEST(Transcendental, AngleOfAnyTwoNumbersAndOfZeros) {
    Batch batch;
    Differences differences;
    std::mt19937 random(8);
    const auto any = [&random] { // of any size a spectrum may have, either sign, zero now and then
        const int exponent = static_cast<int>(random() % 160) - 100;
        const float sign = random() % 2 == 0 ? 1.0f : -1.0f;
        const float digits = 1.0f + static_cast<float>(random() % (1U << 23U)) * 0x1p-23f;
        return random() % 16 == 0 ? sign * 0.0f : sign * std::ldexp(digits, exponent);
    };
    const int rounds = kStride == 1 ? 50000 : 500;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < kBatch; ++i) {
            batch.x[i] = any();
            batch.y[i] = i % 3 == 0 ? batch.x[i] * (1.0f + 0.001f * static_cast<float>(i % 7)) : any();
        }
        ASSERT_NO_FATAL_FAILURE(batch.Angle());
        for (std::size_t i = 0; i < kBatch; ++i)
            ASSERT_NO_FATAL_FAILURE(TakeAngle(differences, batch, i));
    }
    differences.Expect();
}

} // namespace
} // namespace vocafade::test
