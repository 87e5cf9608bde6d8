// SPDX-License-Identifier: MIT
// Whole collections of songs.
#include "tests/command/command_fixture.h"

#include <algorithm>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

TEST_F(CommandTest, ALibraryIsMirroredAndGoesOnWhereItWasStopped) {
    for (const char* folder : {"music/a/one", "music/b", "music/empty", "music/karaoke"})
        fs::create_directories(At(folder));
    const std::string first = Write("music/a/one/first.wav", kWav16, Noise(30000));
    Write("music/b/second.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, Noise(30000));
    Text("music/b/cover \"\xFF.jpg", "picture");
    Text("music/b/bad.wav", "no sound");
    Text("music/b/._first.wav", "a Mac's own");
    Text("music/karaoke/old.wav", "what is in the output's folder is not taken for a song");
    fs::create_directory_symlink("../b", At("music/a/link"));

    ExpectParts(Fails({"-r", "music", "-o", "music/karaoke", "--log", "log"}, 1, "bad.wav").out,
                {"2 of 3 songs rendered", "cover", "._first.wav", "music/a/link (a link to a folder)"});
    EXPECT_EQ(Names("music/karaoke"), (std::set<std::string>{"a", "b", "old.wav"}));
    EXPECT_EQ(Names("music/karaoke/b"), (std::set<std::string>{"second.flac"}));
    ASSERT_EQ(Run({first, "-o", "alone.wav"}).exitCode, 0);
    EXPECT_EQ(Content(At("alone.wav")), Content(At("music/karaoke/a/one/first.wav")));

    fs::remove(At("music/karaoke/b/second.flac"));
    Text("music/karaoke/a/one/first.wav", "kept");
    const RunResult rest =
        Run({"-n", "-r", "music", "-o", "music/karaoke/", "--log", "log", "--copy-others"});
    ExpectParts(rest.out, {"1 of 3 songs rendered"});
    EXPECT_EQ(Content(At("music/karaoke/a/one/first.wav")), "kept");
    EXPECT_EQ(Content(At("music/karaoke/b/cover \"\xFF.jpg")), "picture");
    EXPECT_FALSE(Exists("music/karaoke/empty"));
    const std::string log = Content(At("log"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 6) << log;
    ExpectParts(log, {R"("output":"music/karaoke/b/second.flac","status":"done","seconds":0.680,)",
                      R"("status":"failed","seconds":null,"times_real_time":null,"message":"is not)",
                      R"("output":"music/karaoke/a/one/first.wav","status":"skipped")"});
}

TEST_F(CommandTest, LibrariesThatMakeNoSenseAreRefused) {
    fs::create_directories(At("music/in"));
    Write("music/in/song.wav", kWav16, Noise(3000));
    Write("music/in/song.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, Noise(3000));
    Fails({"-r", "music"}, 2, "-o FOLDER");
    Fails({"-r", "music", "-o", "./music"}, 2, "both read and written");
    Fails({"-r", "music", "-o", "out", "--log", "music/in/song.wav"}, 2, "over an input");
    Fails({"-r", "missing", "-o", "out"}, 1, "no such folder");
    Fails({"music", "-o", "out.wav", "--copy-others"}, 2, "--recursive");
    Fails({"music", "-o", "out.wav"}, 1, "--recursive");
    Fails({"-r", "music", "-o", "out", "--log", "/dev/full"}, 1, "/dev/full");
    // Two songs of one name: one is rendered, the other is told of.
    Fails({"-r", "music", "-o", "flac", "--format", "flac"}, 1, "would both be written");
    EXPECT_EQ(Names("flac/in"), (std::set<std::string>{"song.flac"}));
}

} // namespace
} // namespace vocafade::command
