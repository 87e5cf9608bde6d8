// SPDX-License-Identifier: MIT
#include "persistence/large_sound.h"

#include <algorithm>
#include <charconv>

namespace vocafade {
namespace {

bool IsIdCharacter(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ';
}

} // namespace

long long Analyze64(CFile* file, long long pos) {
    const long long length = file->GetLength();
    while (pos < length) {
        unsigned char id[4];
        if (!file->Seek(pos, CFile::begin) || file->Read(id, sizeof id) != sizeof id) break;
        if (std::all_of(id, id + sizeof id, IsIdCharacter)) break;
        pos = std::min(pos + kSizeWrap, length);
    }
    file->Seek(pos, CFile::begin);
    return pos;
}

char* i64toa(char* text, long long value) {
    *std::to_chars(text, text + 20, value).ptr = '\0'; // 20 characters hold the sign and 19 digits
    return text;
}

} // namespace vocafade
