// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/audio_format.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <string_view>
#include <vector>

namespace vocafade::command {
namespace {

struct Ending {
    std::string_view text;
    int major;
    int code; ///< the only coding that the ending stands for, or 0
};

constexpr std::array kEndings = {
    Ending{"wav", SF_FORMAT_WAV, 0},
    Ending{"aiff", SF_FORMAT_AIFF, 0},
    Ending{"aif", SF_FORMAT_AIFF, 0},
    Ending{"aifc", SF_FORMAT_AIFF, 0},
    Ending{"flac", SF_FORMAT_FLAC, 0},
    Ending{"ogg", SF_FORMAT_OGG, SF_FORMAT_VORBIS},
    Ending{"oga", SF_FORMAT_OGG, SF_FORMAT_VORBIS},
    Ending{"opus", SF_FORMAT_OGG, SF_FORMAT_OPUS},
    Ending{"mp3", SF_FORMAT_MPEG, SF_FORMAT_MPEG_LAYER_III},
    Ending{"rf64", SF_FORMAT_RF64, 0},
    Ending{"w64", SF_FORMAT_W64, 0},
    Ending{"caf", SF_FORMAT_CAF, 0},
    Ending{"au", SF_FORMAT_AU, 0},
    Ending{"snd", SF_FORMAT_AU, 0},
};

/// Endings of files that can only be read, and second names.
constexpr std::array<std::string_view, 11> kReadEndings = {"wave", "bwf", "mp1", "mp2",  "mpga", "voc",
                                                           "avr",  "paf", "svx", "nist", "sph"};

constexpr std::int64_t kWavLimit =
    (std::int64_t{1} << 32) - (std::int64_t{1} << 20); // room for its other chunks
constexpr std::int64_t kAiffLimit =
    (std::int64_t{1} << 31) - (std::int64_t{1} << 20); // many read the size signed

int Major(int format) { return format & SF_FORMAT_TYPEMASK; }
int Code(int format) { return format & SF_FORMAT_SUBMASK; }

const Ending* FindEnding(const std::string& ending) {
    for (const Ending& known : kEndings)
        if (known.text == ending) return &known;
    return nullptr;
}

template <std::size_t Count>
bool IsAmong(int rate, const std::array<int, Count>& rates) {
    return std::find(rates.begin(), rates.end(), rate) != rates.end();
}

/// What libsndfile reports only when it opens a file.
bool IsCodeWritable(int code, int rate) {
    constexpr std::array kOpusRates = {8000, 12000, 16000, 24000, 48000};
    constexpr std::array kMp3Rates = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
    switch (code) {
    case SF_FORMAT_OPUS:
        return IsAmong(rate, kOpusRates);
    case SF_FORMAT_MPEG_LAYER_III:
        return IsAmong(rate, kMp3Rates);
    case SF_FORMAT_MPEG_LAYER_I:
    case SF_FORMAT_MPEG_LAYER_II:
        return false;
    default:
        return true;
    }
}

bool CanBeWritten(int format, const SF_INFO& like) {
    if (!IsCodeWritable(Code(format), like.samplerate)) return false;
    SF_INFO info = like;
    info.format = format;
    return sf_format_check(&info) != 0;
}

bool IsWavFamily(int major) {
    return major == SF_FORMAT_WAV || major == SF_FORMAT_WAVEX || major == SF_FORMAT_RF64;
}

/// Whether files of this format are rightly called by this ending.
bool Covers(const Ending& ending, int format) {
    const int major = Major(format);
    const bool sameMajor = major == ending.major || (ending.text == "wav" && IsWavFamily(major));
    if (!sameMajor) return false;
    // "ogg" is also a fair name for Opus, Speex or FLAC in Ogg; "opus" and "mp3" are not for anything else.
    return ending.code == 0 || Code(format) == ending.code || ending.text == "ogg" || ending.text == "oga";
}

/// Codings of samples to try for one depth, best first: never fewer bits while there is a coding with enough.
std::vector<int> CodingsFor(const SampleKind& kind) {
    if (kind.isCoded) return {SF_FORMAT_PCM_16};
    if (kind.doublePrecision) return {SF_FORMAT_DOUBLE, SF_FORMAT_FLOAT, SF_FORMAT_PCM_32, SF_FORMAT_PCM_24};
    if (kind.bits == 0) return {SF_FORMAT_FLOAT, SF_FORMAT_PCM_32, SF_FORMAT_PCM_24};
    if (kind.bits <= 8) return {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_S8, SF_FORMAT_PCM_16};
    if (kind.bits <= 16) return {SF_FORMAT_PCM_16};
    if (kind.bits <= 24) return {SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_PCM_16};
    return {SF_FORMAT_PCM_32, SF_FORMAT_PCM_24, SF_FORMAT_PCM_16};
}

int TranslateTo(const Ending& ending, const SF_INFO& input) {
    if (ending.code != 0) {
        if (CanBeWritten(ending.major | ending.code, input)) return ending.major | ending.code;
    } else {
        for (const int coding : CodingsFor(SampleKindOf(input.format)))
            if (CanBeWritten(ending.major | coding, input)) return ending.major | coding;
    }
    throw Failure(
        fmt::format("a .{} file cannot be written at {} Hz; write .wav or .flac instead (-o NAME.wav)",
                    ending.text, input.samplerate));
}

int Enlarge(int format, std::int64_t frames) {
    const std::optional<double> bytes = SoundBytes(format, 2, frames);
    const int major = Major(format);
    if (major == SF_FORMAT_WAV || major == SF_FORMAT_WAVEX) {
        const bool maybe = frames < 0 && bytes.has_value();
        return maybe || bytes.value_or(0.0) > static_cast<double>(kWavLimit) ? SF_FORMAT_RF64 | Code(format)
                                                                             : format;
    }
    if (major == SF_FORMAT_AIFF && bytes.value_or(0.0) > static_cast<double>(kAiffLimit))
        throw Failure(
            "the song is too long for an AIFF file (2 GB); write .wav, .caf or .w64 instead (-o NAME.wav)");
    return format;
}

} // namespace

SampleKind SampleKindOf(int format) {
    switch (Code(format)) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_DPCM_8:
        return {8, false, false};
    case SF_FORMAT_DWVW_12:
        return {12, false, false};
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_DWVW_24:
    case SF_FORMAT_ALAC_24:
        return {24, false, false};
    case SF_FORMAT_ALAC_20:
        return {20, false, false};
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_ALAC_32:
        return {32, false, false};
    case SF_FORMAT_FLOAT:
        return {0, false, false};
    case SF_FORMAT_DOUBLE:
        return {0, false, true};
    case SF_FORMAT_VORBIS:
    case SF_FORMAT_OPUS:
    case SF_FORMAT_MPEG_LAYER_I:
    case SF_FORMAT_MPEG_LAYER_II:
    case SF_FORMAT_MPEG_LAYER_III:
        return {0, true, false};
    default:
        return {16, false, false}; // 16-bit samples, and the codings that decode to them
    }
}

