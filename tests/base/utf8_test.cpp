// SPDX-License-Identifier: MIT
#include "base/utf8.h"

#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

TEST(Utf8, EveryCharacterComesBack) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character == 0xD800) character = 0xE000; // between them lie no characters
        const std::string bytes = ToUtf8(character);
        const std::string twice = bytes + bytes;
        std::string_view rest = twice;
        ASSERT_EQ(TakeCharacter(rest), character);
        ASSERT_EQ(rest, bytes);
        ASSERT_EQ(CountCharacters(twice), 2U);
        if (character != 0) {
            ASSERT_EQ(ValidUtf8(twice), twice);
        }
    }
}

TEST(Utf8, WhatIsNoneIsReplacedByteByByte) {
    const std::string sign = "\xEF\xBF\xBD";
    EXPECT_EQ(ValidUtf8("a\xFFz"), "a" + sign + "z");
    EXPECT_EQ(ValidUtf8(std::string("a\0z", 3)), "a" + sign + "z");
    EXPECT_EQ(ValidUtf8("\xE6\xAD"), sign + sign) << "cut short";
    EXPECT_EQ(ValidUtf8("\xE6\xADz"), sign + sign + "z");
    EXPECT_EQ(ValidUtf8("\xC0\xAF"), sign + sign) << "overlong";
    EXPECT_EQ(ValidUtf8("\xE0\x80\xAF"), sign + sign + sign);
    EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), sign + sign + sign) << "half of a pair of surrogates";
    EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80"), sign + sign + sign + sign) << "beyond the last character";
}

} // namespace
} // namespace vocafade::test
