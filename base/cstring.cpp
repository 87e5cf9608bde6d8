// SPDX-License-Identifier: MIT
#include "base/cstring.h"

#include <algorithm>
#include <cstdio>

namespace vocafade {

char CString::GetAt(int index) const {
    if (index < 0 || index >= GetLength()) return 0;
    return text_[static_cast<std::size_t>(index)];
}

CString CString::Left(int count) const {
    return std::string_view(text_).substr(0, static_cast<std::size_t>(std::max(count, 0)));
}

void CString::Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatV(const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy is not seen
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    text_ = std::move(text);
}

} // namespace vocafade