std::string KnownEndings() {
    std::string list;
    for (const Ending& ending : kEndings)
        list += (list.empty() ? "." : ", .") + std::string(ending.text);
    return list;
}

bool IsSoundEnding(const std::string& ending) {
    return FindEnding(ending) != nullptr ||
           std::find(kReadEndings.begin(), kReadEndings.end(), ending) != kReadEndings.end();
}

bool IsKnownEnding(const std::string& ending) { return FindEnding(LowerCase(ending)) != nullptr; }

int ChooseFormat(const SF_INFO& input, const std::string& inputEnding, const std::string& ending,
                 std::int64_t frames) {
    const Ending* wanted = FindEnding(ending);
    const bool same =
        ending.empty() || ending == inputEnding || (wanted != nullptr && Covers(*wanted, input.format));
    if (!same && wanted == nullptr)
        throw Failure(fmt::format("files ending in .{} cannot be written; known are {}", Printable(ending),
                                  KnownEndings()));
    const int format = same ? input.format : TranslateTo(*wanted, input);
    if (!CanBeWritten(format, input))
        throw Failure(fmt::format("{} can be read but not written; name another format (-o NAME.wav)",
                                  FormatText(format)));
    return Enlarge(format, frames);
}

std::optional<double> SoundBytes(int format, int channels, std::int64_t frames) {
    const int major = Major(format);
    if (major == SF_FORMAT_FLAC || major == SF_FORMAT_OGG || major == SF_FORMAT_MPEG) return std::nullopt;
    double bytes = 0.0;
    switch (Code(format)) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
        bytes = 1.0;
        break;
    case SF_FORMAT_PCM_16:
        bytes = 2.0;
        break;
    case SF_FORMAT_PCM_24:
        bytes = 3.0;
        break;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        bytes = 4.0;
        break;
    case SF_FORMAT_DOUBLE:
        bytes = 8.0;
        break;
    default:
        return std::nullopt;
    }
    return bytes * channels * static_cast<double>(frames);
}

std::string EndingOf(const std::filesystem::path& path) {
    const std::string ending = path.extension().string();
    return ending.size() > 1 ? LowerCase(std::string_view(ending).substr(1)) : std::string();
}

std::string FormatText(int format) {
    const auto name = [](int number) -> std::string {
        SF_FORMAT_INFO info{};
        info.format = number;
        return sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name != nullptr
                   ? info.name
                   : "unknown";
    };
    return name(Major(format)) + ", " + name(Code(format));
}

} // namespace vocafade::command
