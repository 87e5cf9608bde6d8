// SPDX-License-Identifier: MIT
#include "persistence/text_streams.h"

#include <algorithm>
#include <cstring>

namespace vocafade {

void Myifstream::open(const char* path, unsigned mode, bool /*unused*/) {
    unsigned flags = modeRead;
    if ((mode & out) != 0) flags = (mode & in) != 0 ? modeReadWrite : modeWrite;
    if ((mode & create) != 0) flags |= modeCreate;
    state_ = Open(path, flags) ? 0 : kFailed;
}

int Myifstream::get() {
    unsigned char byte = 0;
    return Read(&byte, 1) == 1 ? byte : -1;
}

void Myifstream::get(char* buf, unsigned n) {
    if (n == 0) return;
    std::memset(buf, 0, n);
    Read(buf, n - 1);
}

void Myifstream::read(char* buf, unsigned n) { Read(buf, n); }

void Myifstream::getline(char* buf, unsigned n, char delim) {
    for (unsigned i = 0; i < n && Read(buf + i, 1) == 1; ++i) {
        if (buf[i] != delim) continue;
        const bool carriageReturn = delim == '\n' && i > 0 && buf[i - 1] == '\r';
        buf[carriageReturn ? i - 1 : i] = 0;
        return;
    }
    buf[n] = 0;
}

void Myifstream::seekg(long long off, unsigned dir) {
    Seek(off, dir == 0 ? begin : dir == 1 ? current : end);
}

Myistrstream::Myistrstream(const char* data, int len)
    : text_(data != nullptr && len > 0 ? std::string(data, ::strnlen(data, static_cast<std::size_t>(len)))
                                       : "") {}

void Myistrstream::SkipBlanks() {
    while (position_ < text_.size() && (text_[position_] == ' ' || text_[position_] == '\t')) {
        ++position_;
    }
}

Myistrstream& Myistrstream::operator>>(char* token) {
    SkipBlanks();
    const std::size_t end = std::min(text_.find_first_of(" \t", position_), text_.size());
    text_.copy(token, end - position_, position_);
    token[end - position_] = 0;
    position_ = end;
    SkipBlanks();
    if (position_ == text_.size()) state_ |= kUsedUp;
    return *this;
}

Myistrstream& Myistrstream::operator>>(char& byte) {
    SkipBlanks();
    byte = position_ < text_.size() ? text_[position_++] : '\0';
    SkipBlanks();
    if (position_ == text_.size()) state_ |= kUsedUp;
    return *this;
}

} // namespace vocafade
