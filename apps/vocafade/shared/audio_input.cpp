// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/audio_input.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"

#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

namespace vocafade::command {
namespace {

namespace fs = std::filesystem;

void CheckFile(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) throw Failure("there is no such file");
    if (error) throw Failure("cannot be read: " + error.message());
    if (fs::is_directory(status))
        throw Failure("is a folder, not a sound file (--recursive goes through folders)");
    if (!fs::is_regular_file(status)) throw Failure("is a device or a pipe, not a file");
    if (::access(path.c_str(), R_OK) != 0) throw Failure("cannot be read: " + SystemReason());
    if (fs::file_size(path, error) == 0) throw Failure("is empty");
}

void CheckChannels(int channels) {
    if (channels == 2) return;
    if (channels == 1)
        throw Failure(
            "is mono: the voice is found by its place between left and right, and one channel has no such "
            "place, so there is nothing to remove. Use a stereo version of the song");
    throw Failure(
        fmt::format("has {0} channels, and the voice is found between exactly two. Mix it down to stereo "
                    "first, for example: sox SONG.wav STEREO.wav remix 1,3 2,3 (front left and right, "
                    "each with the centre)",
                    channels));
}

} // namespace

SoundFile OpenSound(const fs::path& path, SF_INFO& info) {
    CheckFile(path);
    SoundFile sound(sf_open(path.c_str(), SFM_READ, &info));
    if (!sound) throw Failure(fmt::format("is not a sound file that can be read ({})", sf_strerror(nullptr)));
    return sound;
}

AudioInput::AudioInput(const fs::path& path) : path_(path) {
    sound_ = OpenSound(path, info_);
    CheckChannels(info_.channels);
    if (info_.samplerate <= 0) throw Failure("is damaged: its sample rate makes no sense");
    if (info_.frames == 0) throw Failure("holds no sound: it is 0 samples long");
    frames_ = info_.frames > 0 && info_.frames < SF_COUNT_MAX ? info_.frames : -1;
    sf_command(sound_.get(), SFC_SET_CLIPPING, nullptr, SF_FALSE);
}

std::int64_t AudioInput::Checked(std::int64_t got, std::int64_t wanted) {
    done_ += got;
    if (got < wanted && sf_error(sound_.get()) != SF_ERR_NO_ERROR)
        throw Failure(fmt::format("is damaged at {}: {}",
                                  ClockTime(static_cast<double>(done_) / info_.samplerate),
                                  sf_strerror(sound_.get())));
    return got;
}

std::int64_t AudioInput::Read(float* samples, std::int64_t frames) {
    return Checked(sf_readf_float(sound_.get(), samples, frames), frames);
}
std::int64_t AudioInput::Read(double* samples, std::int64_t frames) {
    return Checked(sf_readf_double(sound_.get(), samples, frames), frames);
}

bool AudioInput::Seek(std::int64_t frame) {
    if (sf_seek(sound_.get(), frame, SEEK_SET) != frame) return false;
    done_ = frame;
    return true;
}

} // namespace vocafade::command
