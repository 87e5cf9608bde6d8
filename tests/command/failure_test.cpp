// SPDX-License-Identifier: MIT
// What a user is told, and what is left on the disk, when something is in the way.
#include "apps/vocafade/shared/parameters.h"
#include "effect/identity.h"
#include "effect/program.h"
#include "persistence/default_bank.h"
#include "tests/command/command_fixture.h"
#include "tests/support/run_command.h"
#include "tests/support/wait_for.h"

#include <algorithm>
#include <csignal>
#include <regex>
#include <sys/mount.h>
#include <unistd.h>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

#ifdef VOCAFADE_SANITIZED
constexpr int kLongSong = 100; // seconds: it takes long there
#else
constexpr std::int64_t kMemoryBound = 64 << 20;
constexpr int kLongSong = 1500; // seconds: 132 MB, and twice that as floats
#endif

TEST_F(CommandTest, BadSongsAreNamedWithTheReasonAndLeaveNothing) {
    Write("mono.wav", kWav16, Noise(100), 44100, 1);
    Write("six.wav", kWav16, Noise(300), 44100, 6);
    Write("none.wav", kWav16, {});
    Text("empty.wav", "");
    Text("text.wav", "Once upon a time");
    fs::create_directory(At("folder.wav"));
    ::mkfifo(At("pipe.wav").c_str(), 0600);
    Write("whole.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, Noise(50000));
    std::string damaged = Content(At("whole.flac"));
    std::fill(damaged.begin() + 60000, damaged.begin() + 70000, '\x55');
    Text("damaged.flac", damaged);
    const auto before = Names();
    const std::pair<std::string, const char*> bad[] = {
        {"missing.wav", "there is no such file"},
        {"mono.wav", "nothing to remove. Use a stereo version"},
        {"six.wav", "has 6 channels"},
        {"none.wav", "0 samples"},
        {"empty.wav", "is empty"},
        {"text.wav", "is not a sound file"},
        {"folder.wav", "is a folder"},
        {"pipe.wav", "pipe"},
        {"damaged.flac", "is damaged at 0:0"}};
    for (const auto& [name, reason] : bad) {
        ExpectParts(Fails({name}, 1, reason).err, {"vocafade: " + name});
    }
    // A name may hold what terminals obey; it is told without it.
    const RunResult run = Fails({"\033[2Jgone\a.wav"}, 1, "?[2Jgone?.wav");
    EXPECT_EQ(run.err.find_first_of("\033\a"), std::string::npos) << run.err;
    EXPECT_EQ(Names(), before);
}

TEST_F(CommandTest, ACommandLineThatMakesNoSenseEndsInTwoAndDoesNothing) {
    Write("a.wav", kWav16, Noise(100));
    Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, Noise(100));
    Text("plain.txt", "text");
    fs::create_symlink("a.wav", At("link.wav"));
    fs::create_directory(At("hard"));
    fs::create_hard_link(At("a.wav"), At("hard/a.wav"));
    ASSERT_TRUE(WriteChunkBank(At("b.fxb"), kVocafadeId, kProgramCount, {}));
    const auto before = Names();
    const auto refuses = [&](const Words& arguments, const char* reason) { Fails(arguments, 2, reason); };
    refuses({}, "no input");
    refuses({"a.wav", "--lofreq", "5"}, "LoFreq goes from 20 to 20000 Hz");
    refuses({"a.wav", "--hifreq", "nan"}, "out of range");
    refuses({"a.wav", "--position", "128"}, "Position goes from 0 to 127");
    refuses({"a.wav", "--input", "1"}, "Input goes from -59.79 to 0 dB");
    refuses({"a.wav", "--output", "6.1"}, "Output goes from -59.79 to 6 dB");
    refuses({"a.wav", "--lofreq", "low"}, "a number is wanted");
    refuses({"a.wav", "--program", "0"}, "goes from 1 to 64");
    refuses({"a.wav", "--program", "65"}, "goes from 1 to 64");
    refuses({"a.wav", "--block", "0"}, "goes from 1 to 65536");
    refuses({"--set", "Hifrek=3", "a.wav"}, "Did you mean HiFreq?");
    refuses({"a.wav", "--set", "Bass=3"}, "There are: ON/OFF, Output");
    refuses({"a.wav", "--set", "LoFreq"}, "NAME=VALUE");
    refuses({"a.wav", "--set", "LoFreq=high"}, "is not a number");
    refuses({"a.wav", "--set", "on/off=maybe"}, "ON or OFF");
    refuses({"a.wav", "--postion", "3"}, "Did you mean --position?");
    refuses({"a.wav", "-o", "a.wav"}, "over an input");
    refuses({"a.wav", "-o", "./sub/../a.wav"}, "over an input");
    refuses({"a.wav", "-o", "link.wav"}, "over an input");
    refuses({"a.wav", "-o", "."}, "over an input");
    refuses({"a.flac", "a.wav", "--format", "wav", "-o", "hard/"}, "over an input");
    refuses({"a.wav", "--bank", "b.fxb", "--format", "wav", "-o", "b.fxb"}, "over an input");
    refuses({"a.wav", "-o", "-"}, "standard output");
    refuses({"a.wav", "-o", "b.xyz"}, "no format is known");
    refuses({"a.wav", "--format", "xyz"}, "known are .wav");
    refuses({"a.wav", "a.flac", "-o", "b.wav"}, "is no folder");
    refuses({"a.wav", "a.flac", "-o", "plain.txt"}, "is no folder");
    refuses({"a.wav", "a.flac", "--format", "wav", "-o", "new/"}, "both be written");
    EXPECT_EQ(Names(), before);
}

