// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace vocafade {

/// The class library's text: bytes in whatever encoding its owner says (UTF-8 in the editor, Shift-JIS in
/// program records). A value type over `std::string` with the
/// class library's names.
class CString {
  public:
    CString() = default;
    CString(const char* text) : text_(text != nullptr ? text : "") {} // null counts as empty
    CString(std::string_view text) : text_(text) {}
    CString(std::string text) : text_(std::move(text)) {}

    int GetLength() const { return static_cast<int>(text_.size()); }
    bool IsEmpty() const { return text_.empty(); }
    void Empty() { text_.clear(); }
    /// The byte at `index`, or 0 outside the text.
    char GetAt(int index) const;
    /// The first `count` bytes (all of them when there are fewer, none when `count` is negative).
    CString Left(int count) const;
    /// Replaces the text with a printf-style one.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, std::va_list arguments) __attribute__((format(printf, 2, 0)));

    operator const char*() const { return text_.c_str(); }
    const std::string& str() const { return text_; }

    CString& operator+=(const CString& other) {
        text_ += other.text_;
        return *this;
    }
    friend CString operator+(CString a, const CString& b) { return a += b; }
    friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
    friend bool operator==(const CString& a, const char* b) { return a.text_ == (b != nullptr ? b : ""); }

  private:
    std::string text_;
};

} // namespace vocafade
