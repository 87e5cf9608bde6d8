// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vocafade {

// Text in UTF-8, character (code point) by character. Everything here is [any-thread].

/// What stands in for bytes that are no UTF-8: the replacement sign.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// True for the first byte of a character, false for those that continue it.
constexpr bool StartsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

/// Number of characters; the text is valid.
std::size_t CountCharacters(std::string_view text);

/// The character at the start of `text`, which is not empty, and which loses it. Where that is no UTF-8 (an
/// overlong form and a surrogate are none) it loses one byte, for a replacement sign.
char32_t TakeCharacter(std::string_view& text);

/// The bytes of one character, a Unicode scalar value.
std::string ToUtf8(char32_t character);

/// The text with every byte that is no UTF-8, and every NUL, replaced by the replacement sign.
std::string ValidUtf8(std::string_view text);

} // namespace vocafade