TEST_F(CommandTest, APluginOrBankThatWillNotDoIsExplained) {
    Write("a.wav", kWav16, Noise(100));
    Text("bad.fxb", "CcnK and no more");
    const std::string refuses = TEST_FOLDER "/fakes/fake2.so", another = TEST_FOLDER "/faulty/faulty-none.so";
    Fails({"a.wav", "--plugin", "nowhere.so"}, 1, "there is no plug-in 'nowhere.so'");
    Fails({"a.wav", "--plugin", "a.wav"}, 1, "cannot be loaded");
    Fails({"a.wav", "--plugin", refuses}, 1, "refused");
    Fails({"a.wav", "--bank", "missing.fxb"}, 1, "no bank");
    Fails({"a.wav", "--bank", "bad.fxb"}, 1, "ends too early");
    EXPECT_EQ(Names(), (std::set<std::string>{"a.wav", "bad.fxb"}));
    // Any other stereo effect does as well, with normalised values.
    Succeeds({"a.wav", "--plugin", another, "--set", "gain=0.25", "-o", "b.wav"});
    EXPECT_NEAR(Read("b.wav").samples[8], Read("a.wav").samples[8] * 0.25f, 1e-4);
    EXPECT_EQ(Run({"a.wav", "--plugin", another, "--lofreq", "300"}).exitCode, 2);
}

TEST_F(CommandTest, OneBadSongDoesNotStopTheOthers) {
    Words arguments = {"-j", "3", "-o", "out", "missing.wav"};
    for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav", "e.wav"})
        arguments.push_back(Write(name, kWav16, Noise(9000)));
    Run({"a.wav", "-o", "alone.wav"});
    Fails(arguments, 1, "1 of 6 songs failed");
    EXPECT_EQ(Names("out"), (std::set<std::string>{"a.wav", "b.wav", "c.wav", "d.wav", "e.wav"}));
    for (const std::string& name : Names("out"))
        EXPECT_TRUE(Content(At("out/" + name)) == Content(At("alone.wav")))
            << "songs at once disturb each other";
}

