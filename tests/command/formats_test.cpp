// SPDX-License-Identifier: MIT
// The subcommands for older formats, user chunks, settings and formants, run as a user runs them.
#include "tests/command/command_fixture.h"
#include "tests/support/aiff.h"
#include "tests/support/environment.h"

#include <array>
#include <cmath>
#include <numbers>
#include <sstream>

namespace vocafade::command {
namespace {

using test::Big32;
using FormatsCommand = CommandTest;

const std::string kList = "KVB5.0 EFFECT PROGRAM LIST\r\n";
const std::string kFile = "KVB5.0 EFFECT PRG FILE\r\n";

TEST_F(FormatsCommand, AListBecomesABankThatTheCommandItselfOpens) {
    std::filesystem::create_directory(At("old"));
    Text("old/PROGRAM.LST", kList + "2\r\nHall\r\nRoom\r\n");
    Text("old/HALL.PGM", kFile + "0\t" + std::to_string(1000 * 65536) + "\t0\t0\r\n");
    Text("old/Room.PGM", kFile + "0\t\t\t\r\n");
    Succeeds({"convert", "old/PROGRAM.LST", "-o", "new.fxb"}, {"new.fxb: 2 programs\n"});
    const std::string bank = Content(At("new.fxb"));
    ASSERT_EQ(bank.size(), 3488U);
    EXPECT_EQ(bank.substr(0, 12), std::string("CcnK\0\0\r\230FBCh", 12))
        << "with the number of bytes that follow";
    Succeeds({"--list-programs", "--bank", "new.fxb"}, {"Hall", "Room"});
    Succeeds({"--list-parameters", "--bank", "new.fxb", "--program", "1"}, {"1000.0"});
}

TEST_F(FormatsCommand, WhatCannotBeConvertedIsSaid) {
    Text("PROGRAM.LST", kList + "70\nHall\nA name that is longer than its place\n");
    ExpectParts(Fails({"convert", "PROGRAM.LST", "-o", "new.fxb"}, 1, "70 programs").err,
                {"ends early", "is cut to 23 bytes"});
    EXPECT_TRUE(Exists("new.fxb"));
    Text("Hall.PGM", kFile + "0\t65536\t65536\t65536\n");
    Text("Bare.PGM", "0\t65536\t65536\t65536\n");
    Text("Head.PGM", kFile);
    Text("Null.PGM", "");
    Text("odd.LST", kList + "6\nGone\nHall\nNull\nBare\nHead\n\x83\x5C\n");
    const RunResult odd = Fails({"convert", "odd.LST", "-o", "new.fxb"}, 1, "'Bare' does not begin");
    EXPECT_EQ(odd.err.find("'Hall'"), std::string::npos) << odd.err;
    const std::string before = "it gets the values of the program before it";
    ExpectParts(odd.err, {"'Gone' cannot be read: No such file or directory; it gets the default values",
                          "'Null' is empty; " + before, "'Head' holds no values",
                          "'\xE3\x82\xBD' cannot be read: No such file or directory; " + before});
    // Programs that are left out or made up show in the exit status too.
    std::string names;
    for (int i = 0; i < 65; ++i)
        names += "Hall\n";
    for (const auto& [list, exitCode] :
         {std::pair("64\n" + names, 0), {"65\n" + names, 1}, {"2\nHall\n", 1}}) {
        Text("many.LST", kList + list);
        EXPECT_EQ(Run({"convert", "many.LST", "-o", "new.fxb"}).exitCode, exitCode) << list;
    }
    Text("not.LST", "something else\n");
    EXPECT_EQ(Run({"convert", "not.LST", "-o", "none.fxb"}).exitCode, 1);
    Fails({"convert", "missing.LST", "-o", "none.fxb"}, 1, "missing.LST cannot be read: No such file");
    EXPECT_EQ(Run({"convert", "not.LST"}).exitCode, 2);
    EXPECT_FALSE(Exists("none.fxb"));
}

TEST_F(FormatsCommand, NothingIsWrittenOverWhatItIsMadeFrom) {
    Text("P.LST", kList + "1\nHall\n");
    Text("Hall.PGM", kFile + "0\t\t\t\n");
    const std::string song = Write("s.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, Noise(9000));
    std::filesystem::create_symlink(song, At("soft"));
    std::filesystem::create_hard_link(At(song), At("hard"));
    const std::string url = "file://" + At(song).string();
    const std::string plugin = VOCAFADE_PLUGIN "/Vocafade.so";
    const std::string bytes = Content(At(song));
    const auto names = Names();
    for (const Words& arguments : std::vector<Words>{{"formants", song, "--plot", song},
                                                     {"formants", song, "--plot", "soft"},
                                                     {"formants", song, "--plot", "hard"},
                                                     {"formants", song, "--plot", url},
                                                     {"formants", song, "--plot", "-"},
                                                     {"chunks", song, "--get", "COMM", "-o", "./" + song},
                                                     {"chunks", song, "--get", "COMM", "-o", "hard"},
                                                     {"chunks", song, "--put", "KEY=soft"},
                                                     {"convert", "P.LST", "-o", "P.LST"},
                                                     {"convert", "P.LST", "-o", "Hall.PGM"},
                                                     {"screenshot", plugin, "--plugin", plugin},
                                                     {"screenshot", plugin}}) {
        const RunResult run = Run(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments[0] << arguments.back() << run.err;
    }
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Content(At(song)), bytes);
    EXPECT_EQ(Content(At("Hall.PGM")), kFile + "0\t\t\t\n");
    EXPECT_TRUE(Content(plugin).starts_with("\177ELF"));
    EXPECT_EQ(Run({"chunks", song, "--get", "COMM", "-o", "-"}).out.size(), 18U);
}

TEST_F(FormatsCommand, ASongKeepsItsChunksOverManyRenderings) {
    const auto chunk = [](const std::string& id, const std::string& data) {
        return test::Chunk(id, data) + std::string(data.size() % 2, '\0');
    };
    const Words parts = {chunk("NAME", "odd"), chunk("ANNO", "first"), chunk("ANNO", "other"),
                         chunk("APPL", "m3gaProgram"),
                         chunk("COMT", std::string("\0\1\0\0\0\7\0\0\0\5later\0", 16))};
    std::string chunks = test::Common(3000) + test::Sound(std::string(12000, 'n'));
    for (const std::string& part : parts)
        chunks += part;
    Text("a.aiff", test::Form(chunks));
    Text("value", std::string(77, 'v')); // an 85-byte user chunk
    ASSERT_EQ(Run({"chunks", "a.aiff", "--put", "KEY=value"}).exitCode, 0);
    const std::string names[] = {"a.aiff", "b.aiff", "c.aiff", "d.aiff"};
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(Run({names[i], "-o", names[i + 1]}).exitCode, 0);
        const std::string bytes = Content(At(names[i + 1]));
        EXPECT_EQ(bytes.substr(4, 4), Big32(static_cast<std::uint32_t>(bytes.size() - 8)));
        for (const std::string& part : parts) {
            ASSERT_NE(bytes.find(part), std::string::npos) << part;
            EXPECT_EQ(bytes.find(part), bytes.rfind(part)) << part << " twice";
        }
        const RunResult list = Succeeds({"chunks", names[i + 1]});
        EXPECT_EQ(list.out.find("AUTH"), std::string::npos) << "nothing is made up\n" << list.out;
        EXPECT_EQ(Run({"chunks", names[i + 1], "--get", "KEY"}).out, std::string(77, 'v'));
        EXPECT_EQ(Read(names[i + 1]).frames(), 3000);
    }
    // A WAV's odd-sized chunk likewise.
    const std::string xml = std::string("iXML\x0D\0\0\0<X>thirteen</\0", 22);
    std::string wav = Content(At(Write("0.wav", kWav16, Noise(3000)))) + xml;
    wav[4] = static_cast<char>(wav.size() - 8);
    wav[5] = static_cast<char>((wav.size() - 8) >> 8);
    Text("0.wav", wav);
    for (int i = 0; i < 3; ++i) {
        const std::string to = std::to_string(i + 1) + ".wav";
        Succeeds({std::to_string(i) + ".wav", "-o", to});
        ExpectParts(Content(At(to)), {xml});
    }
}

TEST_F(FormatsCommand, UserChunksGoInAndOutOfASong) {
    const std::string song = Write("song.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, Noise(1001));
    const Song before = Read(song);
    const std::string value("any\0bytes\xFF\n", 11);
    Text("value", value);
    Text("other", "other");
    EXPECT_EQ(Run({"chunks", song, "--put", "KEY=value", "--put", "0x00000001=other"}).exitCode, 0);
    EXPECT_EQ(Read(song).samples, before.samples);
    EXPECT_EQ(Run({"chunks", song, "--get", "KEY"}).out, value);
    EXPECT_EQ(Run({"chunks", song, "--get", "0x00000001", "-o", "back"}).exitCode, 0);
    EXPECT_EQ(Content(At("back")), "other");
    Succeeds({"chunks", song}, {"SSND", "24 bit, 1001 frames", "WVL4", "KEY", "0x00000001"});
    EXPECT_EQ(Run({"chunks", song, "--put", "KEY=other"}).exitCode, 0);
    EXPECT_EQ(Run({"chunks", song, "--get", "KEY "}).out, "other");
    EXPECT_EQ(Run({"chunks", song, "--remove", "KEY"}).exitCode, 0);
    EXPECT_EQ(Run({"chunks", song, "--get", "KEY"}).exitCode, 1);
    EXPECT_EQ(Run({"chunks", song, "--get", "0x00000001"}).out, "other");
    EXPECT_EQ(Read(song).samples, before.samples);
}

TEST_F(FormatsCommand, ChunkCommandsThatMakeNoSenseChangeNothing) {
    const std::string song = Write("song.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, Noise(100));
    const std::string compressed = Write("float.aiff", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, Noise(100));
    const std::string wave = Write("song.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, Noise(100));
    Text("value", "value");
    Text("cut.aiff", Content(At(song)) + "NAME\xFF\xFF\xFF\xFF");
    Text("user.aiff", test::Form(test::Common(1) + test::Sound("abcd") + test::Chunk("WVL4", "cut")));
    for (const std::string& name :
         {song, compressed, wave, std::string("cut.aiff"), std::string("user.aiff")}) {
        const std::string bytes = Content(At(name));
        const int tooLong = name == wave || name == compressed ? 1 : 2;
        EXPECT_EQ(Run({"chunks", name, "--put", "toolong=value"}).exitCode, tooLong);
        EXPECT_EQ(Run({"chunks", name, "--put", "KEY=missing"}).exitCode, 1);
        EXPECT_EQ(Run({"chunks", name, "--remove", "KEY"}).exitCode, 1);
        if (name != song) {
            EXPECT_EQ(Run({"chunks", name, "--put", "KEY=value"}).exitCode, 1) << name;
        }
        EXPECT_EQ(Content(At(name)), bytes);
    }
    Fails({"chunks", "missing.aiff"}, 1, "No such file or directory");
    Fails({"chunks", "user.aiff", "--put", "KEY=value"}, 1, "has a user chunk that is damaged");
    EXPECT_EQ(Run({"chunks", song, "-o", "x"}).exitCode, 2);
    EXPECT_EQ(Run({"chunks", "cut.aiff"}).exitCode, 1);
}

TEST_F(FormatsCommand, UsageErrorsNameTheHelpThatHelps) {
    for (const std::string name : {"chunks", "convert", "edit", "formants", "screenshot", "settings"})
        Fails({name, "--no-such-option"}, 2, "Try 'vocafade " + name + " --help'.");
    Fails({"--no-such-option"}, 2, "Try 'vocafade --help'.");
}

TEST_F(FormatsCommand, PicturesAreWrittenInTheFormatOfTheirName) {
    const std::string song = Write("song.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, Noise(4000));
    for (const char* name : {"picture.jpg", "picture", "picture.png.svg"}) {
        Fails({"formants", song, "--plot", name}, 2, "ends in .png");
        Fails({"screenshot", name}, 2, "ends in .png");
        EXPECT_FALSE(Exists(name));
    }
    EXPECT_EQ(Run({"formants", song, "--plot", "picture.PNG"}).exitCode, 0);
    EXPECT_TRUE(Exists("picture.PNG"));
}

/// A vowel in the middle: pulses through three resonances; faint noise at the sides.
std::vector<float> Vowel(int rate, int frames, const std::array<double, 3>& formants) {
    std::vector<double> sound(static_cast<std::size_t>(frames));
    for (int i = 0; i < frames; i += rate / 110)
        sound[static_cast<std::size_t>(i)] = 1.0;
    for (const double hz : formants) {
        const double radius = std::exp(-std::numbers::pi * 90.0 / rate);
        const double first = 2.0 * radius * std::cos(2.0 * std::numbers::pi * hz / rate);
        double last = 0.0, older = 0.0;
        for (double& sample : sound) {
            const double now = sample + first * last - radius * radius * older;
            older = last;
            sample = last = now;
        }
    }
    std::vector<float> stereo = Noise(sound.size(), 1e-4f);
    for (std::size_t i = 0; i < stereo.size(); ++i)
        stereo[i] += static_cast<float>(0.01 * sound[i / 2]);
    return stereo;
}

TEST_F(FormatsCommand, TheFormantsOfAVowelAreFoundAndDrawn) {
    const std::pair<int, std::array<double, 3>> vowels[] = {
        {44100, {700, 1300, 2600}},
        {96000, {700, 1300, 2600}},
        {44100, {730, 1200, 2440}},
        {48000, {270, 2290, 3010}}}; // /a/ and /i/ of a man
    for (const auto& [rate, formants] : vowels) {
        const std::string song =
            Write("vowel.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, Vowel(rate, rate, formants), rate);
        const RunResult run =
            Succeeds({"formants", song, "--at", "0.5", "--plot", "vowel.png"}, {"try --lofreq"});
        std::istringstream lines(run.out);
        std::string line;
        std::getline(lines, line);
        std::getline(lines, line);
        for (const double expected : formants) {
            std::getline(lines, line);
            int number = 0;
            double hz = 0.0;
            std::istringstream(line) >> number >> hz;
            EXPECT_NEAR(hz, expected, 0.06 * expected) << run.out;
        }
        const std::string picture = Content(At("vowel.png"));
        EXPECT_EQ(picture.substr(0, 24), PngStart(1280, 720));
        EXPECT_GT(picture.size(), 20000U);
    }
}

TEST_F(FormatsCommand, FormantsTakeAnySoundAndRefuseNonsense) {
    const std::string mono = Write("mono.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, Noise(4000), 8000, 1);
    Succeeds({"formants", mono}, {"Left and right are the same"});
    const std::string silent = WriteLongSong("silence.wav", 1);
    EXPECT_EQ(Run({"formants", silent, "--plot", "silence.png"}).exitCode, 0);
    EXPECT_EQ(Run({"formants", mono, "--at", "9"}).exitCode, 1);
    EXPECT_EQ(Run({"formants", mono, "--at", "-1"}).exitCode, 2);
    EXPECT_EQ(Run({"formants", mono, "--at", "nan"}).exitCode, 2);
    EXPECT_EQ(Run({"formants", mono, "--order", "0"}).exitCode, 2);
    EXPECT_EQ(Run({"formants", mono, "--order", "100000"}).exitCode, 2);
    EXPECT_EQ(Run({"formants", mono, "--plot", "missing/x.png"}).exitCode, 1);
    std::string fast = Content(At(mono)); // a rate of 2 GHz
    fast.replace(24, 4, std::string("\0\x94\x35\x77", 4));
    Text("fast.wav", fast);
    Fails({"formants", "fast.wav"}, 1, "2000000000 Hz");
    Write("wide.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, std::vector<float>(1024 * 2000), 8000, 1024);
    [[maybe_unused]] const RunResult wide = Succeeds({"formants", "wide.wav"});
#ifndef VOCAFADE_SANITIZED
    EXPECT_LT(wide.memoryBytes, 64 << 20);
#endif
    Text("text.wav", "no sound");
    EXPECT_EQ(Run({"formants", "text.wav"}).exitCode, 1);
}

TEST_F(FormatsCommand, SettingsAreShownAndChanged) {
    const auto settings = [&](Words words) {
        words.insert(words.begin(), {"settings", "--app", "../host"});
        return Run(words);
    };
    EXPECT_EQ(settings({"Window", "title", "two words"}).exitCode, 0);
    EXPECT_EQ(settings({"Window", "title"}).out, "two words\n");
    const std::string line = settings({"--path"}).out;
    const std::string path = line.substr(0, line.size() - 1);
    EXPECT_TRUE(path.starts_with(preferences_.string() + "/vocafade/settings/")) << path;
    EXPECT_EQ(Content(path), "[Window]\ntitle=two words\n");
    const std::string mine = "# this user's, on every machine: " + path + "\n[Window]\ntitle = two words\n";
    EXPECT_EQ(settings({}).out, mine);
    // What is everybody's is shown too; the nearest section counts.
    const std::string everybodys = At("system/vocafade/settings/" + path.substr(path.rfind('/') + 1));
    std::filesystem::create_directories(At("system/vocafade/settings"));
    test::WriteFile(everybodys, "root=1\n[Window]\ntitle=theirs\n[Other]\nx=2\n");
    test::SetVariable("XDG_CONFIG_DIRS", At("system"));
    EXPECT_EQ(settings({}).out, mine + "# everybody's, on every machine: " + everybodys +
                                    "\nroot = 1\n[Window]\ntitle = theirs\n[Other]\nx = 2\n");
    EXPECT_EQ(settings({"Window", "title"}).out, "two words\n");
    EXPECT_EQ(settings({"Other", "x"}).out, "2\n");
    EXPECT_EQ(settings({"Other", "y"}).exitCode, 1);
    EXPECT_EQ(settings({"Window", "--remove"}).exitCode, 0);
    EXPECT_EQ(settings({"Window", "title"}).out, "theirs\n");
    test::UnsetVariable("XDG_CONFIG_DIRS");
    EXPECT_EQ(settings({"Window"}).exitCode, 1);
    EXPECT_EQ(Run({"settings", "Window"}).exitCode, 2);
    EXPECT_EQ(settings({"--path", "Window"}).exitCode, 2);
    // A file that cannot be read is no empty one, but where a nearer one answers it does not matter.
    test::SetVariable("XDG_CONFIG_DIRS", At("system"));
    EXPECT_EQ(settings({"Window", "title", "two words"}).exitCode, 0);
    std::filesystem::remove(everybodys);
    std::filesystem::create_directory(everybodys);
    EXPECT_EQ(settings({"Window", "title"}).out, "two words\n");
    EXPECT_EQ(settings({}).out, mine);
    Fails({"settings", "--app", "../host"}, 1, everybodys + " cannot be read: Is a directory");
    Fails({"settings", "--app", "../host", "Other", "x"}, 1, everybodys);
    test::UnsetVariable("XDG_CONFIG_DIRS");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    Fails({"settings", "--app", "../host"}, 1, ": Is a directory");
    Fails({"settings", "--app", "../host", "Window", "title", "new"}, 1, ": Is a directory");
}

} // namespace
} // namespace vocafade::command
