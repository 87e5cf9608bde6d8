// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/audio_output.h"

#include "apps/vocafade/render/metadata.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <string_view>
#include <sys/statvfs.h>
#include <system_error>
#include <type_traits>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

constexpr double kVorbisQuality = 0.7;    // about 220 kbit/s
constexpr double kMp3Compression = 0.0;   // the best of the variable rates, about 245 kbit/s
constexpr double kOpusCompression = 0.65; // about 187 kbit/s

std::string SystemError(int number) { return std::generic_category().message(number); }

/// Better said before an hour of work than after it. What compression will save is not known, so only plain
/// formats are checked.
void CheckRoom(const fs::path& path, int format, std::int64_t frames) {
    const std::optional<double> needed = SoundBytes(format, 2, frames);
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    struct statvfs system {};
    if (!needed || frames < 0 || ::statvfs(folder.c_str(), &system) != 0 || system.f_blocks == 0) return;
    const double free = static_cast<double>(system.f_bavail) * static_cast<double>(system.f_frsize);
    if (*needed > free)
        throw Failure(fmt::format("cannot write '{}': it needs {}, and only {} are free there",
                                  Printable(path.string()), ByteCount(*needed), ByteCount(free)));
}

FileChunks::Kind KindOf(int format) {
    switch (format & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
    case SF_FORMAT_RF64:
        return FileChunks::Kind::wav;
    case SF_FORMAT_AIFF:
        return FileChunks::Kind::aiff;
    default:
        return FileChunks::Kind::other;
    }
}

} // namespace

