// SPDX-License-Identifier: MIT
#pragma once

#include "base/file.h"

namespace vocafade {

/// Size fields have 32 bits: a longer chunk's size is stored modulo this number of bytes (4 GiB).
inline constexpr long long kSizeWrap = 0x100000000LL;

/// [main-thread] Finds where the chunk behind the sound data starts. The 32-bit size of a sound above 4 GiB
/// has wrapped, so the place is searched for in steps of 4 GiB from `pos`, the stream's current position
/// (bytes from the start of the file), until four bytes look like a chunk ID: letters, digits or spaces.
/// Leaves the stream at the place found and returns it; that is the length of the file when no ID was met,
/// and `pos` itself when it is not below the length or when four bytes cannot be read.
long long Analyze64(CFile* file, long long pos);

/// [any-thread] Writes `value` in decimal with a NUL behind it; `text` holds at least 21 bytes. Returns
/// `text`.
char* i64toa(char* text, long long value);

} // namespace vocafade
