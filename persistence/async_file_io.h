// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"
#include "persistence/aiff_layout.h"

#include <array>
#include <vector>

namespace vocafade {

/// The sound of an AIFF file as a stream of bytes, and the user and ID3 chunks beside it. Positions and
/// lengths count sound bytes, 0 being the first. Every operation, the asynchronous ones too, is done when it
/// returns.
class CAsyncFileIO {
  public:
    enum Mode { read = 0, create = 1, readWrite = 2 };

    CAsyncFileIO() = default;
    /// Closes the file.
    virtual ~CAsyncFileIO();
    CAsyncFileIO(const CAsyncFileIO&) = delete;
    CAsyncFileIO& operator=(const CAsyncFileIO&) = delete;

    /// [main-thread] Opens the AIFF file `path` (a path or a `file:` URL) and stands at its first sound byte.
    /// `create` makes it anew with the headers of 16-bit stereo at 44.1 kHz and no sound. The last two
    /// arguments are without meaning. Returns 0, or -1 when the file cannot be opened or is not a plain AIFF
    /// file.
    int Open(const char* path, int mode, const char* = nullptr, int = 0);
    /// [main-thread] Closes the file. When sound was written behind its old end, the headers get the new
    /// sizes.
    void Close();

    /// [main-thread] Reads at most `count` sound bytes; the number that was read.
    int Read(void* buffer, int count);
    /// [main-thread] Writes `count` sound bytes; the number that was written. The sound grows only while it
    /// is the last thing in the file: what stands behind it is never written over.
    int Write(const void* buffer, int count);
    /// [main-thread] Moves to `offset` sound bytes from the start (0), the current position (1) or the end
    /// (other). Returns 0, or -1 with the position unchanged when that is not in the sound.
    int Seek(int from, int offset);
    /// [main-thread] The same with an offset of 64 bits.
    int Seek64(int from, long long offset);
    /// [main-thread] The length of the sound in bytes.
    long long GetLength() const;
    /// [main-thread] As `Read` and `Write`: done on return.
    int ReadAsync(void* buffer, int count) { return Read(buffer, count); }
    int WriteAsync(const void* buffer, int count) { return Write(buffer, count); }

    /// [main-thread] Copies at most `bufLen` bytes of the user chunk's payload (the sub-chunks, without the
    /// chunk's own header) to `buf` and returns their number; with a null `buf` the payload's length; 0
    /// without a user chunk. The file is walked once and both payloads are kept; the place in the sound does
    /// not change.
    ///
    /// The ID3 payload goes one way only: with `id3Buf`, at most `id3Len` bytes of it are copied and it
    /// counts as that long from then on; without, it counts as `id3Len` bytes long, although never more are
    /// copied than there are. `id3Len` itself is never written.
    int ReadUserChunk(unsigned char* buf, int bufLen, unsigned char* id3Buf, int& id3Len);

  private:
    bool WriteNewHeaders();
    bool FindSound();
    void CacheChunks();

    CFile file_;
    AiffLayout layout_;
    bool writable_ = false;
    bool growable_ = false; // nothing stands behind the sound
    bool grown_ = false;    // the headers' sizes are out of date
    long long position_ = 0;
    std::vector<unsigned char> user_;
    std::vector<unsigned char> id3_;
    int id3Length_ = 0; // what the ID3 payload counts as
};

/// The same class under a second name.
class CAsyncFileIO2 : public CAsyncFileIO {};

} // namespace vocafade
