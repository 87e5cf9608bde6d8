// SPDX-License-Identifier: MIT
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

TEST(Strings, TableIsWellFormedAndComplete) {
    std::ifstream file(std::string(VOCAFADE_RESOURCES) + "/strings.txt");
    ASSERT_TRUE(file);
    std::map<int, std::string> texts;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t tab = line.find('\t');
        ASSERT_NE(tab, std::string::npos) << line;
        ASSERT_EQ(line.find_first_not_of("0123456789"), tab) << line;
        const std::string text = line.substr(tab + 1);
        EXPECT_FALSE(text.empty()) << line;
        EXPECT_TRUE(texts.emplace(std::stoi(line), text).second) << "twice: " << line;
    }
    for (const int number : {20135, 5040, 1120, 5000, 1, 2}) {
        EXPECT_TRUE(texts.contains(number)) << number;
    }
    // The message is a format: exactly one place, for the path, and no stray percent sign.
    const std::string& message = texts[20135];
    EXPECT_EQ(message.find('%'), message.find("%s"));
    EXPECT_EQ(message.find('%'), message.rfind('%'));
    EXPECT_NE(message.find('%'), std::string::npos);
}

} // namespace
