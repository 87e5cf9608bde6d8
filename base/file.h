// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vocafade {

/// [any-thread] Turns a `file:` URL into the path that it names (percent escapes decoded); any other text is a path
/// already.
std::string PathFromUrlOrPath(const char* urlOrPath);

/// A binary file. Every operation answers by its result; nothing throws. Not for the audio thread; one object
/// serves one thread at a time.
class CFile {
  public:
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        modeCreate = 0x1000, ///< make the file anew, removing what was there
    };
    enum SeekPosition { begin = 0, current = 1, end = 2 };

    CFile() = default;
    /// Closes the file.
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    /// Opens `path` (a path or a `file:` URL); closes what was open before. False when it cannot be opened.
    virtual bool Open(const char* path, unsigned flags);
    /// Takes over an open descriptor, closing it with this object.
    bool Attach(int descriptor, unsigned flags);
    /// Waits until no other process or object holds the file by this call, and holds it until it is closed.
    /// True also where the file system has no locks.
    bool Lock();
    virtual void Close();
    bool IsOpen() const { return stream_ != nullptr; }

    /// Reads at most `count` bytes; the number that was read. What was not read is left as it was.
    std::size_t Read(void* buffer, std::size_t count);
    /// Writes `count` bytes; false when not all of them were taken.
    bool Write(const void* buffer, std::size_t count);
    /// Moves to `offset` bytes from `from`; false outside what can be reached.
    bool Seek(std::int64_t offset, SeekPosition from);
    std::int64_t GetPosition() const;
    std::int64_t GetLength() const;
    /// Hands all written bytes to the disk itself; false when any write failed since opening.
    bool FlushToDisk();

  private:
    std::FILE* stream_ = nullptr;
    bool failed_ = false;
    enum class Last { none, read, write } last_ = Last::none;
};

/// Tells whether a path names something that exists.
class CFileFind {
  public:
    /// True when `path` (a path or a `file:` URL) exists.
    bool FindFile(const char* path) const;
    void Close() {}
};

} // namespace vocafade
