// SPDX-License-Identifier: MIT
#include "base/utf8.h"

#include <algorithm>

namespace vocafade {
namespace {

/// How many bytes continue the character that `first` begins; -1 when it begins none.
int ContinuationsAfter(unsigned char first) {
    if (first < 0x80) return 0;
    if (first < 0xC2 || first > 0xF4) return -1;
    return first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
}

} // namespace

std::size_t CountCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

char32_t TakeCharacter(std::string_view& text) {
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000}; // smaller ones have a shorter form
    const auto first = static_cast<unsigned char>(text[0]);
    const int more = ContinuationsAfter(first);
    const std::size_t size = 1 + static_cast<std::size_t>(more);
    bool valid = more >= 0 && text.size() >= size;
    char32_t character = more > 0 ? first & (0x3FU >> more) : first;
    for (std::size_t i = 1; valid && i < size; ++i) {
        valid = !StartsCharacter(text[i]);
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    valid = valid && character >= kLeast[more] && character <= 0x10FFFF &&
            (character < 0xD800 || character > 0xDFFF);
    text.remove_prefix(valid ? size : 1);
    return valid ? character : kReplacementCharacter;
}

std::string ToUtf8(char32_t character) {
    const auto byte = [character](unsigned mark, int shift, unsigned mask) {
        return static_cast<char>(mark | (character >> shift & mask));
    };
    if (character < 0x80) return {byte(0, 0, 0x7F)};
    if (character < 0x800) return {byte(0xC0, 6, 0x1F), byte(0x80, 0, 0x3F)};
    if (character < 0x10000) return {byte(0xE0, 12, 0x0F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
    return {byte(0xF0, 18, 0x07), byte(0x80, 12, 0x3F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
}

std::string ValidUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        valid += ToUtf8(character != 0 ? character : kReplacementCharacter);
    }
    return valid;
}

} // namespace vocafade
