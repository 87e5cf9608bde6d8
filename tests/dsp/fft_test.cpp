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

// What a transform is said to be made for changes nothing, and the tables of one length go with another.

TEST(Fft, MatchesTheDefinitionBothWaysAtEveryLength) {
    CFFT forward;
    CFFT inverse;
    for (int n = 2048; n >= 2; n /= 2) {
        for (const bool complex : {true, false}) {
            forward.Init(n, complex, true);
            inverse.Init(n, complex, false);
            const Samples input = Noise(2 * static_cast<std::size_t>(n), static_cast<unsigned>(n));
            Samples data = input;
            forward.ComplexFFT(data.data());
            // Single precision gains about one rounding a pass on values that grow like the root of n.
            const double tolerance = 1e-6 * std::sqrt(n) * (std::log2(n) + 1.0);
            EXPECT_LT(LargestError(ToComplex(data), PlainTransform(ToComplex(input), -1.0)), tolerance) << n;

            inverse.ComplexFFT(data.data());
            EXPECT_LT(LargestError(ToComplex(data), ToComplex(input)), 2e-6) << n;
        }
    }
}

TEST(Fft, PacksARealTransformWithThePositiveSine) {
    CFFT fft;
    for (int n = 4; n <= 1024; n *= 4) {
        const auto size = static_cast<std::size_t>(n);
        const Samples input = Noise(size, 5);
        std::vector<Complex> expected = PlainTransform({input.begin(), input.end()}, 1.0);
        expected[0].imag(expected[size / 2].real());
        expected.resize(size / 2);
        for (const auto& [complex, forward] :
             {std::pair{true, true}, {true, false}, {false, true}, {false, false}}) {
            fft.Init(n, complex, forward);
            Samples other(2 * size);
            fft.ComplexFFT(other.data());
            Samples data = input;
            fft.RealFFT(data.data());
            EXPECT_LT(LargestError(ToComplex(data), expected), 2e-5) << n;
        }
    }
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
