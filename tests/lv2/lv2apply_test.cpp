// SPDX-License-Identifier: MIT
// Another's host and our own command, from the same song.
#include "tests/lv2/lv2_host.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

#include <sndfile.hh>

namespace vocafade::test {
namespace {

std::vector<float> FirstSecond(const std::string& path) {
    std::vector<float> samples(std::size_t{2} * 44100);
    samples.resize(static_cast<std::size_t>(SndfileHandle(path).read(samples.data(), 2 * 44100)));
    return samples;
}

class Lv2Apply : public WithSettings {};

TEST_F(Lv2Apply, GivesTheCommandsBits) {
    if (RunCommand("command -v lv2apply").status != 0) GTEST_SKIP() << "lilv-utils is not installed";
    std::filesystem::create_directories(settings / "lv2");
    std::filesystem::create_directory_symlink(VOCAFADE_LV2, settings / "lv2/vocafade.lv2");
    const StereoSamples song = Song(44100);
    std::vector<float> both;
    for (std::size_t i = 0; i < song.left.size(); ++i)
        both.insert(both.end(), {song.left[i], song.right[i]});
    SndfileHandle(settings / "song.wav", SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2, 44100)
        .write(both.data(), 2 * 44100);
    const std::string work = "cd '" + settings.path().string() + "' && ";
    const Finished theirs = RunCommand(
        work + "LV2_PATH=$PWD/lv2:/usr/lib/lv2 lv2apply -i song.wav -o theirs.wav " +
        "-c lofreq 200 -c hifreq 12000 -c position 40 -c input -3 -c output 3.9 " + lv2::kPluginUri);
    ASSERT_EQ(theirs.status, 0) << theirs.output;
    const Finished ours = RunCommand(
        work + "'" VOCAFADE_COMMAND "' --plugin '" VOCAFADE_PLUGIN "' --quiet --keep-latency song.wav " +
        "-o ours.wav --lofreq 200 --hifreq 12000 --position 40 --input=-3 --output 3.9");
    ASSERT_EQ(ours.status, 0) << ours.output;
    EXPECT_EQ(FirstSecond(settings / "theirs.wav").size(), std::size_t{2} * 44100);
    EXPECT_EQ(FirstSecond(settings / "theirs.wav"), FirstSecond(settings / "ours.wav"));
}

} // namespace
} // namespace vocafade::test
