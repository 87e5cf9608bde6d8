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
    const RunResult run = Run({"convert", "old/PROGRAM.LST", "-o", "new.fxb"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "new.fxb: 2 programs\n");
    const std::string bank = Content(At("new.fxb"));
    ASSERT_EQ(bank.size(), 3488U);
    EXPECT_EQ(bank.substr(0, 12), std::string("CcnK\0\0\x0D\x98"
                                              "FBCh",
                                              12))
        << "with the number of bytes that follow";
    const RunResult programs = Run({"--list-programs", "--bank", "new.fxb"});
    EXPECT_NE(programs.out.find("Hall"), std::string::npos) << programs.out << programs.err;
    EXPECT_NE(programs.out.find("Room"), std::string::npos);
    const RunResult parameters = Run({"--list-parameters", "--bank", "new.fxb", "--program", "1"});
    EXPECT_NE(parameters.out.find("1000.0"), std::string::npos) << parameters.out << parameters.err;
}

TEST_F(FormatsCommand, WhatCannotBeConvertedIsSaid) {
    Text("PROGRAM.LST", kList + "70\nHall\nA name that is longer than its place\n");
    const RunResult lossy = Run({"convert", "PROGRAM.LST", "-o", "new.fxb"});
    EXPECT_EQ(lossy.exitCode, 1);
    for (const char* part : {"70 programs", "ends early", "is cut to 23 bytes"})
        EXPECT_NE(lossy.err.find(part), std::string::npos) << part << "\n" << lossy.err;
    EXPECT_TRUE(Exists("new.fxb"));
    Text("Hall.PGM", kFile + "0\t65536\t65536\t65536\n");
    Text("Bare.PGM", "0\t65536\t65536\t65536\n");
    Text("Head.PGM", kFile);
    Text("Null.PGM", "");
    Text("odd.LST", kList + "6\nGone\nHall\nNull\nBare\nHead\n\x83\x5C\n");
    const RunResult odd = Run({"convert", "odd.LST", "-o", "new.fxb"});
    EXPECT_EQ(odd.exitCode, 1);
    EXPECT_EQ(odd.err.find("'Hall'"), std::string::npos) << odd.err;
    const std::string before = "it gets the values of the program before it";
    for (const std::string& part :
         {std::string("'Gone' cannot be read: No such file or directory; it gets the default values"),
          "'Null' is empty; " + before, std::string("'Bare' does not begin"),
          std::string("'Head' holds no values"),
          "'\xE3\x82\xBD' cannot be read: No such file or directory; " + before})
        EXPECT_NE(odd.err.find(part), std::string::npos) << part << "\n" << odd.err;
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
    EXPECT_TRUE(Content(plugin).starts_with("\x7F"
                                            "ELF"));
    EXPECT_EQ(Run({"chunks", song, "--get", "COMM", "-o", "-"}).out.size(), 18U);
}

