// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "base/text_encoding.h"
#include "tests/support/open_effect.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <limits>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vocafade::test {
namespace {

constexpr std::int32_t kBlock = 512;
using Limits = std::numeric_limits<float>;

struct Vu {
    float inL, inR, outL, outR;
    bool operator==(const Vu&) const = default;
};

class Audio : public WithSettings {
  protected:
    Audio() {
        effect.setSampleRate(44100.0f);
        effect.setBlockSize(kBlock);
        effect.resume();
        effect.startProcess();
    }

    StereoSamples Process(const StereoSamples& sound) {
        return InBlocks(sound, {kBlock}, [this](float** in, float** out, std::int32_t count) {
            effect.processReplacing(in, out, count);
        });
    }

    /// The same in double precision.
    StereoSamples ProcessDouble(const StereoSamples& sound, std::size_t block) {
        return InBlocks(sound, {block}, [this](float** in, float** out, std::int32_t count) {
            std::vector<double> inputs[] = {{in[0], in[0] + count}, {in[1], in[1] + count}};
            std::vector<double> outputs[] = {inputs[1], inputs[0]};
            double* ins[] = {inputs[0].data(), inputs[1].data()};
            double* outs[] = {outputs[0].data(), outputs[1].data()};
            effect.processDoubleReplacing(ins, outs, count);
            for (std::size_t side = 0; side < 2; ++side)
                std::transform(outs[side], outs[side] + count, out[side],
                               [](double sample) { return static_cast<float>(sample); });
        });
    }

    Vu Meters() {
        Vu vu{};
        effect.GetVU(&vu.inL, &vu.inR, &vu.outL, &vu.outR);
        return vu;
    }

    /// By how much the counter of blocks goes up.
    template <typename Work>
    int Counted(Work work) {
        const std::uint16_t before = effect.GetProcessCounter();
        work();
        return static_cast<std::uint16_t>(effect.GetProcessCounter() - before);
    }