AudioOutput::AudioOutput(const fs::path& path, int format, const AudioInput& input, const FileChunks& chunks)
    : path_(path), source_(input.path()), kind_(SampleKindOf(format)) {
    CheckRoom(path, format, input.frames());
    if (!replacement_.Begin(path.string())) {
        writeError_ = errno;
        Refuse();
    }
    info_.samplerate = input.info().samplerate;
    info_.channels = input.info().channels;
    info_.format = format;
    SF_VIRTUAL_IO io{Length, Seek, ReadBytes, WriteBytes, Tell};
    sound_.reset(sf_open_virtual(&io, SFM_WRITE, &info_, this));
    if (!sound_)
        throw Failure(fmt::format("cannot write '{}' as {}: {}", Printable(path.string()), FormatText(format),
                                  sf_strerror(nullptr)));
    SetQuality();
    // Peak chunks carry the time of day; without them the same song gives the same bytes.
    sf_command(sound_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    if ((format & SF_FORMAT_TYPEMASK) == SF_FORMAT_RF64 &&
        (input.info().format & SF_FORMAT_TYPEMASK) != SF_FORMAT_RF64)
        sf_command(sound_.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    if (chunks.kind == KindOf(format)) carried_ = chunks;
    // Among the carried chunks of an AIFF file are its texts.
    const bool withTexts = carried_.kind != FileChunks::Kind::aiff;
    CopyMetadata(input.sound(), input.info(), sound_.get(), withTexts);
}

AudioOutput::~AudioOutput() = default;

void AudioOutput::SetQuality() {
    double quality = 0.0;
    switch (info_.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_VORBIS:
        quality = kVorbisQuality;
        sf_command(sound_.get(), SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof quality);
        break;
    case SF_FORMAT_OPUS:
        quality = kOpusCompression;
        sf_command(sound_.get(), SFC_SET_COMPRESSION_LEVEL, &quality, sizeof quality);
        break;
    case SF_FORMAT_MPEG_LAYER_III: {
        int mode = SF_BITRATE_MODE_VARIABLE;
        sf_command(sound_.get(), SFC_SET_BITRATE_MODE, &mode, sizeof mode);
        quality = kMp3Compression;
        sf_command(sound_.get(), SFC_SET_COMPRESSION_LEVEL, &quality, sizeof quality);
        break;
    }
    default:
        break;
    }
}

void AudioOutput::Refuse() const {
    std::string reason = SystemError(writeError_);
    std::error_code error;
    const fs::path folder = path_.parent_path();
    if (writeError_ == ENOENT && !folder.empty() && !fs::exists(folder, error))
        reason = fmt::format("there is no folder '{}'", Printable(folder.string()));
    if (writeError_ == EINVAL && fs::exists(path_, error) && !fs::is_regular_file(path_, error))
        reason = "it is a device or a pipe, not a file";
    throw Failure(fmt::format("cannot write '{}': {}", Printable(path_.string()), reason));
}

void AudioOutput::CheckTaken(std::int64_t taken, std::int64_t frames) {
    if (writeError_ != 0) Refuse();
    if (taken != frames)
        throw Failure(
            fmt::format("cannot write '{}': {}", Printable(path_.string()), sf_strerror(sound_.get())));
}

template <typename Sample>
void AudioOutput::Quantise(const Sample* samples, std::size_t count) {
    // Full scale is 2^(bits-1) as for reading, so that what is not changed comes out as it went in.
    const double scale = std::ldexp(1.0, kind_.bits - 1);
    const int shift = 32 - kind_.bits;
    integers_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        double value = std::nearbyint(static_cast<double>(samples[i]) * scale);
        if (!(value >= -scale && value <= scale))
            ++clipped_; // exactly full scale loses no more than rounding does
        if (std::isnan(value)) value = 0.0;
        value = std::clamp(value, -scale, scale - 1.0);
        integers_[i] =
            static_cast<int>(static_cast<std::uint32_t>(static_cast<std::int32_t>(value)) << shift);
    }
}

template <typename Sample>
void AudioOutput::WriteAny(const Sample* samples, std::int64_t frames) {
    const auto count = static_cast<std::size_t>(frames) * static_cast<std::size_t>(info_.channels);
    std::int64_t taken = 0;
    if (kind_.bits != 0) {
        Quantise(samples, count);
        taken = sf_writef_int(sound_.get(), integers_.data(), frames);
    } else {
        if (kind_.isCoded)
            for (std::size_t i = 0; i < count; ++i)
                clipped_ += std::abs(samples[i]) > Sample{1} ? 1 : 0;
        if constexpr (std::is_same_v<Sample, float>) {
            taken = sf_writef_float(sound_.get(), samples, frames);
        } else {
            taken = sf_writef_double(sound_.get(), samples, frames);
        }
    }
    CheckTaken(taken, frames);
}

void AudioOutput::Write(const float* samples, std::int64_t frames) { WriteAny(samples, frames); }
void AudioOutput::Write(const double* samples, std::int64_t frames) { WriteAny(samples, frames); }

void AudioOutput::Finish() {
    const int error = sf_close(sound_.release());
    if (writeError_ != 0) Refuse();
    if (error != SF_ERR_NO_ERROR)
        throw Failure(
            fmt::format("cannot write '{}': {}", Printable(path_.string()), sf_error_number(error)));
    NoteDowngradeToWav();
    errno = 0;
    // libsndfile would fill such chunks up to a multiple of four bytes, which damages what ends by its size.
    if (carried_.kind != FileChunks::Kind::other && !AppendChunks(replacement_.file(), carried_, source_)) {
        writeError_ = errno != 0 ? errno : EIO;
        Refuse();
    }
    if (replacement_.Commit()) return;
    writeError_ = errno != 0 ? errno : EIO;
    Refuse();
}

void AudioOutput::NoteDowngradeToWav() {
    char magic[4] = {};
    CFile& file = replacement_.file();
    if ((info_.format & SF_FORMAT_TYPEMASK) != SF_FORMAT_RF64 || !file.Seek(0, CFile::begin)) return;
    if (file.Read(magic, sizeof magic) == sizeof magic && std::string_view(magic, 4) == "RIFF")
        info_.format = (info_.format & ~static_cast<int>(SF_FORMAT_TYPEMASK)) | SF_FORMAT_WAV;
}

sf_count_t AudioOutput::Length(void* self) {
    return static_cast<AudioOutput*>(self)->replacement_.file().GetLength();
}

sf_count_t AudioOutput::Seek(sf_count_t offset, int whence, void* self) {
    CFile& file = static_cast<AudioOutput*>(self)->replacement_.file();
    const auto from = whence == SEEK_SET ? CFile::begin : (whence == SEEK_CUR ? CFile::current : CFile::end);
    return file.Seek(offset, from) ? file.GetPosition() : -1;
}

sf_count_t AudioOutput::ReadBytes(void* bytes, sf_count_t count, void* self) {
    CFile& file = static_cast<AudioOutput*>(self)->replacement_.file();
    return static_cast<sf_count_t>(file.Read(bytes, static_cast<std::size_t>(count)));
}

sf_count_t AudioOutput::WriteBytes(const void* bytes, sf_count_t count, void* self) {
    auto* output = static_cast<AudioOutput*>(self);
    if (count <= 0 || output->writeError_ != 0) return 0;
    errno = 0;
    if (output->replacement_.file().Write(bytes, static_cast<std::size_t>(count))) return count;
    output->writeError_ = errno != 0 ? errno : EIO;
    return 0;
}

sf_count_t AudioOutput::Tell(void* self) {
    return static_cast<AudioOutput*>(self)->replacement_.file().GetPosition();
}

} // namespace vocafade::command
