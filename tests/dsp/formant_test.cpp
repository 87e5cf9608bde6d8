// SPDX-License-Identifier: MIT
// The formant analyser: what the envelope is, and the edges that callers rely on.
#include "dsp/formant_analyzer.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

namespace vocafade::test {
namespace {

constexpr int kPoints = 256;
using std::numbers::pi;

/// A smooth hill of e^(depth cos) times a fine comb, as harmonics under formants look.
std::vector<float> Spectrum(double depth, double comb, int period) {
    std::vector<float> spectrum(kPoints);
    for (int k = 0; k < kPoints; ++k) {
        const double angle = 2 * pi * k / kPoints;
        spectrum[static_cast<std::size_t>(k)] =
            static_cast<float>(std::exp(depth * std::cos(2 * angle) + comb * std::cos(period * angle)));
    }
    return spectrum;
}

class Formants : public ::testing::Test {
  protected:
    Formants() { analyzer.Init(kPoints); }
    std::vector<float> Envelope(const std::vector<float>& spectrum, int order) {
        std::vector<float> envelope(kPoints);
        analyzer.GetFormant(spectrum.data(), envelope.data(), order);
        return envelope;
    }
    CFormantAnalyzer analyzer;
};

TEST_F(Formants, TheCombGoesAndTheHillStays) {
    const std::vector<float> envelope = Envelope(Spectrum(1.5, 0.8, 40), 8);
    for (int k = 0; k < kPoints; ++k) {
        const double hill = std::pow(2.718280076980591, 1.5 * std::cos(4 * pi * k / kPoints));
        EXPECT_NEAR(envelope[static_cast<std::size_t>(k)], hill, hill * 1e-5) << k;
    }
}

TEST_F(Formants, OrderAndZerosHaveTheirMeaning) {
    std::vector<float> spectrum = Spectrum(1, 1, 7);
    EXPECT_EQ(Envelope(spectrum, 0), std::vector<float>(kPoints, 1.0f));
    // All coefficients: the spectrum itself, but for the base; a zero counts as one.
    spectrum[5] = 0.0f;
    for (const int order : {kPoints, kPoints + 100}) {
        analyzer.Init(kPoints);
        const std::vector<float> envelope = Envelope(spectrum, order);
        EXPECT_NEAR(envelope[5], 1.0f, 1e-5);
        EXPECT_NEAR(envelope[6], spectrum[6], spectrum[6] * 1e-5);
    }
    Envelope(spectrum, -1);
    analyzer = {};
    EXPECT_EQ(Envelope(spectrum, 4), std::vector<float>(kPoints)) << "unprepared, it touches nothing";
}

TEST_F(Formants, ALaterCallStillHoldsTheOneBefore) {
    const std::vector<float> spectrum = Spectrum(1, 0, 1);
    const std::vector<float> first = Envelope(spectrum, 8);
    const std::vector<float> second = Envelope(spectrum, 8);
    // The middle of the cepstrum holds the first call's log envelope; its inverse transform is added.
    double difference = 0;
    for (int k = 0; k < kPoints; ++k) {
        double added = 0;
        for (int q = 8; q < kPoints - 8; ++q) {
            const double left = std::cos(4 * pi * q / kPoints); // what the first call left at q
            added += left * std::cos(2 * pi * q * k / kPoints) / kPoints;
        }
        const auto at = static_cast<std::size_t>(k);
        const double expected = std::pow(2.718280076980591, std::cos(4 * pi * k / kPoints) + added);
        EXPECT_NEAR(second[at], expected, 1e-4) << k;
        difference = std::max(difference, std::abs(double{second[at]} - double{first[at]}));
    }
    EXPECT_GT(difference, 0.1);
    analyzer.Init(kPoints);
    EXPECT_EQ(Envelope(spectrum, 8), first);
}

TEST_F(Formants, PeaksAreJoinedByLinesAndCurvesScaled) {
    analyzer.Init(8);
    const float envelope[9] = {1, 2, 5, 3, 3, 4, 9, 2, 8}; // the last one is behind the end
    float out[8] = {-1, -1, -1, -1, -1, -1, -1, -1};
    EXPECT_EQ(analyzer.GetTrueFormant(envelope, out), 9.0f);
    const float joined[8] = {1, 3, 5, 6, 7, 8, -1, -1};
    EXPECT_TRUE(std::equal(out, out + 8, joined));
    const float rising[9] = {1, 2, 3, 4, 5, 6, 7, 8, 7};
    EXPECT_EQ(analyzer.GetTrueFormant(rising, out), 8.0f)
        << "the element behind the end makes the last one a peak";
    const float monotonic[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    float untouched[8] = {};
    EXPECT_EQ(analyzer.GetTrueFormant(monotonic, untouched), 1.0f);
    EXPECT_TRUE(std::all_of(untouched, untouched + 8, [](float value) { return value == 0.0f; }));

    float curve[8] = {-4, 0, 1, 2, 3, 4, 1, 0};
    analyzer.Normalize(curve);
    EXPECT_EQ(curve[5], 10.0f);
    EXPECT_EQ(curve[3], 5.0f);
    EXPECT_EQ(curve[0], -10.0f);
    float flat[8] = {};
    analyzer.Normalize(flat);
    EXPECT_TRUE(std::isnan(flat[0]));
}

} // namespace
} // namespace vocafade::test
