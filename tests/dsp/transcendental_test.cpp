// SPDX-License-Identifier: MIT
// The kernels' own angle, sine and cosine against the C library's in double precision, both rounded to
// single: at most one last place apart, at every level.
#include "dsp/constants.h"
#include "dsp/kernels/level.h"
#include "tests/support/signals.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace vocafade::test {
namespace {

using kernels::Level;

constexpr std::size_t kBatch = 4096;

#ifdef VOCAFADE_LONG_TESTS
constexpr std::uint32_t kStride = 1;
#else
constexpr std::uint32_t kStride = 997;
#endif

/// Distance in last places; -0 and 0 are one apart from nothing but their neighbours.
std::int64_t LastPlaces(float a, float b) {
    const auto line = [](float x) {
        const auto bits = std::bit_cast<std::int32_t>(x);
        return static_cast<std::int64_t>(bits < 0 ? std::numeric_limits<std::int32_t>::min() - bits : bits);
    };
    return std::abs(line(a) - line(b));
}

/// Runs a level's analysis for its phases only.
class Angles {
  public:
    void operator()(const Level& level, const Samples& y, const Samples& x, Samples& phase) {
        const kernels::VocoderConstants constants{static_cast<int>(kBatch), 0.0f, 1.0f, 1.0f};
        level.analyse(constants, x.data(), y.data(), phase.data(), magnitude_.data(), frequency_.data());
    }

  private:
    Samples magnitude_ = Samples(kBatch + kernels::kPadding);
    Samples frequency_ = Samples(kBatch + kernels::kPadding);
};

struct Worst {
    std::int64_t places = 0;
    std::uint64_t apart = 0; ///< how many values differ at all
    std::uint64_t count = 0;

    void Take(float got, float expected) {
        const std::int64_t distance = LastPlaces(got, expected);
        places = std::max(places, distance);
        apart += distance != 0 ? 1 : 0;
        ++count;
    }
};

class EveryLevel : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        level_ = kernels::AvailableLevel(GetParam());
        if (level_ == nullptr) GTEST_SKIP() << "no such level on this processor";
    }
    const Level* level_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Transcendental, EveryLevel, testing::Values(0, 1, 2));

TEST_P(EveryLevel, SineAndCosineOfEveryFoldedPhase) {
    // With a true frequency equal to the bin's own, the phase stays where it is.
    const kernels::VocoderConstants constants{static_cast<int>(kBatch), 0.0f, 1.0f, 1.0f};
    Samples ones(kBatch + kernels::kPadding, 1.0f);
    Samples bins(kBatch + kernels::kPadding);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        bins[k] = static_cast<float>(k);
    }
    Samples phase(kBatch + kernels::kPadding);
    Samples cosine(kBatch + kernels::kPadding);
    Samples sine(kBatch + kernels::kPadding);
    const auto greatest = std::bit_cast<std::uint32_t>(kPi);
    Worst worst;
    std::uint64_t next = 0;
    while (next <= greatest) {
        std::size_t filled = 0;
        for (; filled < kBatch && next <= greatest; next += kStride) {
            phase[filled] = std::bit_cast<float>(static_cast<std::uint32_t>(next));
            if (filled % 2 != 0) phase[filled] = -phase[filled];
            ++filled;
        }
        level_->resynthesise(constants, ones.data(), bins.data(), phase.data(), cosine.data(), sine.data());
        for (std::size_t i = 0; i < filled; ++i) {
            const double x = phase[i];
            worst.Take(cosine[i], static_cast<float>(std::cos(x)));
            worst.Take(sine[i], static_cast<float>(std::sin(x)));
        }
    }
    EXPECT_LE(worst.places, 1);
    EXPECT_LT(static_cast<double>(worst.apart), 1e-3 * static_cast<double>(worst.count));
    RecordProperty("apart_per_million", static_cast<int>(1000000 * worst.apart / worst.count));
}

TEST_P(EveryLevel, AngleOfEveryRatioInEveryOctant) {
    // Ratios run through every single-precision number in [0, 1], and beyond it the axes change places.
    Angles angles;
    Samples x(kBatch + kernels::kPadding, 1.0f);
    Samples y(kBatch + kernels::kPadding, 1.0f);
    Samples phase(kBatch + kernels::kPadding);
    const auto one = std::bit_cast<std::uint32_t>(1.0f);
    Worst worst;
    std::uint64_t next = 0;
    std::mt19937 random(3);
    while (next <= one) {
        std::size_t filled = 0;
        for (; filled < kBatch && next <= one; next += kStride) {
            const float ratio = std::bit_cast<float>(static_cast<std::uint32_t>(next));
            const auto octant = random();
            const float shorter = (octant & 1) != 0 ? -ratio : ratio;
            const float longer = (octant & 2) != 0 ? -1.0f : 1.0f;
            x[filled] = (octant & 4) != 0 ? shorter : longer;
            y[filled] = (octant & 4) != 0 ? longer : shorter;
            ++filled;
        }
        angles(*level_, y, x, phase);
        for (std::size_t i = 0; i < filled; ++i) {
            worst.Take(phase[i], static_cast<float>(std::atan2(static_cast<double>(y[i]), x[i])));
        }
    }
    EXPECT_LE(worst.places, 1);
    EXPECT_LT(static_cast<double>(worst.apart), 1e-3 * static_cast<double>(worst.count));
}

TEST_P(EveryLevel, AngleOfAnyTwoNumbersAndOfZeros) {
    Angles angles;
    Samples x(kBatch + kernels::kPadding, 1.0f);
    Samples y(kBatch + kernels::kPadding, 1.0f);
    Samples phase(kBatch + kernels::kPadding);
    std::mt19937 random(8);
    const auto any = [&random] { // of any size a spectrum may have, either sign, zero now and then
        const int exponent = static_cast<int>(random() % 160) - 100;
        const float sign = random() % 2 == 0 ? 1.0f : -1.0f;
        const float digits = 1.0f + static_cast<float>(random() % (1U << 23U)) * 0x1p-23f;
        return random() % 16 == 0 ? sign * 0.0f : sign * std::ldexp(digits, exponent);
    };
    Worst worst;
    for (std::uint32_t round = 0; round < 2000000 / kStride; ++round) {
        for (std::size_t i = 0; i < kBatch; ++i) {
            x[i] = any();
            y[i] = i % 3 == 0 ? x[i] * (1.0f + 0.001f * static_cast<float>(i % 7)) : any();
        }
        angles(*level_, y, x, phase);
        for (std::size_t i = 0; i < kBatch; ++i) {
            const float expected = static_cast<float>(std::atan2(static_cast<double>(y[i]), x[i]));
            worst.Take(phase[i], expected);
            ASSERT_EQ(std::signbit(phase[i]), std::signbit(expected)) << y[i] << ' ' << x[i];
        }
    }
    EXPECT_LE(worst.places, 1);
}

} // namespace
} // namespace vocafade::test
