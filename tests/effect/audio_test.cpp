// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "base/text_encoding.h"
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <cmath>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vocafade::test {
namespace {

constexpr std::int32_t kBlock = 512;

class Audio : public WithSettings {
  protected:
    Audio() {
        effect.open();
        effect.setSampleRate(44100.0f);
        effect.setBlockSize(kBlock);
        effect.resume();
        effect.startProcess();
    }

    void Process(const Samples& left, const Samples& right) {
        outL.assign(left.size(), 9.0f);
        outR.assign(right.size(), 9.0f);
        for (std::size_t done = 0; done < left.size(); done += kBlock) {
            const std::size_t count = std::min<std::size_t>(kBlock, left.size() - done);
            float* in[] = {const_cast<float*>(&left[done]), const_cast<float*>(&right[done])};
            float* out[] = {&outL[done], &outR[done]};
            effect.processReplacing(in, out, static_cast<std::int32_t>(count));
        }
    }

    struct Vu {
        float inL, inR, outL, outR;
    };
    Vu Meters() {
        Vu vu{};
        effect.GetVU(&vu.inL, &vu.inR, &vu.outL, &vu.outR);
        return vu;
    }

    AVocafade effect{SilentHost};
    Samples outL;
    Samples outR;
};

TEST_F(Audio, BypassIsExactAndItsMetersFollowTheInput) {
    const Samples left = Noise(2000, 1);
    Samples right = Noise(2000, 2, 0.25f);
    right[3] = std::numeric_limits<float>::denorm_min();
    right[4] = -0.0f;
    effect.setParameter(0, 0.0f);
    Process(left, right);
    EXPECT_EQ(std::memcmp(left.data(), outL.data(), left.size() * 4), 0);
    EXPECT_EQ(std::memcmp(right.data(), outR.data(), right.size() * 4), 0);
    const Vu vu = Meters();
    EXPECT_GT(vu.inL, 0.4f);
    EXPECT_NEAR(vu.inR, 0.25f, 0.05f);
    EXPECT_EQ(vu.outL, vu.inL);
    EXPECT_EQ(vu.outR, vu.inR);
}

TEST_F(Audio, MetersShowPeaksOfTheLastBlockScaledByTheLevels) {
    Samples left(kBlock);
    left[100] = -1.0f;
    const std::uint16_t before = effect.GetProcessCounter();
    Process(left, Samples(kBlock, 0.5f));
    EXPECT_EQ(Meters().inL, 1.0f);
    EXPECT_EQ(Meters().inR, 0.5f);
    EXPECT_EQ(static_cast<std::uint16_t>(effect.GetProcessCounter() - before), 1);
    effect.setParameterFromDiaplay(2, -12.0f);
    Process(left, left);
    EXPECT_FLOAT_EQ(Meters().inL, 0.25f);
    Process(Samples(kBlock), Samples(kBlock));
    EXPECT_EQ(Meters().inL, 0.0f);
    EXPECT_EQ(effect.GetClip(), 0);
}

TEST_F(Audio, OutputMetersIgnoreABoostAndFollowACut) {
    const Samples left = Sine(44100 / 2, 200.0, 44100.0);
    const Samples right(left.size());
    const auto lastBlockPeak = [&] {
        float peak = 0.0f;
        for (std::size_t i = left.size() - left.size() % kBlock; i < left.size(); ++i) {
            peak = std::max(peak, std::fabs(outL[i]));
        }
        return peak;
    };
    effect.setParameter(1, 1.0f); // +6 dB
    Process(left, right);
    EXPECT_FLOAT_EQ(Meters().outL, lastBlockPeak());
    effect.setParameterFromDiaplay(1, -12.0f);
    Process(left, right);
    EXPECT_FLOAT_EQ(Meters().outL, lastBlockPeak() * 0.25f);
}

TEST_F(Audio, EveryParameterReachesTheEngine) {
    CVocafadeManager engine;
    tWAVEFORMATEX format{};
    format.nChannels = 2;
    format.nSamplesPerSec = 44100;
    const Samples left = Noise(8192, 21);
    const Samples right = Noise(8192, 22);
    const auto expectEngineWith = [&](float output, float input, unsigned low, unsigned high, int position) {
        engine.SetMediaType(&format);
        engine.set_OutputLevel(output);
        engine.set_InputLevel(input);
        engine.set_VocafadeLoFS(low);
        engine.set_VocafadeHiFS(high);
        engine.set_LRate(position);
        Samples expected[] = {Samples(left.size()), Samples(left.size())};
        for (std::size_t done = 0; done < left.size(); done += kBlock) {
            const AudioFloatMode mode;
            float* in[] = {const_cast<float*>(&left[done]), const_cast<float*>(&right[done])};
            float* out[] = {&expected[0][done], &expected[1][done]};
            int produced = 0;
            engine.Transform(in, kBlock, out, &produced);
        }
        effect.startProcess();
        effect.setParameter(5, effect.getParameter(5)); // a start aims at the middle
        Process(left, right);
        EXPECT_EQ(outL, expected[0]);
        EXPECT_EQ(outR, expected[1]);
    };
    // Levels go in as they are, frequencies and position in whole units of their own.
    const float values[] = {1.0f, 0.75f, 0.25f, 0.125f, 0.5f, 0.25f};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        effect.setParameter(i, values[i]);
    }
    expectEngineWith(0.75f, 0.25f, 2517, 10010, 31);
    effect.setParameterFromDiaplay(3, 150.0f);
    effect.setParameterFormUI(5, 1.0f);
    expectEngineWith(0.75f, 0.25f, 150, 10010, 127);
    // Levels are held between 0 and 1; NaN, which the display shows as the minimum, sounds so, too.
    effect.setParameter(1, -std::numeric_limits<float>::infinity());
    expectEngineWith(0.0f, 0.25f, 150, 10010, 127);
    effect.setParameter(1, std::numeric_limits<float>::infinity());
    effect.setParameter(2, std::numeric_limits<float>::quiet_NaN());
    expectEngineWith(1.0f, 0.0f, 150, 10010, 127);
}

TEST_F(Audio, RunsInAHostThatNeverResumesIt) {
    AVocafade bare(SilentHost);
    const Samples voice = Sine(8192, 1000.0, 44100.0);
    outL.assign(voice.size(), 9.0f);
    outR = outL;
    float* in[] = {const_cast<float*>(voice.data()), const_cast<float*>(voice.data())};
    float* out[] = {outL.data(), outR.data()};
    bare.processReplacing(in, out, static_cast<std::int32_t>(voice.size()));
    EXPECT_EQ(outL[1000], 0.0f) << "the delay, not a copy of the input";
    EXPECT_LT(Power(outL, 4096), 1e-9) << "what its parameters show is what it does";
}

TEST_F(Audio, SuspendAndResumeOverrideTheProgramsSwitch) {
    effect.setParameter(0, 0.0f);
    effect.suspend();
    EXPECT_EQ(effect.getParameter(0), 0.0f);
    effect.resume();
    EXPECT_EQ(effect.getParameter(0), 1.0f);
    EXPECT_EQ(effect.Program(0).values[0], 0.0f) << "the record is not touched";
    effect.setProgram(0);
    EXPECT_EQ(effect.getParameter(0), 0.0f);
}

TEST_F(Audio, ReturnsToTheCentreAtEveryNewFormatUntilPositionIsSentAgain) {
    const Samples tone = Noise(8000, 3);
    const auto removesCentre = [&] {
        Process(tone, tone);
        return Power(outL, 4096);
    };
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
        const double aside = removesCentre();
        restart(effect);
        const double centred = removesCentre();
        EXPECT_LT(centred, 0.5 * aside);
        EXPECT_EQ(effect.getParameter(5), 20.0f / 127.0f) << "the parameter still says so";
    }
    effect.setProgram(0);
    EXPECT_GT(removesCentre(), 0.01);
}

