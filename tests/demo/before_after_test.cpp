// SPDX-License-Identifier: MIT
#include "apps/demo/before_after.h"
#include "apps/demo/spectrogram.h"
#include "apps/demo/stereo_file.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

constexpr int kToneRate = 44100;

/// One second of silence, then one second of a full-scale tone of 1 kHz.
StereoSound SilenceThenTone() {
    StereoSound sound(2 * kToneRate);
    const Samples tone = Sine(kToneRate, 1000.0, kToneRate, 1.0f);
    for (std::size_t i = 0; i < tone.size(); ++i)
        sound[kToneRate + i] = {tone[i], tone[i]};
    return sound;
}

TEST(Spectrogram, ShowsAToneAtItsTimeHeightAndLevel) {
    const TempFolder folder;
    WriteWave(folder / "tone.wav", SilenceThenTone(), kToneRate);
    constexpr int kColumns = 200;
    constexpr int kRows = 100;
    const Spectrogram picture = MakeSpectrogram(folder / "tone.wav", {100.0, 10000.0}, kColumns, kRows);
    EXPECT_NEAR(picture.seconds, 2.0, 0.001);
    const int row = kRows / 2; // 1 kHz is half way between 100 Hz and 10 kHz: on the edge of two rows
    EXPECT_NEAR(std::max(picture.At(150, row - 1), picture.At(150, row)), 0.0, 1.5);
    EXPECT_LT(picture.At(50, row), -100.0f);
    EXPECT_LT(picture.At(150, row - 20), -60.0f);
    EXPECT_LT(picture.At(150, row + 20), -60.0f);
    EXPECT_NEAR(picture.Loudest(), 0.0, 1.5);
}

TEST(BeforeAfter, IsWrittenWholeOrNotAtAll) {
    const TempFolder folder;
    WriteWave(folder / "tone.wav", SilenceThenTone(), kToneRate);
    const std::string picture = folder / "picture.png";
    // A name that is no valid text must not stop it.
    DrawBeforeAfter(folder / "tone.wav", folder / "tone.wav", {}, 0.5, {"T\xFFitle", "", ""}, picture);
    EXPECT_GT(std::filesystem::file_size(picture), 5000U);
    EXPECT_THROW(
        DrawBeforeAfter(folder / "tone.wav", folder / "tone.wav", {}, 1.0, {}, folder / "no/picture.png"),
        std::runtime_error);
}

} // namespace
} // namespace vocafade::test
