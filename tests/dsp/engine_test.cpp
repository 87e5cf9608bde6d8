// SPDX-License-Identifier: MIT
// The engine through its front: what becomes of sound, whatever the blocks.
#include "base/float_mode.h"
#include "dsp/vocafade_manager.h"
#include "tests/dsp/plain_model.h"
#include "tests/support/signals.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vocafade::test {
namespace {

constexpr std::size_t kLatency = 1707;
constexpr std::size_t kHop = 341;
constexpr double kRate = 44100.0;

/// An engine at a rate, with a band, fed in blocks.
class Engine {
  public:
    explicit Engine(double rate = kRate, unsigned low = 0, unsigned high = 30000) {
        SetRate(rate);
        manager.set_VocafadeLoFS(low);
        manager.set_VocafadeHiFS(high);
    }

    void SetRate(double rate) {
        tWAVEFORMATEX format{};
        format.nChannels = 2;
        format.nSamplesPerSec = static_cast<std::uint32_t>(rate);
        manager.SetMediaType(&format);
    }

    void Block(const float* left, const float* right, std::size_t count, float* outL, float* outR) {
        const AudioFloatMode mode;
        float* in[] = {const_cast<float*>(left), const_cast<float*>(right)};
        float* out[] = {outL, outR};
        int produced = -1;
        manager.Transform(in, static_cast<int>(count), out, &produced);
        EXPECT_EQ(produced, static_cast<int>(count));
    }

    StereoSamples Run(const StereoSamples& input, std::size_t block = 512) {
        StereoSamples output{Samples(input.left.size()), Samples(input.left.size())};
        for (std::size_t done = 0; done < input.left.size(); done += block) {
            const std::size_t count = std::min(block, input.left.size() - done);
            Block(&input.left[done], &input.right[done], count, &output.left[done], &output.right[done]);
        }
        return output;
    }