TEST_F(Audio, DoublePrecisionGivesWhatSingleGives) {
    const Samples left = Noise(6000, 5);
    const Samples right = Noise(6000, 6);
    Process(left, right);
    const Samples expectedL = outL;
    effect.startProcess();
    std::vector<double> in[2] = {{left.begin(), left.end()}, {right.begin(), right.end()}};
    std::vector<double> out[2] = {std::vector<double>(6000), std::vector<double>(6000)};
    const std::uint16_t before = effect.GetProcessCounter();
    for (std::size_t done = 0; done < 6000; done += 500) {
        double* ins[] = {&in[0][done], &in[1][done]};
        double* outs[] = {&out[0][done], &out[1][done]};
        effect.processDoubleReplacing(ins, outs, 500);
    }
    EXPECT_EQ(Samples(out[0].begin(), out[0].end()), expectedL);
    EXPECT_EQ(static_cast<std::uint16_t>(effect.GetProcessCounter() - before), 24) << "twice a block";
    // A block that was never announced comes out whole, too, is one block, and has the peaks of all of it.
    in[0][100] = 3.0;
    in[1][5900] = -2.0;
    double* ins[] = {in[0].data(), in[1].data()};
    double* outs[] = {out[0].data(), out[1].data()};
    for (const float onOff : {1.0f, 0.0f}) {
        effect.setParameter(0, onOff);
        effect.startProcess();
        const std::uint16_t start = effect.GetProcessCounter();
        effect.processDoubleReplacing(ins, outs, 6000);
        EXPECT_EQ(static_cast<std::uint16_t>(effect.GetProcessCounter() - start), 2);
        EXPECT_EQ(Meters().inL, 3.0f);
        EXPECT_EQ(Meters().inR, 2.0f);
        const Samples gave[] = {{out[0].begin(), out[0].end()}, {out[1].begin(), out[1].end()}};
        const auto peak = [](const Samples& of) {
            return std::abs(*std::max_element(of.begin(), of.end(),
                                              [](float a, float b) { return std::abs(a) < std::abs(b); }));
        };
        EXPECT_EQ(Meters().outL, peak(gave[0]));
        EXPECT_EQ(Meters().outR, peak(gave[1]));
        // The same in one block of the other precision.
        const Samples single[] = {{in[0].begin(), in[0].end()}, {in[1].begin(), in[1].end()}};
        effect.startProcess();
        Process(single[0], single[1]);
        EXPECT_EQ(outL, gave[0]);
        EXPECT_EQ(outR, gave[1]);
    }
}