TEST_F(CommandTest, AFullTargetKeepsTheOldFileAndSaysSo) {
    Write("a.wav", kWav16, Noise(50000));
    for (const std::string name : {"old.wav", "old.flac", "old.mp3", "old.ogg"}) {
        Text(name, "old");
        Fails({"a.wav", "-o", name}, 1, "cannot write '" + name + "': File too large", {.fileBytes = 20000});
        EXPECT_EQ(Content(At(name)), "old");
    }
    EXPECT_EQ(Names(), (std::set<std::string>{"a.wav", "old.flac", "old.mp3", "old.ogg", "old.wav"}));
    fs::create_directory(At("small"));
    if (::mount("none", At("small").c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "may not mount";
    Fails({"a.wav", "-o", "small/b.wav"}, 1, "needs 200.0 kB, and only 65.5 kB are free");
    Fails({"a.wav", "-o", "small/b.flac"}, 1, "No space left on device");
    const std::set<std::string> left = Names("small");
    ::umount(At("small").c_str());
    EXPECT_TRUE(left.empty()) << *left.begin();
}

TEST_F(CommandTest, TargetsThatCannotBeWrittenAreRefused) {
    Write("a.wav", kWav16, Noise(100));
    const auto fails = [&](const std::string& target, const char* reason) {
        Fails({"a.wav", "-o", target}, 1, reason, {.obeysPermissions = true});
    };
    fs::create_directory(At("locked"));
    fs::permissions(At("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    fails("locked/b.wav", "Permission denied");
    fails("locked/deeper/", "cannot make the folder");
    fails("nowhere/b.wav", "there is no folder 'nowhere'");
    fails("/dev/full", "device");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_TRUE(Names("locked").empty());
    fs::permissions(At("locked"), fs::perms::owner_all);
    Text("kept.wav", "kept");
    EXPECT_EQ(Run({"a.wav", "-o", "kept.wav", "--no-clobber"}).exitCode, 0);
    EXPECT_EQ(Content(At("kept.wav")), "kept");
}

TEST_F(CommandTest, AnInterruptedRunDiesOfItsSignalAndLeavesNoHalfFile) {
    WriteLongSong("long.wav", 7200);
    WriteLongSong("second.wav", 7200);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t process = Start({"long.wav", "second.wav", "-o", "out/", "-j", "2"});
        EXPECT_TRUE(test::WaitFor([] {}, [this] { return Exists("out") && Names("out").size() == 2; }))
            << "the run had not begun";
        ::kill(process, number);
        const RunResult result = Finish(process);
        EXPECT_EQ(result.signal, number);
        EXPECT_TRUE(Names("out").empty());
    }
}

TEST_F(CommandTest, OutputsThatAreFullClosedOrGoneStopNoSong) {
    Write("a.wav", kWav16, Noise(9000));
    Write("b.wav", kWav16, Noise(9000));
    const auto shell = [&](const std::string& line) {
        const test::Finished run = test::RunCommand("cd '" + folder_.string() + "' && vocafade() { '" +
                                                    VOCAFADE_COMMAND + "' \"$@\"; }; { " + line + "; }");
        return std::to_string(run.status) + " " + run.output;
    };
    for (const std::string reader : {"head -c 0", "head -c 1 >/dev/null", "true"}) {
        shell("vocafade a.wav missing.wav b.wav -j 2 -o out/ 2>&1 | " + reader);
        EXPECT_EQ(Names("out"), (std::set<std::string>{"a.wav", "b.wav"})) << reader;
        fs::remove_all(At("out"));
    }
    EXPECT_EQ(shell("vocafade --list-programs >/dev/full"),
              "1 vocafade: the output cannot be written: No space left on device\n");
    EXPECT_EQ(shell("vocafade --list-programs | head -1"), "0   1  Empty\n");
    for (const std::string stream : {">&-", "2>&-", "2>/dev/full", ">&- 2>&-"}) {
        EXPECT_EQ(shell("vocafade a.wav -o c.wav " + stream).substr(0, 2), "0 ") << stream;
        EXPECT_EQ(shell("vocafade missing.wav " + stream).substr(0, 2), "1 ") << stream;
        EXPECT_EQ(shell("vocafade --nonsense " + stream).substr(0, 2), "2 ") << stream;
        EXPECT_EQ(Read("c.wav").frames(), 9000) << stream;
        fs::remove(At("c.wav"));
    }
}

TEST_F(CommandTest, AFileThatWasCutIsRenderedWithAWarning) {
    for (const auto& [name, format] : {std::pair("a.wav", kWav16),
                                       {"a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
                                       {"a.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16}}) {
        Write(name, format, Noise(44100));
        EXPECT_EQ(Run({name, "-o", "whole.flac"}).err, "") << name;
        fs::resize_file(At(name), fs::file_size(At(name)) * 6 / 10);
        Fails({name, "-o", "cut.flac"}, 0, "the file ends early: 0.60 of 1.00 seconds");
    }
    // What a recorder into a pipe leaves is no announcement.
    std::string endless = Content(At(Write("a.wav", kWav16, Noise(100))));
    endless.replace(endless.find("data") + 4, 4, "\xFF\xFF\xFF\xFF");
    Text("a.wav", endless);
    EXPECT_EQ(Run({"a.wav", "-o", "b.wav"}).err, "");
    // Decoders write to the standard error by themselves.
    Write("a.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, Noise(44100));
    fs::resize_file(At("a.mp3"), fs::file_size(At("a.mp3")) / 2);
    const RunResult quiet = Run({"a.mp3", "--quiet", "-o", "b.wav"});
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_EQ(Run({"a.mp3", "missing.mp3", "--quiet", "-o", "out/"}).err,
              "vocafade: missing.mp3: there is no such file\nvocafade: 1 of 2 songs failed\n");
}

TEST_F(CommandTest, MemoryDoesNotGrowWithTheSongAndATerminalSeesTheProgress) {
    if (!fs::exists("/dev/pts/ptmx"))
        GTEST_SKIP() << "no pseudo-terminal can be opened: is /dev/pts mounted?";
    WriteLongSong("long.wav", kLongSong);
    const RunResult run = Run({"long.wav", "--dry", "-o", "out.wav"}, {.onTerminal = true});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(fs::file_size(At("out.wav")), fs::file_size(At("long.wav")));
    ExpectParts(run.err, {"[", " %"});
    EXPECT_TRUE(run.err.ends_with("\r\033[K")) << "the bar is taken away at the end";
#ifndef VOCAFADE_SANITIZED // whose shadow memory counts too
    EXPECT_LT(run.memoryBytes, kMemoryBound);
#endif
}

TEST_F(CommandTest, HelpAndManualKnowTheSameOptions) {
    const RunResult help = Run({"--help"});
    ASSERT_EQ(help.exitCode, 0);
    std::string manual = Content(VOCAFADE_MANUAL);
    manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end()); // troff writes \-\-block
    std::size_t options = 0;
    const std::regex option("--[a-z-]+");
    for (std::sregex_iterator at(help.out.begin(), help.out.end(), option), end; at != end; ++at, ++options)
        ExpectParts(manual, {at->str()});
    EXPECT_GT(options, 18U);
    for (std::int32_t index = kParameterOutput; index < kParameterCount; ++index) {
        std::string name = ParameterRow(index).name;
        for (char& letter : name)
            letter = static_cast<char>(std::tolower(letter));
        const std::size_t at = manual.find(".BR --" + name);
        ASSERT_NE(at, std::string::npos) << name;
        const std::string entry = manual.substr(at, manual.find(".TP", at) - at);
        ExpectParts(entry, {RangeWords(index), "default " + LimitText(ShownRangeOf(index).initial)});
    }
    EXPECT_EQ(Run({"--version"}).out.rfind("vocafade ", 0), 0U);
}

} // namespace
} // namespace vocafade::command