TEST_F(FormatsCommand, ASongKeepsItsChunksAndTagsOverManyRenderings) {
    const auto chunk = [](const std::string& id, const std::string& data) {
        return test::Chunk(id, data) + std::string(data.size() % 2, '\0');
    };
    const Words parts = {chunk("NAME", "odd"), chunk("ANNO", "first"), chunk("ANNO", "other"),
                         chunk("APPL", "m3gaProgram"),
                         chunk("COMT", std::string("\0\1\0\0\0\7\0\0\0\5later\0", 16))};
    Write("a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, Noise(3000));
    std::string form = Content(At("a.aiff")).substr(12);
    for (const char* id : {"NAME", "AUTH", "ANNO"})
        if (const std::size_t at = form.find(id); at != std::string::npos) form.replace(at, 4, "FLLR");
    for (const std::string& part : parts)
        form += part;
    Text("a.aiff", test::Form(form));
    Text("value", std::string(77, 'v')); // an 85-byte user chunk
    ASSERT_EQ(Run({"chunks", "a.aiff", "--put", "KEY=value"}).exitCode, 0);
    const std::string names[] = {"a.aiff", "b.aiff", "c.aiff", "d.aiff"};
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(Run({names[i], "-o", names[i + 1]}).exitCode, 0);
        const std::string bytes = Content(At(names[i + 1]));
        EXPECT_EQ(bytes.substr(4, 4), Big32(static_cast<std::uint32_t>(bytes.size() - 8)));
        for (const std::string& part : parts) {
            const std::size_t at = bytes.find(part);
            ASSERT_NE(at, std::string::npos) << part;
            EXPECT_EQ(bytes.find(part, at + 1), std::string::npos) << part;
        }
        const RunResult list = Run({"chunks", names[i + 1]});
        EXPECT_EQ(list.exitCode, 0) << list.err;
        EXPECT_EQ(list.out.find("AUTH"), std::string::npos) << "nothing is made up\n" << list.out;
        EXPECT_EQ(Run({"chunks", names[i + 1], "--get", "KEY"}).out, std::string(77, 'v'));
        EXPECT_EQ(Read(names[i + 1]).frames(), 3000);
    }
    // Texts of every other format, and a WAV's odd-sized chunk, likewise.
    for (const auto& [ending, format] : {std::pair("wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16),
                                         {"flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                                         {"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
                                         {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS},
                                         {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
                                         {"caf", SF_FORMAT_CAF | SF_FORMAT_PCM_16},
                                         {"rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16},
                                         {"w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16}}) {
        const std::string dot = std::string(".") + ending;
        Write("0" + dot, format, Noise(3000), 48000);
        const std::string xml = std::string("iXML\x0D\0\0\0<X>thirteen</\0", 22);
        const bool isWav = dot == ".wav";
        if (isWav) {
            std::string wav = Content(At("0.wav")) + xml;
            wav[4] = static_cast<char>(wav.size() - 8);
            wav[5] = static_cast<char>((wav.size() - 8) >> 8);
            Text("0.wav", wav);
        }
        Words texts;
        for (int i = 0; i < 4; ++i) {
            const std::string name = std::to_string(i) + dot;
            texts.emplace_back();
            SF_INFO info{};
            SNDFILE* sound = sf_open(At(name).c_str(), SFM_READ, &info);
            ASSERT_NE(sound, nullptr) << name;
            for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind) {
                const char* text = sf_get_string(sound, kind);
                texts.back() += std::to_string(kind) + (text != nullptr ? text : "") + "\n";
            }
            sf_close(sound);
            EXPECT_EQ(texts.back(), texts.front()) << name;
            const std::string bytes = Content(At(name));
            const std::size_t title = bytes.find("The Title");
            EXPECT_EQ(bytes.find("The Title", title + 1), std::string::npos) << name;
            if (isWav) {
                EXPECT_NE(bytes.find(xml), std::string::npos) << name;
            }
            if (i < 3) {
                ASSERT_EQ(Run({name, "-o", std::to_string(i + 1) + dot}).exitCode, 0);
            }
        }
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
    const RunResult list = Run({"chunks", song});
    EXPECT_EQ(list.exitCode, 0);
    for (const char* part : {"SSND", "24 bit, 1001 frames", "WVL4", "KEY", "0x00000001"})
        EXPECT_NE(list.out.find(part), std::string::npos) << part << "\n" << list.out;
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
    for (const std::string& name : {song, compressed, wave, std::string("cut.aiff")}) {
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
    EXPECT_EQ(Run({"chunks", song, "-o", "x"}).exitCode, 2);
    EXPECT_EQ(Run({"chunks", "cut.aiff"}).exitCode, 1);
    // More than can be taken in is not taken for nothing.
    std::string large = Content(At(song)) + "WVL4" + Big32(0x90000000U);
    large.replace(4, 4, Big32(static_cast<std::uint32_t>(large.size() - 8 + 0x90000000U)));
    Text("large.aiff", large);
    std::filesystem::resize_file(At("large.aiff"), large.size() + 0x90000000U);
    Fails({"chunks", "large.aiff", "--put", "KEY=value"}, 1, "nothing was written");
    EXPECT_EQ(std::filesystem::file_size(At("large.aiff")), large.size() + 0x90000000U);
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
    double peak = 0.0;
    for (const double sample : sound)
        peak = std::max(peak, std::abs(sample));
    std::vector<float> stereo = Noise(frames, 1e-4f);
    for (int i = 0; i < 2 * frames; ++i)
        stereo[static_cast<std::size_t>(i)] +=
            static_cast<float>(sound[static_cast<std::size_t>(i / 2)] / peak * 0.5);
    return stereo;
}

TEST_F(FormatsCommand, TheFormantsOfAVowelAreFoundAndDrawn) {
    const struct {
        int rate;
        std::array<double, 3> formants;
    } vowels[] = {{44100, {700, 1300, 2600}},
                  {96000, {700, 1300, 2600}},
                  {44100, {730, 1200, 2440}},
                  {48000, {270, 2290, 3010}}}; // /a/ and /i/ of a man
    for (const auto& [rate, formants] : vowels) {
        const std::string song =
            Write("vowel.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, Vowel(rate, rate, formants), rate);
        const RunResult run = Run({"formants", song, "--at", "0.5", "--plot", "vowel.png"});
        ASSERT_EQ(run.exitCode, 0) << run.err;
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
        EXPECT_NE(run.out.find("try --lofreq"), std::string::npos) << run.out;
        const std::string picture = Content(At("vowel.png"));
        EXPECT_EQ(picture.substr(0, 24), std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\5\0\0\0\2\xD0", 24));
        EXPECT_GT(picture.size(), 20000U);
    }
}

TEST_F(FormatsCommand, FormantsTakeAnySoundAndRefuseNonsense) {
    const std::string mono = Write("mono.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, Noise(4000), 8000, 1);
    const RunResult run = Run({"formants", mono});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("Left and right are the same"), std::string::npos);
    const std::string silent = WriteSilence("silence.wav", 1);
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
    const RunResult wide = Run({"formants", "wide.wav"});
    EXPECT_EQ(wide.exitCode, 0) << wide.err;
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
