// SPDX-License-Identifier: MIT
#include "apps/demo/stereo_file.h"

#include "base/file_replacement.h"

#include <cstring>
#include <sndfile.h>
#include <stdexcept>
#include <system_error>

namespace vocafade {
namespace {

SNDFILE* Handle(void* file) { return static_cast<SNDFILE*>(file); }

// libsndfile writes through these, so that the file replacement below stays in charge of the name.
CFile& FileOf(void* file) { return *static_cast<CFile*>(file); }

sf_count_t TargetLength(void* file) { return FileOf(file).GetLength(); }
sf_count_t TargetPosition(void* file) { return FileOf(file).GetPosition(); }

sf_count_t SeekTarget(sf_count_t offset, int whence, void* file) {
    const CFile::SeekPosition from = whence == SEEK_SET   ? CFile::begin
                                     : whence == SEEK_CUR ? CFile::current
                                                          : CFile::end;
    return FileOf(file).Seek(offset, from) ? FileOf(file).GetPosition() : -1;
}

sf_count_t ReadTarget(void* buffer, sf_count_t count, void* file) {
    return static_cast<sf_count_t>(FileOf(file).Read(buffer, static_cast<std::size_t>(count)));
}

sf_count_t WriteTarget(const void* buffer, sf_count_t count, void* file) {
    return FileOf(file).Write(buffer, static_cast<std::size_t>(count)) ? count : 0;
}

std::runtime_error CannotWrite(const std::string& path) {
    return std::runtime_error(path + ": cannot be written: " + std::generic_category().message(errno));
}

} // namespace

void StereoReader::Closer::operator()(void* file) const { sf_close(Handle(file)); }

StereoReader::StereoReader(const std::string& path) {
    SF_INFO info{};
    file_.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (!file_) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    if (info.channels != 2) {
        const std::string channels =
            info.channels == 1 ? "one channel" : std::to_string(info.channels) + " channels";
        throw std::runtime_error(path + ": has " + channels +
                                 "; only in a stereo song is there a middle that can be taken out");
    }
    rate_ = info.samplerate;
    length_ = info.frames;
}

std::size_t StereoReader::Read(StereoSample* samples, std::size_t count) {
    static_assert(sizeof(StereoSample) == 2 * sizeof(float));
    const sf_count_t got =
        sf_readf_float(Handle(file_.get()), &samples->left, static_cast<sf_count_t>(count));
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

void WriteWave(const std::string& path, const StereoSound& sound, int rate) {
    FileReplacement replacement;
    if (!replacement.Begin(path)) throw CannotWrite(path);
    SF_VIRTUAL_IO io{TargetLength, SeekTarget, ReadTarget, WriteTarget, TargetPosition};
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_24;
    SNDFILE* file = sf_open_virtual(&io, SFM_WRITE, &info, &replacement.file());
    if (!file) throw CannotWrite(path);
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    const auto count = static_cast<sf_count_t>(sound.size());
    const float* first = sound.empty() ? nullptr : &sound.front().left;
    const bool whole = count == 0 || sf_writef_float(file, first, count) == count;
    const bool closed = sf_close(file) == 0;
    if (!whole || !closed || !replacement.Commit()) throw CannotWrite(path);
}

} // namespace vocafade
