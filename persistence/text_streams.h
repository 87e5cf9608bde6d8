// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"

#include <string>

namespace vocafade {

/// A read-mostly file stream of the kind that the old formats were read with.
class Myifstream : public CFile {
  public:
    /// Bits of the open mode.
    enum Mode : unsigned { in = 1, out = 2, create = 16, binary = 32 };
    /// The state's bit for an opening that failed.
    static constexpr unsigned kFailed = 2;

    /// [main-thread] Opens `path` (a path or a `file:` URL); for reading only the mode is `in | binary`. The
    /// last argument is without meaning.
    void open(const char* path, unsigned mode = in | binary, bool = false);
    /// [main-thread] Closes the file.
    void close() { Close(); } // NOLINT(bugprone-virtual-near-miss): streams spell it so
    /// [any-thread] `kFailed` after an opening that failed, else 0. Callers test it against 6.
    unsigned rdstate() const { return state_; }
    bool fail() const { return (state_ & 6U) != 0; }

    /// [main-thread] The next byte as 0 to 255, or -1 at the end.
    int get();
    /// [main-thread] Zeroes `n` bytes of `buf` and reads at most `n` - 1 bytes into it.
    void get(char* buf, unsigned n);
    /// [main-thread] Reads at most `n` bytes.
    void read(char* buf, unsigned n);
    /// [main-thread] Reads at most `n` bytes up to and with `delim`, in whose place a NUL is stored; a CR
    /// before an LF that ends the line gives way to the NUL too. Without a delimiter in `n` bytes the NUL
    /// goes to `buf[n]`, so `buf` holds `n` + 1 bytes; the rest of the line is read next time. The end of the
    /// file is no delimiter: what lies in `buf` behind the bytes that were still there stays as it was.
    void getline(char* buf, unsigned n, char delim = '\n');
    /// [main-thread] True when the position is at or behind the end.
    bool eof() const { return GetPosition() >= GetLength(); }
    /// [main-thread] Moves to `off` bytes from the start (0), the current position (1) or the end (other).
    void seekg(long long off, unsigned dir = 0);
    /// [main-thread] The position's low 32 bits.
    int tellg() const { return static_cast<int>(GetPosition()); }

  private:
    unsigned state_ = 0;
};

/// Takes a text apart at spaces and tabs.
class Myistrstream {
  public:
    /// The state's bit for a text that is used up.
    static constexpr unsigned kUsedUp = 2;

    /// [any-thread] Copies `len` bytes; the text ends at the first NUL among them.
    Myistrstream(const char* data, int len);
    /// [any-thread] Copies the next token and a NUL to `token`, which must hold as many bytes as the whole
    /// text and a NUL: no token is longer.
    Myistrstream& operator>>(char* token);
    /// [any-thread] Takes the next byte that is neither space nor tab; a NUL when there is none.
    Myistrstream& operator>>(char& byte);
    /// [any-thread] `kUsedUp` as soon as nothing but spaces and tabs is left, else 0.
    unsigned rdstate() const { return state_; }

  private:
    void SkipBlanks();

    std::string text_;
    std::size_t position_ = 0;
    unsigned state_ = 0;
};

} // namespace vocafade
