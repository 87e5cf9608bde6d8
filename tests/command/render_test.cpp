// SPDX-License-Identifier: MIT
// What a user hears and finds after a good run.
#include "apps/vocafade/shared/parameters.h"
#include "effect/identity.h"
#include "effect/program.h"
#include "host/effect.h"
#include "persistence/default_bank.h"
#include "tests/command/command_fixture.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace vocafade::command {
namespace {

constexpr int kWavFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
/// Options that make the removal band empty, so that everything passes the engine.
const Words kPassAll = {"--lofreq", "20000", "--hifreq", "20"};

Words operator+(Words list, const Words& more) {
    list.insert(list.end(), more.begin(), more.end());
    return list;
}

double LevelDb(const Song& song, int channel, std::int64_t from = 4096) {
    double sum = 0.0;
    for (std::int64_t i = from; i < song.frames(); ++i)
        sum += std::pow(song.samples[2 * i + channel], 2);
    return 10.0 * std::log10(sum / static_cast<double>(song.frames() - from) + 1e-20);
}

/// A tone of `hz` with a level on each side.
std::vector<float> Tone(std::int64_t frames, double hz, float left, float right) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < frames; ++i) {
        const auto value =
            static_cast<float>(std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(i) / 44100.0));
        samples.push_back(left * value);
        samples.push_back(right * value);
    }
    return samples;
}

struct Kind {
    const char* name;
    int format;
    int rate;
    bool keepsTags;
    bool isExact; ///< what is written comes back bit for bit
};

