// SPDX-License-Identifier: MIT
// Every preset on a song that it is for: the demonstration's, with its singer moved or transposed.
#include "apps/demo/measure.h"
#include "apps/demo/song.h"
#include "effect/avocafade.h"
#include "effect/identity.h"
#include "effect/presets.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

/// How a singer differs from the demonstration's.
struct Singer {
    double pitch = 1.0; ///< times as high (and as fast)
    float left = 1.0f;
    float right = 1.0f;
};

class PresetsTest : public WithSettings {
  protected:
    void SetUp() override {
#ifdef VOCAFADE_SANITIZED
        GTEST_SKIP() << "it measures the sound, which no sanitizer changes";
#endif
        song_.voice.resize(441000); // ten seconds are enough
        song_.rest.resize(song_.voice.size());
    }

    /// What the preset does to the song with this singer. The band is that of the voice to be taken.
    Measurement Try(std::string_view symbol, const Singer& singer = {}, const Band& voiceBand = {}) {
        const Preset& preset = *std::ranges::find(Presets(), symbol, &Preset::symbol);
        const StereoSound voice = Sing(singer);
        StereoSound mix = song_.rest;
        for (std::size_t i = 0; i < mix.size(); ++i) {
            mix[i].left += voice[i].left;
            mix[i].right += voice[i].right;
        }
        WriteWave(folder_ / "voice.wav", voice, song_.rate);
        WriteWave(folder_ / "rest.wav", song_.rest, song_.rate);
        WriteWave(folder_ / "song.wav", mix, song_.rate);
        WriteWave(folder_ / "rendered.wav", Render(mix, preset), song_.rate);
        // Measured at the factory's level 0 dB; the preset's is louder by what the engine is told.
        const double gain = PassThroughGain() * NormalizeDisplayValue(kParameterOutput, preset.values[1]) /
                            DefaultNormalizedValue(kParameterOutput);
        return Measure(folder_ / "song.wav", folder_ / "rendered.wav", voiceBand, gain,
                       Stems{folder_ / "voice.wav", folder_ / "rest.wav"});
    }

    /// Puts the rattle of a snare drum into the middle, twice a second.
    void AddSnare() {
        const Samples noise = Noise(song_.rest.size(), 1, 0.3f);
        for (std::size_t i = 1; i < noise.size(); ++i) {
            const float strike =
                std::exp(-static_cast<float>(i % 22050) / 3000.0f) * (noise[i] - noise[i - 1]);
            song_.rest[i].left += strike;
            song_.rest[i].right += strike;
        }
    }

  private:
    StereoSound Sing(const Singer& singer) {
        StereoSound voice(song_.voice.size());
        for (std::size_t i = 0; i < voice.size(); ++i) {
            const double at =
                std::fmod(static_cast<double>(i) * singer.pitch, static_cast<double>(voice.size() - 1));
            const auto before = static_cast<std::size_t>(at);
            const float sample = std::lerp(song_.voice[before].left, song_.voice[before + 1].left,
                                           static_cast<float>(at - static_cast<double>(before)));
            voice[i] = {sample * singer.left, sample * singer.right};
        }
        return voice;
    }

    StereoSound Render(StereoSound sound, const Preset& preset) {
        AVocafade effect(nullptr);
        effect.setSampleRate(static_cast<float>(song_.rate));
        for (std::int32_t i = 0; i < kParameterCount; ++i)
            effect.setParameter(i, NormalizeWholeDisplayValue(i, preset.values[static_cast<std::size_t>(i)]));
        sound.resize(sound.size() + kVocafadeLatency);
        for (StereoSample& sample : sound) {
            float* channels[] = {&sample.left, &sample.right};
            effect.processReplacing(channels, channels, 1);
        }
        sound.erase(sound.begin(), sound.begin() + kVocafadeLatency);
        return sound;
    }

    Song song_ = MakeSong(44100);
    TempFolder folder_;
};

constexpr char kUsual[] = "voice_in_the_middle";

TEST_F(PresetsTest, TakeTheVoiceThatTheyAreFor) {
    EXPECT_GT(Try(kUsual).voiceLossDb, 20.0);
    for (const auto& [symbol, singer] :
         {std::pair{"deep_voice", Singer{.pitch = 0.7}}, std::pair{"whole_middle", Singer{.pitch = 0.5}},
          std::pair{"singer_left", Singer{.right = 0.55f}},
          std::pair{"singer_right", Singer{.left = 0.55f}}}) {
        EXPECT_GT(Try(symbol, singer).voiceLossOverallDb, 20.0) << symbol;
        EXPECT_LT(Try(kUsual, singer).voiceLossOverallDb, 15.0) << "nothing is gained by " << symbol;
    }
    const Band hiss{9000.0, 16000.0};
    EXPECT_GT(Try("s_and_breath", {}, hiss).voiceLossDb, Try(kUsual, {}, hiss).voiceLossDb + 10.0);
}

TEST_F(PresetsTest, KeepMoreOfTheRestWhereTheyPromiseTo) {
    const Singer high{.pitch = 1.4};
    const Measurement kept = Try("high_voice", high);
    EXPECT_GT(kept.voiceLossDb, 20.0);
    EXPECT_GT(kept.restKeptInBand, Try(kUsual, high).restKeptInBand + 0.05);
    AddSnare();
    const Measurement snare = Try("keep_snare");
    EXPECT_GT(snare.voiceLossDb, 20.0);
    EXPECT_GT(snare.restKeptInBand, Try(kUsual).restKeptInBand + 0.05);
}

} // namespace
} // namespace vocafade::test
