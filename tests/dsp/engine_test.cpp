// SPDX-License-Identifier: MIT
// The engine through its front: what becomes of sound, whatever the blocks.
#include "base/float_mode.h"
#include "dsp/vocafade_manager.h"
#include "tests/dsp/plain_model.h"

#include <gtest/gtest.h>
#include <limits>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vocafade::test {
namespace {

constexpr std::size_t kLatency = 1707;
constexpr std::size_t kHop = 341;

/// An engine with a band, fed in blocks.
class Engine {
  public:
    explicit Engine(unsigned low = 0, unsigned high = 30000) {
        Start();
        manager.set_VocafadeLoFS(low);
        manager.set_VocafadeHiFS(high);
    }

    void Start() {
        tWAVEFORMATEX format{};
        format.nChannels = 2;
        format.nSamplesPerSec = 44100;
        manager.SetMediaType(&format);
    }

    StereoSamples Run(const StereoSamples& input) { return Run(manager, input); }

    static StereoSamples Run(CVocafadeManager& engine, const StereoSamples& input) {
        return InBlocks(input, {512, 1, 700}, [&engine](float** in, float** out, std::int32_t count) {
            const AudioFloatMode mode;
            int produced = -1;
            engine.Transform(in, count, out, &produced);
            EXPECT_EQ(produced, count);
        });
    }

    CVocafadeManager manager;
};

#if !defined(VOCAFADE_SANITIZED) // the model's sums alone would take longer than all other tests
TEST(Engine, AgreesWithAnIndependentPlainModel) {
    StereoSamples input = StereoNoise(22050);
    const Samples tone = Sine(22050, 997.0, 44100.0, 0.4f);
    for (std::size_t i = 0; i < tone.size(); ++i) {
        input.left[i] += tone[i];
        input.right[i] += 0.5f * tone[i];
    }
    // The last one's limits are the very frequencies of two bins: both belong to the band.
    for (const ModelSettings& settings :
         {ModelSettings{64, 20, 20000}, ModelSettings{30, 400, 9000}, ModelSettings{100, 400, 9000},
          ModelSettings{127, 20, 20000}, ModelSettings{64, 9000, 400}, ModelSettings{64, 409, 8979}}) {
        Engine engine(settings.low, settings.high);
        engine.manager.set_LRate(settings.position);
        const StereoSamples output = engine.Run(input);
        const StereoSamples model = PlainModel(input, settings);
        EXPECT_GT(FitDb(model, output, 0), 55.0) << settings.position;
        EXPECT_NEAR(Power(output.left) / Power(model.left), 1.0, 1e-3);
    }
}
#endif

TEST(Engine, StaysSilentForExactlyItsLatency) {
    for (const unsigned high : {20000U, 20U}) { // with and without a band: leaks of modified frames count
        Engine engine(400, high);
        for (int pass = 0; pass < 2; ++pass) { // a new start is as silent as the first
            engine.Start();
            const StereoSamples output = engine.Run(StereoNoise(6000));
            for (const Samples& side : {output.left, output.right})
                EXPECT_EQ(Samples(side.begin(), side.begin() + kLatency), Samples(kLatency));
            EXPECT_NE(output.left[kLatency], 0.0f);
        }
    }
}

TEST(Engine, TakesOddPositionsAsDocumented) {
    const auto at = [](int position) {
        Engine engine;
        engine.manager.set_LRate(position);
        return engine.Run(StereoNoise(8000)).left;
    };
    EXPECT_EQ(at(0), at(1));
    EXPECT_EQ(at(-50), at(1));
    EXPECT_NE(at(63), at(64));
    EXPECT_TRUE(AllFinite(at(1000))); // a negative balance is used as it is
}

TEST(Engine, AppliesLevelsAsPlainFactors) {
    const Samples plain = Engine().Run(StereoNoise(8000)).left;
    Engine engine;
    engine.manager.set_InputLevel(0.25f);
    engine.manager.set_OutputLevel(0.5f);
    const Samples scaled = engine.Run(StereoNoise(8000)).left;
    for (std::size_t i = 0; i < plain.size(); ++i)
        ASSERT_NEAR(scaled[i], plain[i] * 0.125f, 2e-6f) << i;
}

TEST(Engine, WritesItsOutputWhateverWasCalledBefore) {
    const StereoSamples input = StereoNoise(8000);
    Engine engine;
    engine.manager.SetSampleSize(100);
    engine.manager.FreeWorkArea();
    EXPECT_EQ(engine.Run(input), Engine().Run(input));

    CVocafadeManager unprepared; // no format yet
    EXPECT_EQ(Engine::Run(unprepared, input), (StereoSamples{Samples(8000), Samples(8000)}));
}

TEST(Engine, IsSilentWithFramesThatAreNoPowerOfTwo) {
    CCriticalSection lock;
    CVocafadeUnit unit;
    const auto powerWith = [&](int frame, int overlap) {
        unit.Init(frame, 44100, overlap, &lock);
        const StereoSamples output =
            InBlocks(StereoNoise(500), {500}, [&unit](float** in, float** out, std::int32_t count) {
                int produced = 0;
                unit.Operate(in[0], in[1], count, out[0], out[1], &produced);
                EXPECT_EQ(produced, count);
            });
        return Power(output.left) + Power(output.right);
    };
    for (const int size : {1, 0, -2048, 3, 100, 2049, 1 << 30}) {
        EXPECT_GT(powerWith(64, 6), 0.0); // what was there before does not sound
        EXPECT_EQ(powerWith(size, size), 0.0) << size;
    }
}

TEST(Engine, LeavesOutputsAloneWhileOffAndPlaysTheOldTailOutFirst) {
    Engine engine;
    engine.Run(StereoNoise(4000));
    engine.manager.set_Activate(false);
    EXPECT_EQ(engine.Run(StereoNoise(100)),
              (StereoSamples{Samples(100, kUnwritten), Samples(100, kUnwritten)}));
    int produced = -1;
    float* nothing[] = {nullptr, nullptr};
    engine.manager.Transform(nothing, 0, nothing, &produced);
    EXPECT_EQ(produced, 0);

    engine.manager.set_Activate(true);
    EXPECT_GT(Power(engine.Run({Samples(4000), Samples(4000)}).left), 1e-4);
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
    Engine engine(20000, 20); // nothing is removed
    double worst = 1e9;
    for (std::size_t i = 0; i < kLongSeconds; ++i) {
        const StereoSamples& input = second(i);
        const StereoSamples output = engine.Run(input);
        if (i + 10 >= kLongSeconds) worst = std::min(worst, FitDb(input, output, kLatency));
    }
    return worst;
}

TEST(Engine, KeepsItsFidelityForTenMinutes) {
    EXPECT_GE(WorstFitAfterALongTime(
                  [](std::size_t second) { return StereoNoise(44100, static_cast<unsigned>(2 * second)); }),
              31.0);
    // A held chord rounds in the same way at every hop, so what noise averages out would add up here.
    const StereoSamples chord{Chord(44100.0, 0.0), Chord(44100.0, 1.0)};
    EXPECT_GE(WorstFitAfterALongTime([&chord](std::size_t) -> const StereoSamples& { return chord; }), 41.0);
}

#if defined(__SSE2__)
TEST(Engine, MeetsNoDenormalsThatWouldSlowItDown) {
    const auto meetsDenormals = [](float amplitude) {
        Engine engine;
        StereoSamples data = StereoNoise(44100, 1, amplitude);
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
