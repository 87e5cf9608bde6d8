// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"

namespace vocafade {

/// [any-thread] Shift-JIS (as program records hold it) to UTF-8 (as the editor shows it). Bytes that are no
/// Shift-JIS become U+FFFD replacement signs; the record itself is never changed by showing it.
CString CheckSJISAndToUFT8(const char* shiftJis);

/// [any-thread] UTF-8 to Shift-JIS. A character that Shift-JIS does not have becomes "?".
CString UTF8ToSJSINS(const char* utf8);

/// [any-thread] True when `byte` begins a two-byte Shift-JIS character (0x81-0x9F, 0xE0-0xFC).
constexpr bool IsDBCSLeadByte(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

} // namespace vocafade
