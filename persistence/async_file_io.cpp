// SPDX-License-Identifier: MIT
#include "persistence/async_file_io.h"

#include "persistence/aiff_sizes.h"

#include <algorithm>
#include <cstring>

namespace vocafade {
namespace {

/// 44100 as an 80-bit extended float: exponent 2^15, mantissa 0xAC44 at the top.
constexpr std::array<unsigned char, 10> kRate44100 = {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};

} // namespace

CAsyncFileIO::~CAsyncFileIO() { CAsyncFileIO::Close(); }

int CAsyncFileIO::Open(const char* path, int mode, const char* /*unused*/, int /*unused*/) {
    Close();
    constexpr unsigned flags[] = {CFile::modeRead, CFile::modeCreate | CFile::modeReadWrite,
                                  CFile::modeReadWrite};
    if (mode < read || mode > readWrite || !file_.Open(path, flags[mode])) return -1;
    writable_ = mode != read;
    if ((mode == create && !WriteNewHeaders()) || !FindSound()) {
        Close();
        return -1;
    }
    return Seek64(0, 0);
}

void CAsyncFileIO::Close() {
    if (grown_) WriteAiffSizes(file_, layout_, layout_.sound.end());
    file_.Close();
    layout_ = {};
    writable_ = growable_ = grown_ = false;
    position_ = 0;
    user_.clear();
    id3_.clear();
    id3Length_ = 0;
}

bool CAsyncFileIO::WriteNewHeaders() {
    std::array<unsigned char, 54> bytes{}; // form header, COMM and the header of SSND
    StoreBigEndian32(&bytes[0], kFormChunk);
    StoreBigEndian32(&bytes[4], bytes.size() - 8);
    StoreBigEndian32(&bytes[8], kAiffForm);
    StoreBigEndian32(&bytes[12], kCommonChunk);
    StoreBigEndian32(&bytes[16], kCommonSize);
    StoreBigEndian16(&bytes[20], 2);
    StoreBigEndian16(&bytes[26], 16);
    std::copy(kRate44100.begin(), kRate44100.end(), &bytes[28]);
    StoreBigEndian32(&bytes[38], kSoundChunk);
    StoreBigEndian32(&bytes[42], 8);
    return file_.Write(bytes.data(), bytes.size());
}

bool CAsyncFileIO::FindSound() {
    layout_ = ReadAiffLayout(file_);
    growable_ = writable_ && layout_.hasSound && layout_.sound.end() == file_.GetLength();
    return layout_.form == AiffLayout::Form::plain;
}

int CAsyncFileIO::Read(void* buffer, int count) {
    const long long wanted = std::min<long long>(count, layout_.soundSize - position_);
    if (wanted <= 0 || !file_.Seek(layout_.soundPosition + position_, CFile::begin)) return 0;
    const auto done = static_cast<int>(file_.Read(buffer, static_cast<std::size_t>(wanted)));
    position_ += done;
    return done;
}

int CAsyncFileIO::Write(const void* buffer, int count) {
    const long long room = growable_ ? count : layout_.soundSize - position_;
    const long long wanted = std::min<long long>(count, room);
    if (!writable_ || wanted <= 0) return 0;
    if (!file_.Seek(layout_.soundPosition + position_, CFile::begin) ||
        !file_.Write(buffer, static_cast<std::size_t>(wanted))) {
        return 0;
    }
    position_ += wanted;
    if (position_ > layout_.soundSize) {
        layout_.sound.size += position_ - layout_.soundSize;
        layout_.soundSize = position_;
        layout_.soundSizeDeclared = false;
        grown_ = true;
    }
    return static_cast<int>(wanted);
}

int CAsyncFileIO::Seek(int from, int offset) { return Seek64(from, offset); }

int CAsyncFileIO::Seek64(int from, long long offset) {
    const long long base = from == 0 ? 0 : from == 1 ? position_ : layout_.soundSize;
    if (!file_.IsOpen() || offset < -base || offset > layout_.soundSize - base) return -1;
    position_ = base + offset;
    return 0;
}

long long CAsyncFileIO::GetLength() const { return layout_.soundSize; }

void CAsyncFileIO::CacheChunks() {
    user_ = ReadPayload(file_, layout_, kUserChunk).value_or(std::vector<unsigned char>());
    id3_ = ReadPayload(file_, layout_, kId3Chunk).value_or(std::vector<unsigned char>());
    id3Length_ = static_cast<int>(id3_.size());
}

int CAsyncFileIO::ReadUserChunk(unsigned char* buf, int bufLen, unsigned char* id3Buf, int& id3Len) {
    if (user_.empty() && id3Length_ == 0) CacheChunks();
    if (id3Length_ != 0) {
        if (id3Buf != nullptr) {
            id3Length_ = std::clamp(id3Len, 0, id3Length_);
            std::memcpy(id3Buf, id3_.data(),
                        std::min<std::size_t>(static_cast<std::size_t>(id3Length_), id3_.size()));
        } else {
            id3Length_ = std::max(id3Len, 0);
        }
    }
    if (buf == nullptr || user_.empty()) return static_cast<int>(user_.size());
    const int copied = std::clamp(bufLen, 0, static_cast<int>(user_.size()));
    std::memcpy(buf, user_.data(), static_cast<std::size_t>(copied));
    return copied;
}

} // namespace vocafade