    OpenEffect effect;
};

TEST_F(Audio, BypassIsExactAndItsMetersFollowTheInput) {
    StereoSamples song{Noise(2000, 1), Noise(2000, 2, 0.25f)};
    song.right[3] = Limits::denorm_min();
    song.right[4] = -0.0f;
    effect.setParameter(0, 0.0f);
    const StereoSamples out = Process(song);
    EXPECT_TRUE(SameBits(out.left, song.left, 2000));
    EXPECT_TRUE(SameBits(out.right, song.right, 2000));
    const std::size_t last = 2000 - 2000 % kBlock;
    const float peaks[] = {Peak(song.left, last), Peak(song.right, last)};
    EXPECT_EQ(Meters(), (Vu{peaks[0], peaks[1], peaks[0], peaks[1]}));
}

TEST_F(Audio, MetersShowPeaksOfTheLastBlockScaledByTheLevels) {
    StereoSamples click{Samples(kBlock), Samples(kBlock, 0.5f)};
    click.left[100] = -1.0f;
    EXPECT_EQ(Counted([&] { Process(click); }), 1);
    EXPECT_EQ(Meters().inL, 1.0f);
    EXPECT_EQ(Meters().inR, 0.5f);
    effect.setParameterFromDiaplay(2, -12.0f);
    Process(click);
    EXPECT_FLOAT_EQ(Meters().inL, 0.25f);
    Process({Samples(kBlock), Samples(kBlock)});
    EXPECT_EQ(Meters().inL, 0.0f);
    EXPECT_EQ(effect.GetClip(), 0);
}

TEST_F(Audio, OutputMetersIgnoreABoostAndFollowACut) {
    const StereoSamples tone{Sine(44100 / 2, 200.0, 44100.0), Samples(44100 / 2)};
    const auto lastBlockPeak = [&] {
        return Peak(Process(tone).left, tone.left.size() - tone.left.size() % kBlock);
    };
    effect.setParameter(1, 1.0f); // +6 dB
    const float boosted = lastBlockPeak();
    EXPECT_FLOAT_EQ(Meters().outL, boosted);
    effect.setParameterFromDiaplay(1, -12.0f);
    const float cut = lastBlockPeak();
    EXPECT_FLOAT_EQ(Meters().outL, cut * 0.25f);
}

TEST_F(Audio, EveryParameterReachesTheEngine) {
    CVocafadeManager engine;
    tWAVEFORMATEX format{};
    format.nChannels = 2;
    format.nSamplesPerSec = 44100;
    const StereoSamples song = StereoNoise(8192, 21);
    const auto expectEngineWith = [&](float output, float input, unsigned low, unsigned high, int position) {
        engine.SetMediaType(&format);
        engine.set_OutputLevel(output);
        engine.set_InputLevel(input);
        engine.set_VocafadeLoFS(low);
        engine.set_VocafadeHiFS(high);
        engine.set_LRate(position);
        effect.startProcess();
        effect.setParameter(5, effect.getParameter(5)); // a start aims at the middle
        EXPECT_EQ(Process(song), InBlocks(song, {kBlock}, [&](float** in, float** out, std::int32_t count) {
                      const AudioFloatMode mode;
                      int produced = 0;
                      engine.Transform(in, count, out, &produced);
                  }));
    };
    // Levels go in as they are, frequencies and position in whole units of their own.
    const float values[] = {1.0f, 0.75f, 0.25f, 0.125f, 0.5f, 0.25f};
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        effect.setParameter(i, values[i]);
    expectEngineWith(0.75f, 0.25f, 2517, 10010, 31);
    effect.setParameterFromDiaplay(3, 150.0f);
    effect.setParameterFormUI(5, 1.0f);
    expectEngineWith(0.75f, 0.25f, 150, 10010, 127);
    // Levels are held between 0 and 1; NaN, which the display shows as the minimum, sounds so, too.
    effect.setParameter(1, -Limits::infinity());
    expectEngineWith(0.0f, 0.25f, 150, 10010, 127);
    effect.setParameter(1, Limits::infinity());
    effect.setParameter(2, Limits::quiet_NaN());
    expectEngineWith(1.0f, 0.0f, 150, 10010, 127);
}

TEST_F(Audio, RunsInAHostThatNeverResumesIt) {
    AVocafade bare(SilentHost);
    Samples voice = Sine(8192, 1000.0, 44100.0);
    StereoSamples out{voice, voice};
    float* in[] = {voice.data(), voice.data()};
    float* outs[] = {out.left.data(), out.right.data()};
    bare.processReplacing(in, outs, 8192);
    EXPECT_EQ(out.left[1000], 0.0f) << "the delay, not a copy of the input";
    EXPECT_LT(Power(out.left, 4096), 1e-9) << "what its parameters show is what it does";
}

TEST_F(Audio, ReturnsToTheCentreAtEveryNewFormatUntilPositionIsSentAgain) {
    const Samples tone = Noise(8000, 3);
    const auto powerLeft = [&] { return Power(Process({tone, tone}).left, 4096); };
    const auto restarts = {+[](AVocafade& e) { e.setSampleRate(44100.0f); },
                           +[](AVocafade& e) { e.setSampleRate(0.0f); }, // refused, but a call like any other
                           +[](AVocafade& e) { e.setBlockSize(kBlock); },
                           +[](AVocafade& e) { e.setBlockSize(-1); },
                           +[](AVocafade& e) {
                               e.suspend();
                               e.resume();
                           },
                           +[](AVocafade& e) { e.startProcess(); }};
    effect.setParameter(3, 0.0f);
    effect.setParameter(4, 1.0f);
    for (const auto restart : restarts) {
        effect.setParameter(5, 20.0f / 127.0f);
        const double aside = powerLeft();
        restart(effect);
        EXPECT_LT(powerLeft(), 0.5 * aside);
        EXPECT_EQ(effect.getParameter(5), 20.0f / 127.0f) << "the parameter still says so";
    }
    effect.setProgram(0);
    EXPECT_GT(powerLeft(), 0.01);
}

TEST_F(Audio, DoublePrecisionGivesWhatSingleGives) {
    StereoSamples song = StereoNoise(6000, 5);
    const StereoSamples expected = Process(song);
    effect.startProcess();
    EXPECT_EQ(Counted([&] { EXPECT_EQ(ProcessDouble(song, 500), expected); }), 24) << "twice a block";
    // A block that was never announced comes out whole, too, is one block, and has the peaks of all of it.
    song.left[100] = 3.0f;
    song.right[5900] = -2.0f;
    for (const float onOff : {1.0f, 0.0f}) {
        effect.setParameter(0, onOff);
        effect.startProcess();
        StereoSamples out;
        EXPECT_EQ(Counted([&] { out = ProcessDouble(song, 6000); }), 2);
        EXPECT_EQ(Meters(), (Vu{3.0f, 2.0f, Peak(out.left), Peak(out.right)}));
        effect.startProcess();
        EXPECT_EQ(Process(song), out);
    }
}

TEST_F(Audio, TakesOddBlocksRatesAndSwitchesSafely) {
    effect.processReplacing(nullptr, nullptr, 0);
    effect.processReplacing(nullptr, nullptr, -7);
    effect.processDoubleReplacing(nullptr, nullptr, 0);
    for (const float rate : {0.0f, -1.0f, Limits::quiet_NaN(), Limits::infinity(), 1e20f, 8000.0f, 384000.0f})
        effect.setSampleRate(rate);
    for (const std::int32_t size : {0, -100, std::numeric_limits<std::int32_t>::max()})
        effect.setBlockSize(size);
    effect.setParameter(0, Limits::quiet_NaN()); // counts as on here, as off in the engine
    const StereoSamples noise = StereoNoise(10000, 7);
    EXPECT_EQ(Process(noise), noise);
    effect.resume();
    Process({Samples(3000, Limits::quiet_NaN()), Noise(3000, 7)});
    effect.setSampleRate(44100.0f);
    EXPECT_TRUE(AllFinite(Process(noise).left));
}

#if defined(__SSE2__)
TEST_F(Audio, IsIndifferentToTheHostsFloatingPointModeAndRestoresIt) {
    const StereoSamples faint = StereoNoise(5000, 1, 1e-30f);
    const StereoSamples expected = Process(faint);
    const unsigned normal = _mm_getcsr();
    const unsigned odd = 0x1F80 | 0x6000 | 0x8000; // towards zero, flushing
    effect.startProcess();
    _mm_setcsr(odd);
    const StereoSamples out = Process(faint);
    EXPECT_EQ(_mm_getcsr() & ~0x3FU, odd);
    _mm_setcsr(normal);
    EXPECT_EQ(out, expected);
}
#endif

TEST(TextEncoding, ShowsShiftJisAndKeepsEveryCharacterOnTheWayBack) {
    const char kana[] = "\x83\x7b\x81\x5b\x83\x4a\x83\x8b"; // "vocal" in katakana
    EXPECT_STREQ(CheckSJISAndToUFT8(kana), "ボーカル");
    EXPECT_STREQ(UTF8ToSJSINS("ボーカル"), kana);
    EXPECT_STREQ(CheckSJISAndToUFT8("plain \\ ~"), "plain \\ ~");
    EXPECT_STREQ(CheckSJISAndToUFT8("no\xff"), "no\xEF\xBF\xBD");
    EXPECT_STREQ(CheckSJISAndToUFT8("\xff no"), "\xEF\xBF\xBD no");
    EXPECT_STREQ(CheckSJISAndToUFT8("cut\x83"), "cut\xEF\xBF\xBD");
    EXPECT_STREQ(UTF8ToSJSINS("note \xF0\x9F\x8E\xB5!"), "note ?!");
    EXPECT_TRUE(IsDBCSLeadByte(0x83));
    EXPECT_FALSE(IsDBCSLeadByte('a'));
    EXPECT_FALSE(IsDBCSLeadByte(0xB1)) << "half-width kana are single bytes";
}

} // namespace
} // namespace vocafade::test
