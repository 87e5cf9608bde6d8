// SPDX-License-Identifier: MIT
#include "dsp/fft.h"
#include "tests/dsp/plain_model.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace vocafade::test {
namespace {

std::vector<Complex> ToComplex(const Samples& interleaved) {
    std::vector<Complex> values;
    for (std::size_t i = 0; i < interleaved.size(); i += 2) {
        values.emplace_back(interleaved[i], interleaved[i + 1]);
    }
    return values;
}

double LargestError(const std::vector<Complex>& a, const std::vector<Complex>& b) {
    double error = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        error = std::max(error, std::abs(a[i] - b[i]));
    }
    return error;
}

TEST(Fft, MatchesTheDefinitionBothWaysAtEveryLength) {
    CFFT forward; // each made for one length after the other, falling here, rising in the next test
    CFFT inverse;
    for (int n = 2048; n >= 2; n /= 2) {
        forward.Init(n, true, true);
        inverse.Init(n, true, false);
        const auto size = static_cast<std::size_t>(n);
        const Samples input = Noise(2 * size, static_cast<unsigned>(n));
        Samples data = input;
        forward.ComplexFFT(data.data());
        // Single precision gains about one rounding a pass on values that grow like the root of n.
        const double tolerance = 1e-6 * std::sqrt(n) * (std::log2(n) + 1.0);
        EXPECT_LT(LargestError(ToComplex(data), PlainTransform(ToComplex(input), -1.0)), tolerance) << n;

        Samples back = data;
        inverse.ComplexFFT(back.data());
        EXPECT_LT(LargestError(ToComplex(back), ToComplex(input)), 2e-6) << n;
    }
}

TEST(Fft, PacksARealTransformWithThePositiveSine) {
    CFFT fft;
    for (int n = 4; n <= 1024; n *= 4) {
        const auto size = static_cast<std::size_t>(n);
        for (const bool forward : {true, false}) {
            fft.Init(n, false, forward);
            const Samples input = Noise(size, 5);
            Samples data = input;
            fft.RealFFT(data.data());
            const std::vector<Complex> expected = PlainTransform({input.begin(), input.end()}, 1.0);
            const double tolerance = 2e-5;
            EXPECT_NEAR(data[0], expected[0].real(), tolerance);
            EXPECT_NEAR(data[1], expected[size / 2].real(), tolerance);
            for (std::size_t k = 1; k < size / 2; ++k) {
                ASSERT_NEAR(data[2 * k], expected[k].real(), tolerance) << n << " " << k;
                ASSERT_NEAR(data[2 * k + 1], expected[k].imag(), tolerance) << n << " " << k;
            }
        }
    }
}

TEST(Fft, ServesBothKindsWhicheverItWasMadeFor) {
    constexpr std::size_t n = 512;
    const Samples real = Noise(n, 5);
    const Samples complex = Noise(2 * n, 6);
    const auto results = [&](bool kind, bool realFirst) {
        CFFT fft;
        fft.Init(n, kind, true);
        Samples a = real;
        Samples b = complex;
        if (realFirst) fft.RealFFT(a.data());
        fft.ComplexFFT(b.data());
        if (!realFirst) fft.RealFFT(a.data());
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    const Samples expected = results(true, true);
    EXPECT_NEAR(expected[2], PlainTransform({real.begin(), real.end()}, 1.0)[1].real(), 2e-5);
    for (const auto& [kind, realFirst] : {std::pair{true, false}, {false, true}, {false, false}})
        EXPECT_EQ(results(kind, realFirst), expected);
}

TEST(Fft, LeavesTheDataAloneWithoutAPowerOfTwo) {
    CFFT fft;
    const Samples input = Noise(200, 7);
    Samples data = input;
    fft.ComplexFFT(data.data());
    for (const int n : {100, 0, 1, 3, -64, std::numeric_limits<int>::min(), 1 << 30}) {
        fft.Init(64, true, true);
        fft.Init(n, n % 2 == 0, true);
        fft.ComplexFFT(data.data());
        fft.RealFFT(data.data());
        EXPECT_EQ(data, input) << n;
        EXPECT_EQ(fft.Points(), 0);
    }
}

} // namespace
} // namespace vocafade::test
