// SPDX-License-Identifier: MIT
#include "base/text_encoding.h"

#include "base/utf8.h"

#include <algorithm>
#include <cerrno>
#include <iconv.h>
#include <string>

namespace vocafade {
namespace {

/// Runs `text` through the C library's converter. What it refuses is replaced by `replacement` (in the target
/// encoding) and `refusedLength` bytes of the source are skipped.
template <typename RefusedLength>
std::string Convert(const char* to, const char* from, const char* text, const char* replacement,
                    RefusedLength refusedLength) {
    std::string result;
    const iconv_t converter = ::iconv_open(to, from);
    // The C library says "none" with a pointer of all ones.
    if (converter == reinterpret_cast<iconv_t>(-1)) return text;
    std::string source(text);
    char* input = source.data();
    std::size_t left = source.size();
    while (left > 0) {
        char buffer[256];
        char* output = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t outcome = ::iconv(converter, &input, &left, &output, &room);
        result.append(buffer, static_cast<std::size_t>(output - buffer));
        if (outcome == static_cast<std::size_t>(-1) && errno != E2BIG) {
            const std::size_t skipped = std::min(left, refusedLength(input, left));
            input += skipped;
            left -= skipped;
            result += replacement;
            ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
        }
    }
    ::iconv_close(converter);
    return result;
}

std::size_t Utf8Length(const char* text, std::size_t left) {
    std::size_t length = 1;
    while (length < left && !StartsCharacter(text[length]))
        ++length;
    return length;
}

} // namespace

CString CheckSJISAndToUFT8(const char* shiftJis) {
    if (shiftJis == nullptr) return {};
    // CP932 is the Shift-JIS that editors of the time wrote: it keeps the backslash and the vendor
    // characters.
    return Convert("UTF-8", "CP932", shiftJis, "\xEF\xBF\xBD",
                   [](const char*, std::size_t) { return std::size_t{1}; });
}

CString UTF8ToSJSINS(const char* utf8) {
    if (utf8 == nullptr) return {};
    return Convert("CP932", "UTF-8", utf8, "?", Utf8Length);
}

} // namespace vocafade
