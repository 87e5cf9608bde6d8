// SPDX-License-Identifier: MIT
#include "apps/demo/measure.h"
#include "apps/demo/stereo_file.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

constexpr int kRate = 44100;
constexpr std::size_t kLength = 4 * kRate;

/// A tone in both channels at the given gains.
StereoSound Tone(double frequency, float left, float right) {
    StereoSound sound(kLength);
    const Samples sine = Sine(kLength, frequency, kRate, 0.1f);
    for (std::size_t i = 0; i < kLength; ++i)
        sound[i] = {sine[i] * left, sine[i] * right};
    return sound;
}

StereoSound Sum(const StereoSound& a, const StereoSound& b, float gainA = 1.0f, float gainB = 1.0f) {
    StereoSound sum(a.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        sum[i] = {gainA * a[i].left + gainB * b[i].left, gainA * a[i].right + gainB * b[i].right};
    return sum;
}

float Amplitude(double decibels) { return static_cast<float>(std::pow(10.0, decibels / 20.0)); }

/// A song of a voice in the middle (1 kHz), a guitar on the left (2.5 kHz) and a bass in the middle (100 Hz),
/// whose rendering the test makes itself, so that every number is known.
class MeasureTest : public ::testing::Test {
  protected:
    MeasureTest() : rest_(Sum(Tone(2500, 1, 0), Tone(100, 1, 1))) {
        WriteWave(folder_ / "voice.wav", voice_, kRate);
        WriteWave(folder_ / "rest.wav", rest_, kRate);
        WriteWave(folder_ / "song.wav", Sum(voice_, rest_), kRate);
    }
    Measurement MeasureAgainst(const StereoSound& rendered, double gain, bool withStems) {
        WriteWave(folder_ / "rendered.wav", rendered, kRate);
        std::optional<Stems> stems;
        if (withStems) stems = {folder_ / "voice.wav", folder_ / "rest.wav"};
        return Measure(folder_ / "song.wav", folder_ / "rendered.wav", {}, gain, stems);
    }

    TempFolder folder_;
    StereoSound voice_ = Tone(1000, 1, 1);
    StereoSound rest_;
};

TEST_F(MeasureTest, KnownCutGivesTheKnownNumber) {
    for (const bool withStems : {true, false}) {
        for (const double cut : {0.0, 6.0, 20.0, 40.0}) {
            SCOPED_TRACE(testing::Message() << cut << " dB, stems: " << withStems);
            const double gain = 1.25; // the effect's own gain must not count
            const StereoSound rendered =
                Sum(voice_, rest_, static_cast<float>(gain) * Amplitude(-cut), static_cast<float>(gain));
            const Measurement result = MeasureAgainst(rendered, gain, withStems);
            EXPECT_TRUE(result.hasVoice);
            EXPECT_TRUE(result.hasRest);
            // Without stems a little of the guitar's skirt counts as middle: nothing against 40 dB but a
            // trace.
            EXPECT_NEAR(result.voiceLossDb, cut, withStems ? 0.1 : 0.2);
            EXPECT_NEAR(result.restKept, 1.0, 0.01);
        }
    }
}

TEST_F(MeasureTest, LossInOnePlaceIsNotHiddenByGainInAnother) {
    // The guitar is gone, the bass twice as loud: of the rest's energy (guitar 1, bass 2) two thirds stay.
    const StereoSound rendered = Sum(voice_, Tone(100, 2, 2), 0.0f);
    for (const bool withStems : {true, false}) {
        const Measurement result = MeasureAgainst(rendered, 1.0, withStems);
        EXPECT_NEAR(result.restKept, 2.0 / 3.0, 0.01);
        EXPECT_NEAR(result.restKeptInBand, 0.0, 0.01);
        EXPECT_NEAR(result.restKeptOutside, 1.0, 0.01);
    }
}

TEST_F(MeasureTest, VoiceOutsideTheBandCountsOnlyInTheOverallNumber) {
    const StereoSound low = Tone(200, 1, 1);
    WriteWave(folder_ / "voice.wav", Sum(voice_, low), kRate);
    WriteWave(folder_ / "song.wav", Sum(Sum(voice_, low), rest_), kRate);
    const StereoSound rendered = Sum(Sum(voice_, low, Amplitude(-30), 1.0f), rest_);
    const Measurement result = MeasureAgainst(rendered, 1.0, true);
    EXPECT_NEAR(result.voiceLossDb, 30.0, 0.1);
    EXPECT_NEAR(result.voiceLossOverallDb, 3.0, 0.1); // one tone of two is left
}

TEST_F(MeasureTest, EmptyMiddleIsSaidToBeEmpty) {
    WriteWave(folder_ / "song.wav", Tone(2500, 1, 0), kRate);
    const Measurement result = MeasureAgainst(Tone(2500, 1, 0), 1.0, false);
    EXPECT_FALSE(result.hasVoice);
    EXPECT_NEAR(result.restKept, 1.0, 0.01);
}

TEST_F(MeasureTest, ComparesAsFarAsBothGo) {
    StereoSound rendered = Sum(voice_, rest_, Amplitude(-12));
    rendered.resize(kLength / 2);
    EXPECT_NEAR(MeasureAgainst(rendered, 1.0, true).voiceLossDb, 12.0, 0.5);
}

TEST_F(MeasureTest, RefusesWhatCannotBeCompared) {
    WriteWave(folder_ / "other.wav", voice_, 48000);
    for (const char* wrong : {"other.wav", "missing.wav"})
        EXPECT_THROW(Measure(folder_ / "song.wav", folder_ / wrong, {}, 1.0, {}), std::runtime_error);
}

} // namespace
} // namespace vocafade::test
