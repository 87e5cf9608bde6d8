// SPDX-License-Identifier: MIT
// Another's host and our own command, from the same song.
#include "tests/lv2/lv2_host.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

#include <sndfile.h>

namespace vocafade::test {
namespace {

class Lv2Apply : public WithSettings {
  protected:
    std::vector<float> Read(const std::string& path) {
        SF_INFO info{};
        SNDFILE* file = ::sf_open(path.c_str(), SFM_READ, &info);
        if (file == nullptr) return {};
        std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
        ::sf_readf_float(file, samples.data(), info.frames);
        ::sf_close(file);
        return samples;
    }
};

TEST_F(Lv2Apply, GivesTheCommandsBits) {
    if (RunCommand("command -v lv2apply").status != 0) GTEST_SKIP() << "lilv-utils is not installed";
    const TempFolder work;
    std::filesystem::create_directory(work / "lv2");
    std::filesystem::create_directory_symlink(VOCAFADE_LV2, work / "lv2/vocafade.lv2");
    const StereoSamples song = Song(44100);
    std::vector<float> samples;
    for (std::size_t i = 0; i < song.left.size(); ++i)
        samples.insert(samples.end(), {song.left[i], song.right[i]});
    SF_INFO info{0, 44100, 2, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0, 0};
    SNDFILE* file = ::sf_open((work / "song.wav").c_str(), SFM_WRITE, &info);
    ::sf_writef_float(file, samples.data(), 44100);
    ::sf_close(file);
    const Finished theirs = RunCommand(
        "cd '" + work.path().string() +
        "' && LV2_PATH=$PWD/lv2:/usr/lib/lv2 lv2apply -i song.wav -o theirs.wav " +
        "-c lofreq 200 -c hifreq 12000 -c position 40 -c input -3 -c output 3.9 " + lv2::kPluginUri);
    ASSERT_EQ(theirs.status, 0) << theirs.output;
    const Finished ours =
        RunCommand("cd '" + work.path().string() +
                   "' && '" VOCAFADE_COMMAND "' --plugin '" VOCAFADE_PLUGIN
                   "' --quiet --keep-latency song.wav -o ours.wav --lofreq 200 --hifreq 12000 "
                   "--position 40 --input=-3 --output 3.9");
    ASSERT_EQ(ours.status, 0) << ours.output;
    const std::vector<float> applied = Read(work / "theirs.wav");
    std::vector<float> rendered = Read(work / "ours.wav");
    ASSERT_EQ(applied.size(), samples.size());
    ASSERT_GT(rendered.size(), applied.size()) << "the command adds the delay's samples";
    rendered.resize(applied.size());
    EXPECT_EQ(applied, rendered);
}

} // namespace
} // namespace vocafade::test