TEST_F(Audio, TakesOddBlocksRatesAndSwitchesSafely) {
    effect.processReplacing(nullptr, nullptr, 0);
    effect.processReplacing(nullptr, nullptr, -7);
    effect.processDoubleReplacing(nullptr, nullptr, 0);
    for (const float rate : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity(), 1e20f, 8000.0f, 384000.0f}) {
        effect.setSampleRate(rate);
    }
    effect.setBlockSize(0);
    effect.setBlockSize(-100);
    effect.setBlockSize(std::numeric_limits<std::int32_t>::max());
    effect.setParameter(0,
                        std::numeric_limits<float>::quiet_NaN()); // counts as on here, as off in the engine
    const Samples noise = Noise(3000, 7);
    Process(noise, noise);
    EXPECT_EQ(outL, noise);
    effect.resume();
    Process(Samples(3000, std::numeric_limits<float>::quiet_NaN()), noise);
    effect.setSampleRate(44100.0f);
    const Samples longer = Noise(10000, 8);
    Process(longer, noise.size() < longer.size() ? Noise(10000, 9) : noise);
    for (const float s : outL) {
        ASSERT_TRUE(std::isfinite(s));
    }
}

#if defined(__SSE2__)
TEST_F(Audio, IsIndifferentToTheHostsFloatingPointModeAndRestoresIt) {
    const Samples left = Noise(5000, 1, 1e-30f);
    const Samples right = Noise(5000, 2, 1e-30f);
    Process(left, right);
    const Samples expected = outL;
    const unsigned normal = _mm_getcsr();
    const unsigned odd = 0x1F80 | 0x6000 | 0x8000; // towards zero, flushing
    effect.startProcess();
    _mm_setcsr(odd);
    Process(left, right);
    EXPECT_EQ(_mm_getcsr() & ~0x3FU, odd);
    _mm_setcsr(normal);
    EXPECT_EQ(outL, expected);
}
#endif

TEST(TextEncoding, ShowsShiftJisAndKeepsEveryCharacterOnTheWayBack) {
    const char kana[] = "\x83\x7b\x81\x5b\x83\x4a\x83\x8b"; // "vocal" in katakana
    EXPECT_STREQ(CheckSJISAndToUFT8(kana), "ボーカル");
    EXPECT_STREQ(UTF8ToSJSINS("ボーカル"), kana);
    EXPECT_STREQ(CheckSJISAndToUFT8("plain \\ ~"), "plain \\ ~");
    EXPECT_STREQ(CheckSJISAndToUFT8("a\xff"
                                    "b"),
                 "a\xEF\xBF\xBD"
                 "b");
    EXPECT_STREQ(CheckSJISAndToUFT8("cut\x83"), "cut\xEF\xBF\xBD");
    EXPECT_STREQ(UTF8ToSJSINS("note \xF0\x9F\x8E\xB5!"), "note ?!");
    EXPECT_TRUE(IsDBCSLeadByte(0x83));
    EXPECT_FALSE(IsDBCSLeadByte('a'));
    EXPECT_FALSE(IsDBCSLeadByte(0xB1)) << "half-width kana are single bytes";
}

} // namespace
} // namespace vocafade::test
