// SPDX-License-Identifier: MIT
// The command's parts that are better tried without a process.
#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/job_pool.h"
#include "apps/vocafade/render/reporter.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"
#include "tests/command/command_fixture.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>

namespace vocafade::command {
namespace {

SF_INFO Info(int format, int rate = 44100) { return {0, rate, 2, format, 0, 0}; }

TEST(Formats, WavGrowsIntoRf64OnlyWhenItMust) {
    constexpr std::int64_t tenHours = std::int64_t{36000} * 44100;
    const SF_INFO flac = Info(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    EXPECT_EQ(ChooseFormat(flac, "flac", "wav", tenHours / 2), kWav16);
    EXPECT_EQ(ChooseFormat(flac, "flac", "wav", tenHours), SF_FORMAT_RF64 | SF_FORMAT_PCM_16);
    EXPECT_EQ(ChooseFormat(flac, "flac", "wav", -1), SF_FORMAT_RF64 | SF_FORMAT_PCM_16);
    EXPECT_EQ(ChooseFormat(flac, "flac", "w64", tenHours), SF_FORMAT_W64 | SF_FORMAT_PCM_16);
    EXPECT_THROW(ChooseFormat(flac, "flac", "aiff", tenHours), Failure);
    EXPECT_EQ(ChooseFormat(flac, "flac", "flac", tenHours), flac.format);
}

TEST(Formats, TheSameEndingMeansTheSameFormat) {
    const int big = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    EXPECT_EQ(ChooseFormat(Info(big), "wav", "wav", 10), big);
    const int opus = SF_FORMAT_OGG | SF_FORMAT_OPUS;
    EXPECT_EQ(ChooseFormat(Info(opus, 48000), "ogg", "ogg", 10), opus);
    EXPECT_EQ(ChooseFormat(Info(kWav16), "mpga", "mpga", 10), kWav16);
    EXPECT_THROW(ChooseFormat(Info(kWav16), "wav", "opus", 10), Failure) << "44100 Hz";
    EXPECT_THROW(ChooseFormat(Info(kWav16, 192000), "wav", "mp3", 10), Failure);
    EXPECT_THROW(ChooseFormat(Info(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_II), "mp2", "mp2", 10), Failure);
    EXPECT_EQ(ChooseFormat(Info(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III), "mp3", "wav", 10), kWav16);
    EXPECT_EQ(ChooseFormat(Info(SF_FORMAT_WAV | SF_FORMAT_DOUBLE), "wav", "flac", 10),
              SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
}

TEST(Text, TimesAndSizesReadWell) {
    EXPECT_EQ(ClockTime(59.6), "1:00");
    EXPECT_EQ(ClockTime(36061.0), "10:01:01");
    EXPECT_EQ(ClockTime(-1.0), "0:00");
    EXPECT_EQ(ByteCount(6.35e9), "6.3 GB");
    EXPECT_EQ(Printable("a\033[2Jb\n"), "a?[2Jb?");
}

TEST(Progress, TheLineFitsAndTellsTheTimeLeft) {
    const std::string line = ProgressLine(0.25, 10.0, 1, 4, 79);
    EXPECT_NE(line.find(" 25 %  0:30 left  1 of 4 songs"), std::string::npos) << line;
    EXPECT_EQ(ProgressLine(0.25, 0.1, 0, 1, 79).find("left"), std::string::npos) << "too early to say";
    for (std::size_t width = 1; width < 120; ++width)
        EXPECT_LE(ProgressLine(0.5, 9000.0, 1, 40, width).size(), width);
}

TEST(Jobs, EachIsDoneOnceHoweverManyWorkers) {
    for (const std::size_t workers : {0U, 1U, 3U, 50U}) {
        std::array<std::atomic<int>, 20> done{};
        RunJobs(done.size(), workers, [&](std::size_t index) { ++done[index]; });
        for (const std::atomic<int>& count : done)
            EXPECT_EQ(count, 1);
    }
}

} // namespace
} // namespace vocafade::command
