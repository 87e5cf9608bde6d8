// SPDX-License-Identifier: MIT
#include "base/text_encoding.h"

#include "base/win32/wide_text.h"

#include <windows.h>

namespace vocafade {
namespace {

/// The Shift-JIS that editors of the time wrote: it keeps the backslash and the vendor characters.
constexpr UINT kShiftJis = 932;

} // namespace

CString CheckSJISAndToUFT8(const char* shiftJis) {
    if (shiftJis == nullptr) return {};
    std::string text;
    for (const char* at = shiftJis; *at != 0;) {
        // Character by character, so that a wrong byte costs no other.
        const int length = IsDBCSLeadByte(static_cast<unsigned char>(*at)) && at[1] != 0 ? 2 : 1;
        wchar_t wide[2];
        const int count = ::MultiByteToWideChar(kShiftJis, MB_ERR_INVALID_CHARS, at, length, wide, 2);
        text += count > 0 ? win32::Narrow({wide, static_cast<std::size_t>(count)}) : "\xEF\xBF\xBD";
        at += count > 0 ? length : 1;
    }
    return text;
}

CString UTF8ToSJSINS(const char* utf8) {
    if (utf8 == nullptr) return {};
    const std::wstring wide = win32::Wide(utf8);
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const bool pair = wide[i] >= 0xD800 && wide[i] < 0xDC00 && i + 1 < wide.size();
        char bytes[2];
        BOOL unknown = FALSE;
        const int count = pair ? 0
                               : ::WideCharToMultiByte(kShiftJis, WC_NO_BEST_FIT_CHARS, &wide[i], 1, bytes, 2,
                                                       "?", &unknown);
        if (pair) ++i;
        text += count > 0 && unknown == FALSE ? std::string(bytes, static_cast<std::size_t>(count)) : "?";
    }
    return text;
}

} // namespace vocafade
