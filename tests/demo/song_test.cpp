// SPDX-License-Identifier: MIT
#include "apps/demo/measure.h"
#include "apps/demo/song.h"
#include "apps/demo/spectrum_stream.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

const Song& TheSong() {
    static const Song kSong = MakeSong(44100);
    return kSong;
}

TEST(Song, IsTheSumOfItsPartsAndHasHeadroom) {
    const Song& song = TheSong();
    EXPECT_GE(song.mix.size(), 20U * 44100U);
    float peak = 0.0f;
    float difference = 0.0f;
    for (std::size_t i = 0; i < song.mix.size(); ++i) {
        ASSERT_TRUE(std::isfinite(song.mix[i].left) && std::isfinite(song.mix[i].right));
        ASSERT_EQ(song.voice[i].left, song.voice[i].right); // the voice stands exactly in the middle
        peak = std::max(peak, std::max(std::abs(song.mix[i].left), std::abs(song.mix[i].right)));
        difference =
            std::max(difference, std::abs(song.mix[i].left - song.voice[i].left - song.rest[i].left));
    }
    EXPECT_GT(peak, 0.4f);
    EXPECT_LT(peak, 0.8f);
    EXPECT_LT(difference, 1e-6f);
}

TEST(Song, KeepsBassAndDrumBelowTheBand) {
    // What of the accompaniment stands in the middle must lie below the band: if it did not, the effect would
    // take it, and the demonstration would count it as the effect's damage.
    const TempFolder folder;
    StereoSound middle(TheSong().mix.size());
    PlayMiddle(middle, 44100);
    WriteWave(folder / "middle.wav", middle, 44100);
    SpectrumStream stream(folder / "middle.wav", 4096, 2048);
    StereoSpectrum spectrum;
    double inBand = 0.0;
    double all = 0.0;
    while (stream.Next(spectrum)) {
        for (int bin = 0; bin < stream.bins(); ++bin) {
            const double energy = std::norm(spectrum.left[static_cast<std::size_t>(bin)]);
            all += energy;
            if (stream.Frequency(bin) >= Band{}.lowHz) inBand += energy;
        }
    }
    EXPECT_GT(all, 0.0);
    EXPECT_LT(10.0 * std::log10(inBand / all), -45.0);
}

} // namespace
} // namespace vocafade::test