TEST_F(CommandTest, EveryFormatKeepsItsKindRateLengthTagsAndPlace) {
    const std::array kinds = {
        Kind{"a.wav", kWav16, 44100, true, true},
        Kind{"b.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 96000, true, true},
        Kind{"c.wav", kWavFloat, 48000, true, true},
        Kind{"d.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 22050, true, true},
        Kind{"e.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 44100, true, true},
        Kind{"f.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 48000, true, true},
        Kind{"g.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, true, false},
        Kind{"h.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, true, false},
        Kind{"i.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, true, false},
        Kind{"j.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 44100, false, true},
        Kind{"k.caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT, 44100, true, true},
        Kind{"l.au", SF_FORMAT_AU | SF_FORMAT_PCM_16, 44100, false, true},
        Kind{"m.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 44100, true, true},
    };
    Words inputs;
    for (const Kind& kind : kinds)
        inputs.push_back(Write(kind.name, kind.format, Noise(30011), kind.rate));
    const RunResult dry = Run(inputs + Words{"--dry", "-o", "dry"});
    const RunResult wet = Run(inputs + kPassAll + Words{"-o", "wet/", "--jobs", "2"});
    ASSERT_EQ(dry.exitCode, 0) << dry.err;
    ASSERT_EQ(wet.exitCode, 0) << wet.err;
    EXPECT_NE(dry.out.find("f.flac -> dry/f.flac"), std::string::npos) << dry.out;
    for (const Kind& kind : kinds) {
        const Song input = Read(kind.name);
        for (const std::string folder : {"dry/", "wet/"}) {
            const Song output = Read(folder + kind.name);
            SCOPED_TRACE(folder + kind.name);
            EXPECT_EQ(output.info.format, input.info.format);
            EXPECT_EQ(output.info.samplerate, kind.rate);
            EXPECT_EQ(output.frames(), input.frames());
            EXPECT_EQ(BestLag(input, output, 4), 0) << "not aligned to the sample";
            if (folder == "dry/" && kind.isExact) {
                EXPECT_TRUE(output.samples == input.samples);
            }
            if (kind.keepsTags) {
                EXPECT_NE(Content(At(folder + kind.name)).find("The Artist"), std::string::npos);
            }
        }
    }
}

TEST_F(CommandTest, TheEndingDecidesTheFormatAndTheDepthStays) {
    Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, Noise(3000), 48000);
    const auto becomes = [&](const char* name, int format) {
        const RunResult run = Run({"a.wav", "-o", name});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(Read(name).info.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), format) << name;
    };
    becomes("b.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    becomes("b.aif", SF_FORMAT_AIFF | SF_FORMAT_PCM_24);
    becomes("b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    becomes("b.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS);
    becomes("b.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    EXPECT_EQ(Run({"b.mp3", "--format", "wav", "-q"}).exitCode, 0);
    EXPECT_EQ(Read("b-vocafade.wav").info.format, kWav16) << "beside the input";
    Write("f.wav", kWavFloat, Noise(3000));
    EXPECT_EQ(Run({"f.wav", "-o", "f.flac", "--dry"}).exitCode, 0);
    EXPECT_EQ(Read("f.flac").info.format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
}

TEST_F(CommandTest, LatencyIsTrimmedOrKeptToTheSample) {
    Write("a.wav", kWavFloat, Noise(50000));
    ASSERT_EQ(Run(Words{"a.wav", "-o", "trimmed.wav"} + kPassAll).exitCode, 0);
    ASSERT_EQ(Run(Words{"a.wav", "-o", "kept.wav", "--keep-latency"} + kPassAll).exitCode, 0);
    const Song input = Read("a.wav");
    const Song trimmed = Read("trimmed.wav");
    const Song kept = Read("kept.wav");
    EXPECT_EQ(trimmed.frames(), 50000);
    EXPECT_EQ(BestLag(input, trimmed, 4), 0);
    ASSERT_EQ(kept.frames(), 50000 + kVocafadeLatency);
    for (std::int64_t i = 0; i < 2 * kVocafadeLatency; ++i)
        ASSERT_EQ(kept.samples[i], 0.0f) << i;
    const std::vector<float> rest(kept.samples.begin() + 2 * kVocafadeLatency, kept.samples.end());
    EXPECT_TRUE(rest == trimmed.samples) << "the same sound, tail and all";
    Write("short.wav", kWavFloat, Noise(1)); // shorter than the delay and than a block
    ASSERT_EQ(Run({"short.wav", "-o", "short-out.wav"}).exitCode, 0);
    EXPECT_EQ(Read("short-out.wav").frames(), 1);
}

TEST_F(CommandTest, BlockSizeAndPrecisionDoNotChangeTheSound) {
    Write("a.wav", kWavFloat, Noise(20000));
    const std::vector<Words> ways = {{"--block", "1"},
                                     {"--block", "341"},
                                     {"--block", "65536"},
                                     {"--double"},
                                     {"--double", "--block", "77"}};
    ASSERT_EQ(Run({"a.wav", "-o", "usual.wav"}).exitCode, 0);
    const std::string usual = Content(At("usual.wav"));
    for (const Words& way : ways) {
        ASSERT_EQ(Run(Words{"a.wav", "-o", "other.wav"} + way).exitCode, 0);
        EXPECT_TRUE(Content(At("other.wav")) == usual) << way.front() << " " << way.back();
    }
}

TEST_F(CommandTest, TheVoiceGoesWhereverPositionSaysItIs) {
    const auto left = [&](const std::string& song, const char* position) {
        EXPECT_EQ(Run({song, "--position", position, "-o", "out.wav"}).exitCode, 0);
        return LevelDb(Read("out.wav"), 0);
    };
    const std::string middle = Write("middle.wav", kWavFloat, Tone(30000, 1000.0, 0.3f, 0.3f));
    const double before = LevelDb(Read(middle), 0);
    EXPECT_LT(left(middle, "64"), before - 40.0);
    EXPECT_GT(left(middle, "20"), before - 20.0) << "Position was forgotten when the effect was started";
    const std::string low = Write("low.wav", kWavFloat, Tone(30000, 100.0, 0.3f, 0.3f));
    EXPECT_GT(left(low, "64"), before - 5.0) << "below the band everything stays";
}

TEST_F(CommandTest, EachWayOfSettingAParameterSetsIt) {
    Write("a.wav", kWavFloat, Noise(5000));
    const auto shows = [&](const Words& options, const char* line) {
        const RunResult run = Run(Words{"--list-parameters"} + options);
        EXPECT_NE(run.out.find(line), std::string::npos) << line << "\n" << run.out << run.err;
    };
    shows({}, "LoFreq    20 to 20000 Hz    400       400.0");
    shows({"--lofreq", "123.4"}, "123.4");
    shows({"--hifreq", "20000"}, "20000.0");
    shows({"--position", "0"}, "64        0.0");
    shows({"--output", "-59.79"}, "-59.8");
    shows({"--output", "-59.8"}, "-59.8"); // as the display rounds it
    shows({"--output", "6"}, "6.0");
    shows({"--input=-12"}, "-12.0");
    shows({"--set", "lofreq=500 Hz", "--set", "INPUT=-3dB"}, "500.0");
    shows({"--set", "on/off=off"}, "OFF");
}

/// A bank whose program 3 differs, as the plug-in itself would have it saved.
bool MakeBank(const std::string& path) {
    host::Effect effect(VOCAFADE_PLUGIN);
    effect.setProgram(2);
    effect.setProgramName("Choir");
    effect.setParameter(kParameterLoFreq, NormalizeWholeDisplayValue(kParameterLoFreq, 1000.0f));
    effect.setParameter(kParameterPosition, NormalizeWholeDisplayValue(kParameterPosition, 80.0f));
    return WriteChunkBank(path, kVocafadeId, kProgramCount, effect.chunk(false));
}

TEST_F(CommandTest, ProgramsAndBanksAreAStartingPointAndStayUntouched) {
    Write("a.wav", kWavFloat, Noise(20000));
    ASSERT_TRUE(MakeBank(At("my.fxb")));
    const auto render = [&](const Words& options) {
        const RunResult run = Run(Words{"a.wav", "-o", "out.wav"} + options);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return Content(At("out.wav"));
    };
    const std::string plain = render({});
    const std::string choir = render({"--lofreq", "1000", "--position", "80"});
    ASSERT_TRUE(plain != choir);
    EXPECT_TRUE(render({"--bank", "my.fxb"}) == choir) << "a bank remembers its current program";
    EXPECT_TRUE(render({"--bank", "my.fxb", "--program", "3"}) == choir);
    EXPECT_TRUE(render({"--bank", "my.fxb", "--program", "1"}) == plain);
    EXPECT_TRUE(render({"--bank", "my.fxb", "--lofreq", "400", "--position", "64"}) == plain);
    EXPECT_NE(Run({"--bank", "my.fxb", "--list-programs"}).out.find("  3  Choir\n"), std::string::npos);

    const std::filesystem::path saved = preferences_ / "VocafadeDef.fxb";
    std::filesystem::copy_file(At("my.fxb"), saved);
    EXPECT_TRUE(render({}) == plain) << "the same options give the same sound, whatever was saved";
    EXPECT_TRUE(render({"--program", "3"}) == choir);
    EXPECT_TRUE(Content(saved) == Content(At("my.fxb")));
}

TEST_F(CommandTest, TooLoudIsClippedCleanlyAndSaid) {
    std::vector<float> loud = Tone(20000, 100.0, 0.99f, 0.0f);
    Write("a.wav", kWav16, loud);
    Fails({"a.wav", "-o", "out.wav", "--output", "6"}, 0, "clipped; try --output 3");
    const Song output = Read("out.wav");
    float steepest = 0.0f;
    for (std::int64_t i = 4097; i < output.frames(); ++i)
        steepest = std::max(steepest, std::abs(output.samples[2 * i] - output.samples[2 * i - 2]));
    EXPECT_LT(steepest, 0.1f) << "a sample ran over to the other side";
    EXPECT_EQ(Run({"a.wav", "-o", "quiet.wav", "--output", "-3"}).err, "");
    const RunResult quiet = Run({"a.wav", "-o", "out.wav", "--output", "6", "--quiet"});
    EXPECT_EQ(quiet.out + quiet.err, "");
    Write("f.wav", kWavFloat, loud);
    EXPECT_EQ(Run({"f.wav", "-o", "f-out.wav", "--output", "6"}).err, "") << "fractions hold any level";
}

TEST_F(CommandTest, ASongOfUnknownLengthThatFitsIntoWavIsSaidToBeOne) {
    Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, Noise(9000));
    std::string bytes = Content(At("a.flac"));
    bytes[21] = static_cast<char>(bytes[21] & 0xF0); // the count of samples: not known
    bytes.replace(22, 4, 4, '\0');
    Text("a.flac", bytes);
    const RunResult run = Run({"a.flac", "-o", "b.wav"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("WAV (Microsoft), "), std::string::npos) << run.out;
    EXPECT_EQ(Content(At("b.wav")).substr(0, 4), "RIFF");
    EXPECT_EQ(Read("b.wav").frames(), 9000);
}

TEST_F(CommandTest, StudioDataTravelsAlong) {
    SF_INFO info{};
    info.samplerate = 44100;
    info.channels = 2;
    info.format = kWav16;
    SNDFILE* sound = sf_open(At("a.wav").c_str(), SFM_WRITE, &info);
    SF_BROADCAST_INFO broadcast{};
    std::strcpy(broadcast.description, "Take seven");
    broadcast.time_reference_low = 4711;
    ASSERT_EQ(sf_command(sound, SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast), SF_TRUE);
    SF_CUES cues{};
    cues.cue_count = 2;
    cues.cue_points[1].indx = 2;
    cues.cue_points[1].sample_offset = 1234;
    ASSERT_EQ(sf_command(sound, SFC_SET_CUE, &cues, sizeof cues), SF_TRUE);
    const std::vector<float> noise = Noise(5000);
    sf_writef_float(sound, noise.data(), 5000);
    sf_close(sound);

    ASSERT_EQ(Run({"a.wav", "-o", "b.wav"}).exitCode, 0);
    sound = sf_open(At("b.wav").c_str(), SFM_READ, &info);
    SF_BROADCAST_INFO copied{};
    EXPECT_EQ(sf_command(sound, SFC_GET_BROADCAST_INFO, &copied, sizeof copied), SF_TRUE);
    EXPECT_STREQ(copied.description, "Take seven");
    EXPECT_EQ(copied.time_reference_low, 4711U);
    std::uint32_t count = 0;
    sf_command(sound, SFC_GET_CUE_COUNT, &count, sizeof count);
    EXPECT_EQ(count, 2U);
    sf_close(sound);
}

} // namespace
} // namespace vocafade::command