    CVocafadeManager manager;
};

StereoSamples StereoNoise(std::size_t count) { return {Noise(count, 1), Noise(count, 2)}; }

bool AllFinite(const Samples& samples, std::size_t from) {
    return std::all_of(samples.begin() + static_cast<std::ptrdiff_t>(from), samples.end(),
                       [](float s) { return std::isfinite(s); });
}

TEST(Engine, AgreesWithAnIndependentPlainModel) {
    StereoSamples input = StereoNoise(22050);
    const Samples tone = Sine(22050, 997.0, kRate, 0.4f);
    for (std::size_t i = 0; i < tone.size(); ++i) {
        input.left[i] += tone[i];
        input.right[i] += 0.5f * tone[i];
    }
    struct Case {
        int position;
        unsigned low;
        unsigned high;
    };
    // The last one's limits are the very frequencies of two bins: both belong to the band.
    for (const Case& c : {Case{64, 20, 20000}, Case{30, 400, 9000}, Case{100, 400, 9000},
                          Case{127, 20, 20000}, Case{64, 9000, 400}, Case{64, 409, 8979}}) {
        Engine engine(kRate, c.low, c.high);
        engine.manager.set_LRate(c.position);
        const double balance = c.position == 64 ? 1.0 : (127.0 - c.position) / c.position;
        const StereoSamples output = engine.Run(input);
        const StereoSamples model =
            PlainModel(input, {kRate, static_cast<double>(c.low), static_cast<double>(c.high), balance});
        EXPECT_GT(FitDb(model.left.data(), output.left.data(), output.left.size()), 55.0) << c.position;
        EXPECT_GT(FitDb(model.right.data(), output.right.data(), output.right.size()), 55.0) << c.position;
        EXPECT_NEAR(Power(output.left) / Power(model.left), 1.0, 1e-3);
    }
}

TEST(Engine, StaysSilentForExactlyItsLatency) {
    StereoSamples input = StereoNoise(6000);
    for (const unsigned high : {20000U, 20U}) { // with and without a band: leaks of modified frames count
        Engine engine(kRate, 400, high);
        for (int pass = 0; pass < 2; ++pass) { // a new start is as silent as the first
            engine.SetRate(kRate);
            const StereoSamples output = engine.Run(input);
            for (const Samples& side : {output.left, output.right})
                EXPECT_EQ(Samples(side.begin(), side.begin() + kLatency), Samples(kLatency));
            EXPECT_NE(output.left[kLatency], 0.0f);
        }
    }
}

TEST(Engine, TakesOddPositionsAsDocumented) {
    const StereoSamples input = StereoNoise(8000);
    const auto at = [&input](int position) {
        Engine engine;
        engine.manager.set_LRate(position);
        return engine.Run(input).left;
    };
    EXPECT_EQ(at(0), at(1));
    EXPECT_EQ(at(-50), at(1));
    EXPECT_NE(at(63), at(64));
    EXPECT_TRUE(AllFinite(at(1000), 0)); // a negative balance is used as it is
}

TEST(Engine, AppliesLevelsAsPlainFactors) {
    const StereoSamples input = StereoNoise(8000);
    const Samples plain = Engine().Run(input).left;
    Engine engine;
    engine.manager.set_InputLevel(0.25f);
    engine.manager.set_OutputLevel(0.5f);
    const Samples scaled = engine.Run(input).left;
    for (std::size_t i = 0; i < plain.size(); ++i)
        ASSERT_NEAR(scaled[i], plain[i] * 0.125f, 2e-6f) << i;
}

TEST(Engine, WritesItsOutputWhateverWasCalledBefore) {
    const StereoSamples input = StereoNoise(8000);
    const StereoSamples expected = Engine().Run(input);
    Engine engine;
    engine.manager.SetSampleSize(100);
    engine.manager.FreeWorkArea();
    EXPECT_EQ(engine.Run(input).left, expected.left);

    CVocafadeManager unprepared; // no format yet
    StereoSamples output{Samples(100, 7.0f), Samples(100, 7.0f)};
    float* in[] = {const_cast<float*>(input.left.data()), const_cast<float*>(input.right.data())};
    float* out[] = {output.left.data(), output.right.data()};
    int produced = 0;
    unprepared.Transform(in, 100, out, &produced);
    EXPECT_EQ(produced, 100);
    EXPECT_EQ(output.left, Samples(100));
    EXPECT_EQ(output.right, Samples(100));
}

TEST(Engine, IsSilentWithFramesThatAreNoPowerOfTwo) {
    const StereoSamples input = StereoNoise(500);
    CCriticalSection lock;
    CVocafadeUnit unit;
    for (const int size : {1, 0, -2048, 3, 100, 2049, 1 << 30}) {
        StereoSamples output{Samples(500, 7.0f), Samples(500, 7.0f)};
        int produced = 0;
        const auto powerWith = [&](int frame, int overlap) {
            unit.Init(frame, 44100, overlap, &lock);
            unit.Operate(input.left.data(), input.right.data(), 500, output.left.data(), output.right.data(),
                         &produced);
            return Power(output.left) + Power(output.right);
        };
        EXPECT_GT(powerWith(64, 6), 0.0); // what was there before does not sound
        EXPECT_EQ(powerWith(size, size), 0.0) << size;
        EXPECT_EQ(produced, 500);
    }
}

TEST(Engine, LeavesOutputsAloneWhileOffAndPlaysTheOldTailOutFirst) {
    const StereoSamples input = StereoNoise(4000);
    Engine engine;
    engine.Run(input);
    engine.manager.set_Activate(false);
    Samples left(100, 7.0f);
    Samples right(100, 8.0f);
    engine.Block(input.left.data(), input.right.data(), 100, left.data(), right.data());
    EXPECT_EQ(left, Samples(100, 7.0f));
    EXPECT_EQ(right, Samples(100, 8.0f));
    engine.Block(nullptr, nullptr, 0, nullptr, nullptr);

    engine.manager.set_Activate(true);
    const Samples silence(4000);
    const StereoSamples tail = engine.Run({silence, silence});
    EXPECT_GT(Power(tail.left), 1e-4);
}

TEST(Engine, RecoversFromWhatIsNoSoundWithinOneFrameAndOneHop) {
    using Limits = std::numeric_limits<float>;
    for (const float bad :
         {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(), 1e30f, 1e20f, 1e16f}) {
        StereoSamples input = StereoNoise(20000);
        std::fill_n(input.left.begin() + 6000, 700, bad);
        const StereoSamples output = Engine().Run(input);
        const std::size_t clean = 6000 + 700 + 2048 + kHop;
        EXPECT_TRUE(AllFinite(output.left, clean)) << bad;
        EXPECT_TRUE(AllFinite(output.right, clean)) << bad;
        EXPECT_GT(Power(output.left, clean), 0.01) << bad; // and it is sound again
        EXPECT_LT(Power(output.left, clean), 10.0) << bad;
    }
}

#ifdef VOCAFADE_SANITIZED
constexpr std::size_t kLongSeconds = 20; // the precision is no concern of a sanitizer
#else
constexpr std::size_t kLongSeconds = 600;
#endif

/// The worst fidelity in dB, over the last ten of `kLongSeconds` seconds, of what passes untouched; `second`
/// gives the input of each.
template <typename Second>
double WorstFitAfterALongTime(Second second) {
    constexpr std::size_t count = 44100;
    Engine engine(kRate, 20000, 20); // nothing is removed
    double worst = 1e9;
    for (std::size_t i = 0; i < kLongSeconds; ++i) {
        const StereoSamples& input = second(i);
        const StereoSamples output = engine.Run(input);
        if (i + 10 < kLongSeconds) continue;
        worst = std::min({worst, FitDb(input.left.data(), output.left.data() + kLatency, count - kLatency),
                          FitDb(input.right.data(), output.right.data() + kLatency, count - kLatency)});
    }
    return worst;
}

TEST(Engine, KeepsItsFidelityForTenMinutes) {
    EXPECT_GE(WorstFitAfterALongTime([](std::size_t second) {
                  const auto seed = static_cast<unsigned>(2 * second);
                  return StereoSamples{Noise(44100, seed), Noise(44100, seed + 1)};
              }),
              31.0);
    // A held chord rounds in the same way at every hop, so what noise averages out would add up here.
    const StereoSamples chord{Chord(kRate, 0.0), Chord(kRate, 1.0)};
    EXPECT_GE(WorstFitAfterALongTime([&chord](std::size_t) -> const StereoSamples& { return chord; }), 41.0);
}

#if defined(__SSE2__)
TEST(Engine, MeetsNoDenormalsThatWouldSlowItDown) {
    const auto meetsDenormals = [](float amplitude) {
        Engine engine;
        StereoSamples data{Noise(44100, 1, amplitude), Noise(44100, 2, amplitude)};
        float* channels[] = {data.left.data(), data.right.data()};
        int produced = 0;
        _mm_setcsr(_mm_getcsr() & ~_MM_EXCEPT_MASK);
        engine.manager.Transform(channels, 44100, channels, &produced);
        return (_mm_getcsr() & _MM_EXCEPT_DENORM) != 0;
    };
    EXPECT_TRUE(meetsDenormals(1e-39f)) << "this test sees them";
    const AudioFloatMode mode;
    EXPECT_FALSE(meetsDenormals(1e-39f));
    EXPECT_FALSE(meetsDenormals(1e-36f)) << "whose products are denormal";
}
#endif

} // namespace
} // namespace vocafade::test
