// SPDX-License-Identifier: MIT
#include "effect/identity.h"
#include "tests/lv2/lv2_host.h"
#include "tests/support/temp_folder.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

namespace vocafade::test {
namespace {

constexpr auto kDelay = static_cast<std::size_t>(kVocafadeLatency);
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

class Lv2Sound : public WithSettings {
  protected:
    void Set(Lv2Plugin& plugin, const std::array<float, kParameterCount>& values) {
        for (std::int32_t i = 0; i < kParameterCount; ++i)
            plugin.Control(i) = values[static_cast<std::size_t>(i)];
    }

    Lv2Bundle bundle;
    StereoSamples song = Song();
};

TEST_F(Lv2Sound, IsThePlainEffectsToTheBitInBlocksOfAnySize) {
    const std::array<float, kParameterCount> sets[] = {
        {1, 0, 0, 400, 9000, 64}, {1, 3.9f, -6, 180, 12000, 64}, {1, -3, 0, 20, 20000, 23}};
    for (const auto& values : sets) {
        for (const std::vector<std::size_t>& blocks :
             {std::vector<std::size_t>{512}, {1, 7, 1000, 341, 0, 63}, {22050}}) {
            Lv2Plugin plugin(bundle);
            Set(plugin, values);
            EXPECT_EQ(plugin.Run(song, blocks), Expected(song, values));
            EXPECT_EQ(plugin.controls[lv2::kPortLatency], kVocafadeLatency);
        }
    }
}

TEST_F(Lv2Sound, TakesThePlaceThatPositionShowsAfterEveryStart) {
    const std::array<float, kParameterCount> values = {1, 0, 0, 400, 9000, 30};
    for (const double rate : {44100.0, 96000.0}) {
        Lv2Plugin plugin(bundle, rate);
        Set(plugin, values);
        StereoSamples broken = Song(5000, 9);
        broken.left[4000] = kNan;
        broken.right[4500] = std::numeric_limits<float>::infinity();
        plugin.Run(broken);
        plugin.Restart();
        EXPECT_EQ(plugin.Run(song), Expected(song, values, rate)) << "with nothing left of what was before";
    }
}

TEST_F(Lv2Sound, WhenOffIsTheSongAsLateAsWhenOn) {
    Lv2Plugin plugin(bundle);
    plugin.Control(kParameterOnOff) = 0.0f;
    const StereoSamples out = plugin.Run(song, {100, 1, 3000});
    for (std::size_t i = 0; i < song.left.size(); ++i) {
        ASSERT_EQ(out.left[i], i < kDelay ? 0.0f : song.left[i - kDelay]) << i;
        ASSERT_EQ(out.right[i], i < kDelay ? 0.0f : song.right[i - kDelay]) << i;
    }
    plugin.Restart();
    EXPECT_EQ(plugin.Run(song), out);
}

TEST_F(Lv2Sound, SwitchesWithoutAClickAndIsThenWhatItWouldHaveBeen) {
    // A tone at the sides alone passes both ways, so that only the switch itself could be heard.
    constexpr double kRate = 48000.0;
    const StereoSamples tone{Sine(96000, 220.0, kRate), Sine(96000, 220.0, kRate, -0.5f)};
    const StereoSamples on = Lv2Plugin(bundle, kRate).Run(tone);
    Lv2Plugin plugin(bundle, kRate);
    const auto isOn = [](std::size_t i) { return (i / 9600) % 2 == 0; };
    std::size_t done = 0;
    const StereoSamples out = InBlocks(tone, {320}, [&](float** in, float** outs, std::int32_t count) {
        plugin.Control(kParameterOnOff) = isOn(done) ? 1.0f : 0.0f;
        plugin.RunBlock(in, outs, count);
        done += static_cast<std::size_t>(count);
    });
    float step = 0.0f;
    float toneStep = 0.0f;
    for (std::size_t i = 6000; i < out.left.size(); ++i) {
        step = std::max(step, std::abs(out.left[i] - out.left[i - 1]));
        toneStep = std::max(toneStep, std::abs(tone.left[i] - tone.left[i - 1]));
        if (i % 9600 < 1000) continue; // they blend
        ASSERT_EQ(out.left[i], isOn(i) ? on.left[i] : tone.left[i - kDelay]) << i;
    }
    EXPECT_LT(step, 1.1f * toneStep) << "a click is a step that the tone does not have";
}

TEST_F(Lv2Sound, WorksInPlaceWhicheverBuffersAreShared) {
    const StereoSamples expected = Lv2Plugin(bundle).Run(song);
    for (const bool crossed : {false, true}) {
        StereoSamples shared = song;
        float* in[] = {shared.left.data(), shared.right.data()};
        float* out[] = {in[crossed ? 1 : 0], in[crossed ? 0 : 1]};
        Lv2Plugin(bundle).RunBlock(in, out, static_cast<std::int32_t>(song.left.size()));
        if (crossed) std::swap(shared.left, shared.right);
        EXPECT_EQ(shared, expected) << crossed;
    }
}

TEST_F(Lv2Sound, KeepsItsValuesWhereAPortSaysNaN) {
    Lv2Plugin plugin(bundle);
    const std::array<float, kParameterCount> values = {1, 0, 0, 400, 9000, 30};
    Set(plugin, values);
    plugin.Run(song);
    Set(plugin, {kNan, kNan, kNan, kNan, kNan, kNan});
    plugin.Restart();
    EXPECT_EQ(plugin.Run(song), Expected(song, values));
}

TEST_F(Lv2Sound, TwoInstancesKnowNothingOfEachOther) {
    Lv2Plugin one(bundle);
    Lv2Plugin other(bundle);
    other.Control(kParameterPosition) = 10.0f;
    other.Control(kParameterLoFreq) = 50.0f;
    const StereoSamples out = InBlocks(song, {441}, [&](float** in, float** outs, std::int32_t count) {
        one.RunBlock(in, outs, count);
        other.Run(StereoNoise(441, 77), {441});
    });
    EXPECT_EQ(out, Expected(song, {1, 0, 0, 400, 9000, 64}));
}

TEST_F(Lv2Sound, GoesEvenAfterTheLibrarysOwnThings) {
    const auto endWithOneAlive = [] {
        static Lv2Bundle late;
        static std::optional<Lv2Plugin>
            last; // given back in the reverse order, so after what it brings along
        last.emplace(late);
        std::exit(0); // NOLINT(concurrency-mt-unsafe): there is one thread
    };
    EXPECT_EXIT(endWithOneAlive(), ::testing::ExitedWithCode(0), "");
}

TEST_F(Lv2Sound, RefusesARateThatNoStreamHas) {
    const Lv2Plugin plugin(bundle);
    for (const double rate :
         {0.0, -44100.0, static_cast<double>(kNan), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(plugin.descriptor().instantiate(&plugin.descriptor(), rate, "/", kNoFeatures), nullptr)
            << rate;
}

} // namespace
} // namespace vocafade::test
