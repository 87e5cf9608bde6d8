// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vocafade::win32 {

// Between the texts of the system's calls, which are UTF-16, and ours. Everything here is [any-thread].

/// UTF-8 as UTF-16; what is no UTF-8 becomes replacement signs.
std::wstring Wide(std::string_view utf8);

/// UTF-16 as UTF-8; half a surrogate pair becomes a replacement sign.
std::string Narrow(std::wstring_view wide);

/// Text of a code page as UTF-16.
std::wstring FromCodePage(unsigned codePage, std::string_view text);

/// A variable of the environment as UTF-8; empty when there is none.
std::string Variable(const wchar_t* name);

/// Sets `errno` to what the last failure of a system call was about. Always false.
bool FailWithErrno();

} // namespace vocafade::win32
