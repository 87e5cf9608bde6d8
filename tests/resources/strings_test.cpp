// SPDX-License-Identifier: MIT
#include "plugin/embedded.h"
#include "plugin/plugin_resources.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace vocafade {
namespace {

TEST(Strings, AreThereAndTheMessageHasOnePlaceForAPath) {
    PluginResources::Register();
    for (const int number : {20135, 5040, 1120, 5000, 1, 2})
        EXPECT_NE(LoadString(number), "") << number;
    const std::string message = LoadString(20135).str();
    EXPECT_NE(message.find("%s"), std::string::npos);
    EXPECT_EQ(message.find('%'), message.rfind('%')) << "it is a format";
}

TEST(Strings, HaveANumberEachThatIsTheirsAlone) {
    std::set<std::string> numbers;
    std::istringstream table{std::string(EmbeddedStrings())};
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with('#')) continue;
        const std::size_t tab = line.find('\t');
        EXPECT_NE(tab, std::string::npos) << line;
        EXPECT_TRUE(numbers.insert(line.substr(0, tab)).second) << line;
    }
    EXPECT_GE(numbers.size(), 6U);
}

} // namespace
} // namespace vocafade
