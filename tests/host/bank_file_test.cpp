// SPDX-License-Identifier: MIT
#include "host/bank_file.h"
#include "host/host_error.h"
#include "tests/support/aiff.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>

namespace vocafade::host {
namespace {

using test::Big32;

std::string Padded(std::string text, std::size_t size) {
    text.resize(size);
    return text;
}

std::string Head(const std::string& kind, std::uint32_t count, const std::string& id = "VfdQ") {
    return "CcnK" + Big32(0) + kind + Big32(1) + id + Big32(1) + Big32(count);
}

std::string ValueProgram(const char* name, float first) {
    std::string file = Head("FxCk", 6) + Padded(name, 28);
    for (const float value : {first, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f})
        file += Big32(std::bit_cast<std::uint32_t>(value));
    return file;
}

const std::string kChunkBank = Head("FBCh", 64) + Padded("", 128) + Big32(5) + "state";
const std::string kChunkProgram = Head("FPCh", 6) + Padded("Name", 28) + Big32(2) + "ab";
const std::string kValueBank =
    Head("FxBk", 2) + Padded("", 128) + ValueProgram("First", 1.0f) + ValueProgram("Second", 0.0f);

BankFile Parse(const std::string& bytes) { return ParseBankFile(std::as_bytes(std::span(bytes))); }

TEST(BankFile, AllFourKindsAreReadWholeOnly) {
    const BankFile bank = Parse(kChunkBank);
    EXPECT_TRUE(bank.isBank);
    EXPECT_EQ(bank.uniqueId, VstId('V', 'f', 'd', 'Q'));
    EXPECT_EQ(std::get<0>(bank.content).size(), 5U);
    EXPECT_FALSE(Parse(kChunkProgram).isBank);
    const BankFile values = Parse(kValueBank);
    ASSERT_EQ(std::get<1>(values.content).size(), 2U);
    EXPECT_EQ(std::get<1>(values.content)[1].name, "Second");
    const BankFile odd = Parse(ValueProgram("Odd", std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(std::get<1>(odd.content)[0].values[0], 0.0f) << "NaN is the minimum";
    for (const std::string& whole : {kChunkBank, kValueBank, kChunkProgram})
        EXPECT_THROW(Parse(whole.substr(0, whole.size() - 1)), HostError);
}

TEST(BankFile, ReachesTheRealPlugin) {
    Effect effect(VOCAFADE_PLUGIN);
    ApplyBankFile(effect, Parse(kValueBank));
    EXPECT_EQ(effect.programNameAt(0), "First");
    EXPECT_EQ(effect.programNameAt(1), "Second");
    effect.setProgram(1);
    EXPECT_EQ(effect.parameterDisplay(0), "OFF");
    const std::string other = Head("FPCh", 6, "Else") + Padded("", 28) + Big32(1) + "a";
    EXPECT_THROW(ApplyBankFile(effect, Parse(other)), HostError);
}

} // namespace
} // namespace vocafade::host
