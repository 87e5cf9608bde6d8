// SPDX-License-Identifier: MIT
#include "host/bank_file.h"
#include "host/host_error.h"

#include <bit>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace vocafade::host {
namespace {

/// Builds the big-endian fields of a file.
struct Bytes {
    std::vector<std::byte> bytes;
    Bytes& Text(std::string text, std::size_t size) {
        text.resize(size);
        for (const char letter : text)
            bytes.push_back(static_cast<std::byte>(letter));
        return *this;
    }
    Bytes& Number(std::uint32_t number) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<std::byte>(number >> shift));
        return *this;
    }
    Bytes& Value(float value) { return Number(std::bit_cast<std::uint32_t>(value)); }
    Bytes& Head(const char* kind, std::uint32_t count, const char* id = "VfdQ") {
        return Text("CcnK", 4).Number(0).Text(kind, 4).Number(1).Text(id, 4).Number(1).Number(count);
    }
};

Bytes ChunkBank() {
    Bytes file;
    return file.Head("FBCh", 64).Text("", 128).Number(5).Text("state", 5);
}

Bytes ValueProgram(const char* name, float first) {
    Bytes file;
    file.Head("FxCk", 6).Text(name, 28).Value(first);
    for (int i = 1; i < 6; ++i)
        file.Value(0.5f);
    return file;
}

Bytes ValueBank() {
    Bytes file;
    file.Head("FxBk", 2).Text("", 128);
    for (const Bytes& program : {ValueProgram("First", 1.0f), ValueProgram("Second", 0.0f)})
        file.bytes.insert(file.bytes.end(), program.bytes.begin(), program.bytes.end());
    return file;
}

TEST(BankFile, AllFourKindsAreReadWholeOnly) {
    const BankFile bank = ParseBankFile(ChunkBank().bytes);
    EXPECT_TRUE(bank.isBank);
    EXPECT_EQ(bank.uniqueId, VstId('V', 'f', 'd', 'Q'));
    EXPECT_EQ(std::get<0>(bank.content).size(), 5U);
    Bytes program;
    program.Head("FPCh", 6).Text("Name", 28).Number(2).Text("ab", 2);
    EXPECT_FALSE(ParseBankFile(program.bytes).isBank);
    const BankFile values = ParseBankFile(ValueBank().bytes);
    ASSERT_EQ(std::get<1>(values.content).size(), 2U);
    EXPECT_EQ(std::get<1>(values.content)[1].name, "Second");
    const BankFile odd = ParseBankFile(ValueProgram("Odd", std::numeric_limits<float>::quiet_NaN()).bytes);
    EXPECT_EQ(std::get<1>(odd.content)[0].values[0], 0.0f) << "NaN is the minimum";
    for (const Bytes& whole : {ChunkBank(), ValueBank(), program})
        EXPECT_THROW(ParseBankFile(std::span(whole.bytes).first(whole.bytes.size() - 1)), HostError);
}

TEST(BankFile, ReachesTheRealPlugin) {
    Effect effect(VOCAFADE_PLUGIN);
    ApplyBankFile(effect, ParseBankFile(ValueBank().bytes));
    EXPECT_EQ(effect.programNameAt(0), "First");
    EXPECT_EQ(effect.programNameAt(1), "Second");
    effect.setProgram(1);
    EXPECT_EQ(effect.parameterDisplay(0), "OFF");
    Bytes other;
    other.Head("FPCh", 6, "Else").Text("", 28).Number(1).Text("a", 1);
    EXPECT_THROW(ApplyBankFile(effect, ParseBankFile(other.bytes)), HostError);
}

} // namespace
} // namespace vocafade::host
