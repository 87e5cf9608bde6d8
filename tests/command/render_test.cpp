// SPDX-License-Identifier: MIT
// What a user hears and finds after a good run.
#include "apps/vocafade/shared/parameters.h"
#include "effect/identity.h"
#include "effect/program.h"
#include "host/effect.h"
#include "persistence/default_bank.h"
#include "tests/command/command_fixture.h"

#include <cmath>
#include <cstring>
#include <map>
#include <numeric>
#include <sndfile.hh>
#include <tuple>

namespace vocafade::command {
namespace {

constexpr int kWavFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
/// Options that make the removal band empty, so that everything passes the engine.
const Words kPassAll = {"--lofreq", "20000", "--hifreq", "20"};

Words operator+(Words list, const Words& more) {
    list.insert(list.end(), more.begin(), more.end());
    return list;
}

/// A tone of `hz` with a level on each side.
std::vector<float> Tone(std::size_t frames, double hz, float left, float right) {
    std::vector<float> samples;
    for (const float value : test::Sine(frames, hz, 44100.0, 1.0f))
        samples.insert(samples.end(), {left * value, right * value});
    return samples;
}

/// The delay in frames, within four either way, at which `output` fits the input of the same length best.
int BestLag(const Song& input, const Song& output) {
    std::map<double, int> lags; // by how well they fit
    for (int lag = -4; lag <= 4; ++lag)
        lags[std::inner_product(input.samples.begin() + 8, input.samples.end() - 8,
                                output.samples.begin() + 8 + 2 * lag, 0.0)] = lag;
    return lags.rbegin()->second;
}

TEST_F(CommandTest, EveryFormatKeepsItsKindRateLengthTagsAndPlace) {
    const std::tuple<std::string, int, int> kinds[] = {
        {"a.wav", kWav16, 44100},
        {"b.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 96000},
        {"c.wav", kWavFloat, 48000},
        {"d.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 22050},
        {"e.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 44100},
        {"f.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 48000},
        {"g.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100},
        {"h.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000},
        {"i.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100},
        {"j.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 44100},
        {"k.caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT, 44100},
        {"l.au", SF_FORMAT_AU | SF_FORMAT_PCM_16, 44100},
        {"m.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 44100},
    };
    const std::set<std::string> lossy = {"g.ogg", "h.opus", "i.mp3"};
    Words inputs, rendered;
    for (const auto& [name, format, rate] : kinds) {
        inputs.push_back(Write(name, format, Noise(30011), rate));
        rendered.push_back("dry/" + name);
    }
    Succeeds(inputs + Words{"--dry", "-o", "dry"}, {"f.flac -> dry/f.flac"});
    Succeeds(rendered + Words{"--dry", "-o", "again"});
    Succeeds(inputs + kPassAll + Words{"-o", "wet/", "--jobs", "2"});
    int withTexts = 0;
    for (const auto& [name, format, rate] : kinds) {
        const Song input = Read(name);
        if (!input.texts.empty()) ++withTexts;
        for (const std::string folder : {"dry/", "again/", "wet/"}) {
            const Song output = Read(folder + name);
            const std::string bytes = Content(At(folder + name));
            SCOPED_TRACE(folder + name);
            EXPECT_EQ(output.format, input.format);
            EXPECT_EQ(output.rate, rate);
            EXPECT_EQ(output.texts, input.texts);
            EXPECT_EQ(bytes.find("The Title"), bytes.rfind("The Title")) << "twice";
            ASSERT_EQ(output.frames(), input.frames());
            EXPECT_EQ(BestLag(input, output), 0) << "not aligned to the sample";
            EXPECT_TRUE(output.samples == input.samples || lossy.contains(name) || folder == "wet/");
        }
    }
    EXPECT_EQ(withTexts, 11) << "all but W64 and AU can hold some";
}

TEST_F(CommandTest, TheEndingDecidesTheFormatAndTheDepthStays) {
    Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, Noise(3000), 48000);
    const auto becomes = [&](const char* name, int format) {
        Succeeds({"a.wav", "-o", name});
        EXPECT_EQ(Read(name).format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), format) << name;
    };
    becomes("b.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    becomes("b.aif", SF_FORMAT_AIFF | SF_FORMAT_PCM_24);
    becomes("b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    becomes("b.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS);
    becomes("b.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    EXPECT_EQ(Run({"b.mp3", "--format", "wav", "-q"}).exitCode, 0);
    EXPECT_EQ(Read("b-vocafade.wav").format, kWav16) << "beside the input";
    Write("f.wav", kWavFloat, Noise(3000));
    EXPECT_EQ(Run({"f.wav", "-o", "f.flac", "--dry"}).exitCode, 0);
    EXPECT_EQ(Read("f.flac").format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
}

TEST_F(CommandTest, LatencyIsTrimmedOrKeptToTheSample) {
    Write("a.wav", kWavFloat, Noise(50000));
    ASSERT_EQ(Run(Words{"a.wav", "-o", "trimmed.wav"} + kPassAll).exitCode, 0);
    ASSERT_EQ(Run(Words{"a.wav", "-o", "kept.wav", "--keep-latency"} + kPassAll).exitCode, 0);
    const Song input = Read("a.wav");
    const Song trimmed = Read("trimmed.wav");
    const Song kept = Read("kept.wav");
    ASSERT_EQ(trimmed.frames(), 50000);
    EXPECT_EQ(BestLag(input, trimmed), 0);
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
    ASSERT_EQ(Run({"a.wav", "-o", "usual.wav"}).exitCode, 0);
    const std::string usual = Content(At("usual.wav"));
    for (const Words& way : std::vector<Words>{{"--block", "1"},
                                               {"--block", "341"},
                                               {"--block", "65536"},
                                               {"--double"},
                                               {"--double", "--block", "77"}}) {
        ASSERT_EQ(Run(Words{"a.wav", "-o", "other.wav"} + way).exitCode, 0);
        EXPECT_TRUE(Content(At("other.wav")) == usual) << way.front() << " " << way.back();
    }
}

TEST_F(CommandTest, TheVoiceGoesWhereverPositionSaysItIs) {
    const auto left = [&](const std::string& song, const char* position) {
        EXPECT_EQ(Run({song, "--position", position, "-o", "out.wav"}).exitCode, 0);
        return test::Db(test::Power(Read("out.wav").samples, 8192));
    };
    const std::string middle = Write("middle.wav", kWavFloat, Tone(30000, 1000.0, 0.3f, 0.3f));
    const double before = test::Db(test::Power(Read(middle).samples, 8192));
    EXPECT_LT(left(middle, "64"), before - 40.0);
    EXPECT_GT(left(middle, "20"), before - 20.0) << "Position was forgotten when the effect was started";
    const std::string low = Write("low.wav", kWavFloat, Tone(30000, 100.0, 0.3f, 0.3f));
    EXPECT_GT(left(low, "64"), before - 5.0) << "below the band everything stays";
}

TEST_F(CommandTest, EachWayOfSettingAParameterSetsIt) {
    Write("a.wav", kWavFloat, Noise(5000));
    const auto shows = [&](const Words& options, const char* line) {
        Succeeds(Words{"--list-parameters"} + options, {line});
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
        Succeeds(Words{"a.wav", "-o", "out.wav"} + options);
        return Content(At("out.wav"));
    };
    const std::string plain = render({});
    const std::string choir = render({"--lofreq", "1000", "--position", "80"});
    ASSERT_TRUE(plain != choir);
    EXPECT_TRUE(render({"--bank", "my.fxb"}) == choir) << "a bank remembers its current program";
    EXPECT_TRUE(render({"--bank", "my.fxb", "--program", "3"}) == choir);
    EXPECT_TRUE(render({"--bank", "my.fxb", "--program", "1"}) == plain);
    EXPECT_TRUE(render({"--bank", "my.fxb", "--lofreq", "400", "--position", "64"}) == plain);
    Succeeds({"--bank", "my.fxb", "--list-programs"}, {"  3  Choir\n"});

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
    Succeeds({"a.flac", "-o", "b.wav"}, {"WAV (Microsoft), "});
    EXPECT_EQ(Content(At("b.wav")).substr(0, 4), "RIFF");
    EXPECT_EQ(Read("b.wav").frames(), 9000);
}

TEST_F(CommandTest, StudioDataTravelsAlong) {
    SndfileHandle sound(At("a.wav").string(), SFM_WRITE, kWav16, 2, 44100);
    SF_BROADCAST_INFO broadcast{};
    std::strcpy(broadcast.description, "Take seven");
    broadcast.time_reference_low = 4711;
    ASSERT_EQ(sound.command(SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast), SF_TRUE);
    SF_CUES cues{};
    cues.cue_count = 2;
    cues.cue_points[1].indx = 2;
    cues.cue_points[1].sample_offset = 1234;
    ASSERT_EQ(sound.command(SFC_SET_CUE, &cues, sizeof cues), SF_TRUE);
    sound.writef(Noise(5000).data(), 5000);
    sound = {};
    ASSERT_EQ(Run({"a.wav", "-o", "b.wav"}).exitCode, 0);
    sound = SndfileHandle(At("b.wav").string());
    SF_BROADCAST_INFO copied{};
    EXPECT_EQ(sound.command(SFC_GET_BROADCAST_INFO, &copied, sizeof copied), SF_TRUE);
    EXPECT_STREQ(copied.description, "Take seven");
    EXPECT_EQ(copied.time_reference_low, 4711U);
    std::uint32_t count = 0;
    sound.command(SFC_GET_CUE_COUNT, &count, sizeof count);
    EXPECT_EQ(count, 2U);
}

} // namespace
} // namespace vocafade::command
