// SPDX-License-Identifier: MIT
#include "plugin/plugin_resources.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace vocafade
